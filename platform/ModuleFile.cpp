#include "platform/ModuleFile.h"

#include <climits>
#include <link.h>
#include <unistd.h>

#include "platform/Directories.h"

namespace qvnrt::platform {
namespace {

std::string BaseName(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

struct Search {
    std::string wanted;
    std::string found;
};

int VisitModule(struct dl_phdr_info* info, size_t, void* data) {
    auto* search = static_cast<Search*>(data);
    const std::string path = info->dlpi_name ? info->dlpi_name : "";
    if (path.empty()) return 0;
    if (path == search->wanted || BaseName(path) == search->wanted) {
        search->found = path;
        return 1;
    }
    return 0;
}

std::string ExecutableName() {
    char exe[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", exe, sizeof(exe) - 1);
    return length > 0 ? BaseName(std::string(exe, static_cast<size_t>(length))) : std::string();
}

}  // namespace

std::string ModuleFileName(const std::string& moduleName) {
    if (!moduleName.empty()) {
        Search search{moduleName, {}};
        ::dl_iterate_phdr(VisitModule, &search);
        if (!search.found.empty()) return search.found;
    }
    const std::string directory = HostDirectory();
    const std::string executable = ExecutableName();
    if (directory.empty() || executable.empty()) return std::string();
    return JoinPath(directory, executable);
}

}  // namespace qvnrt::platform
