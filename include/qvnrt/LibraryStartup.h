/// \file
/// The library's start-up calls.
#pragma once

#include <qvnrt/export.h>

extern "C" {
/// Names the application's module; the symbol map looks for its files beside it. The name
/// is kept in a buffer of 260 bytes: a longer name is cut to 259 characters.
QVNRT_API void qvnrtSetAppName(const char* name);
}

namespace qvnrt {
/// The library's version, "major.minor.patch".
QVNRT_API const char* LibraryVersion();
}  // namespace qvnrt
