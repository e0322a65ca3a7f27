/// \file
/// Visibility of the library's exported names. The library is built with hidden
/// visibility by default; everything an application may use carries QVNRT_API.
#ifndef QVNRT_EXPORT_H
#define QVNRT_EXPORT_H

#define QVNRT_API __attribute__((visibility("default")))

#endif
