// Loading a driver plugin: dlopen(RTLD_NOW | RTLD_LOCAL), dlsym, dlclose.
#pragma once

#include <string>

namespace qvnrt::platform {

// A name without '/' is tried in the host directory first, then through dlopen's own
// search, then in the installed driver directory (see Directories.h). Null on failure;
// LastLoadError() tells why.
void* LoadLibrary(const std::string& name);
void* GetProcAddress(void* library, const char* symbol);
void FreeLibrary(void* library);
// The text of the latest failure of LoadLibrary, for diagnostics.
std::string LastLoadError();

}  // namespace qvnrt::platform
