// The file of a module loaded in the process, for files kept beside it.
#pragma once

#include <string>

namespace qvnrt::platform {

// The path of the loaded module whose file name (or full path) is `moduleName`. When no
// module matches, as for an empty name, the host executable's path, with the executable in
// the host directory (see Directories.h). Empty when neither can be found.
std::string ModuleFileName(const std::string& moduleName);

}  // namespace qvnrt::platform
