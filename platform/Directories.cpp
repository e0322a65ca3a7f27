#include "platform/Directories.h"

#include <cerrno>
#include <climits>
#include <filesystem>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qvnrt::platform {
namespace {

std::string Env(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string();
}

std::string WithoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

}  // namespace

std::string ConfigDirectory() {
    std::string directory = Env("QVNRT_HOME");
    if (directory.empty()) {
        const std::string xdg = Env("XDG_CONFIG_HOME");
        if (!xdg.empty()) {
            directory = JoinPath(xdg, "quorvane");
        } else {
            const std::string home = Env("HOME");
            if (home.empty()) return std::string();
            directory = JoinPath(JoinPath(home, ".config"), "quorvane");
        }
    }
    directory = WithoutTrailingSlash(directory);
    MakeDirectories(directory);
    return directory;
}

std::string HostDirectory() {
    const std::string fromEnv = Env("QVNRT_APP_DIR");
    if (!fromEnv.empty()) return WithoutTrailingSlash(fromEnv);
    char exe[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", exe, sizeof(exe) - 1);
    if (length <= 0) return std::string();
    std::string path(exe, static_cast<size_t>(length));
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos) return std::string();
    return slash == 0 ? std::string("/") : path.substr(0, slash);
}

std::string InstalledDriverDirectory() {
    // The file that holds this code: libqvnrt.so in an application, the program itself
    // where the layer is linked in statically (the tests).
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&InstalledDriverDirectory), &info) == 0 ||
        !info.dli_fname) {
        return std::string();
    }
    const std::string file = info.dli_fname;
    const size_t slash = file.rfind('/');
    if (slash == std::string::npos) return std::string();
    // The install rules put the drivers in the same place below the library directory.
    return JoinPath(file.substr(0, slash), QVNRT_DRIVER_SUBDIR);
}

std::string CurrentDirectory() {
    char buffer[PATH_MAX];
    return ::getcwd(buffer, sizeof(buffer)) ? std::string(buffer) : std::string();
}

std::string JoinPath(const std::string& directory, const std::string& name) {
    if (directory.empty() || directory.back() == '/') return directory + name;
    return directory + "/" + name;
}

bool MakeDirectory(const std::string& path) {
    if (path.empty()) return false;
    if (::mkdir(path.c_str(), 0777) == 0) return true;
    struct stat info;
    return errno == EEXIST && ::stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

bool MakeDirectories(const std::string& path) {
    if (path.empty()) return false;
    for (size_t slash = path.find('/', 1); slash != std::string::npos;
         slash = path.find('/', slash + 1)) {
        MakeDirectory(path.substr(0, slash));
    }
    return MakeDirectory(path);
}

bool FileExists(const std::string& path) {
    struct stat info;
    return !path.empty() && ::stat(path.c_str(), &info) == 0;
}

bool FileSize(const std::string& path, unsigned long long& size) {
    struct stat info;
    if (path.empty() || ::stat(path.c_str(), &info) != 0) return false;
    size = static_cast<unsigned long long>(info.st_size);
    return true;
}

bool DeleteFile(const std::string& path) { return !path.empty() && ::unlink(path.c_str()) == 0; }

bool CopyFileReplacing(const std::string& from, const std::string& to) {
    std::error_code error;
    return std::filesystem::copy_file(from, to, std::filesystem::copy_options::overwrite_existing,
                                      error) &&
           !error;
}

}  // namespace qvnrt::platform
