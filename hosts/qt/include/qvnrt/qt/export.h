// The export mark of the Qt host library, qvnrt-qt, which is built with hidden visibility
// like the core library.
#pragma once

#define QVNRT_QT_API __attribute__((visibility("default")))
