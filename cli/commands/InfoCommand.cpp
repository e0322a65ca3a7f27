// info: the library's version, and the driver it loads: the name asked for and the file the
// loader found.
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <qvnrt/qvnrt.h>

#include "cli/CliSession.h"

namespace qvnrt::cli {
namespace {

int Run(const GlobalOptions& global) {
    std::printf("QvnRT %s\n", qvnrt::LibraryVersion());
    CliSession session;
    if (!session.LoadDriver(global.driver)) return kExitIncomplete;
    const std::string path = CliSession::DriverPath();
    std::error_code error;
    const std::filesystem::path target = std::filesystem::canonical(path, error);
    if (!error && target != path) {
        std::printf("driver: %s (%s)\n", path.c_str(), target.c_str());
    } else {
        std::printf("driver: %s\n", path.c_str());
    }
    return kExitOk;
}

RunCommand Setup(CLI::App&) {
    return Run;
}

const CommandRegistration kRegistration{
    "info", "the library's version, and the file of the driver it loads", 80, Setup};

}  // namespace
}  // namespace qvnrt::cli
