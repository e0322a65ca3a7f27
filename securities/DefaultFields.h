// The library's default field string, copied into every new RTSecurity.
#pragma once

#include <qvnrt/compat/CString.h>

namespace qvnrt {

// Fields 1, 2, 3, 4, 5, 6, 7, 59, 8, then 10 to 18, 27, 28, then 31 to 39, then 41 to 58.
// 9, 19, 20, 21, 26 and 40 reach an object only when asked for by name.
const CString& DefaultFields();

}  // namespace qvnrt
