#include "platform/DynamicLibrary.h"

#include <dlfcn.h>

#include <qvnrt/host.h>

#include "platform/Directories.h"

namespace qvnrt::platform {
namespace {

std::string g_lastLoadError;  // the library runs on one thread

std::string TakeDlError() {
    const char* error = ::dlerror();
    return error ? std::string(error) : std::string("unknown error");
}

void* Open(const std::string& path, std::string& error) {
    ::dlerror();
    void* library = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library) error = TakeDlError();
    return library;
}

}  // namespace

void* LoadLibrary(const std::string& name) {
    if (name.empty()) {
        g_lastLoadError = "no library name given";
        return nullptr;
    }
    std::string error;
    g_lastLoadError.clear();
    if (name.find('/') != std::string::npos) {
        void* library = Open(name, error);
        if (!library) g_lastLoadError = error;
        return library;
    }
    // A bare name is the host directory's file first, as LoadLibraryA looked beside the
    // executable before the search path.
    std::string hostError;
    const std::string host = HostDirectory();
    if (!host.empty()) {
        const std::string beside = JoinPath(host, name);
        if (FileExists(beside)) {
            if (void* library = Open(beside, hostError)) return library;
        }
    }
    if (void* library = Open(name, error)) return library;
    // Last, the drivers installed with the library, so that an installed program loads the
    // default driver by its bare name.
    const std::string installed = InstalledDriverDirectory();
    if (!installed.empty()) {
        const std::string path = JoinPath(installed, name);
        if (FileExists(path)) {
            if (void* library = Open(path, error)) return library;
        }
    }
    // A file in the host directory that would not load says more than "not found".
    g_lastLoadError = hostError.empty() ? error : hostError + "; " + error;
    return nullptr;
}

void* GetProcAddress(void* library, const char* symbol) {
    if (!library || !symbol) return nullptr;
    return ::dlsym(library, symbol);
}

void FreeLibrary(void* library) {
    if (library) ::dlclose(library);
}

std::string LastLoadError() { return g_lastLoadError; }

}  // namespace qvnrt::platform

const char* qvnrt::LastDriverLoadError() { return qvnrt::platform::g_lastLoadError.c_str(); }
