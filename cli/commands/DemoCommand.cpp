// demo: quotes of a few simulated securities for a few seconds, with a configuration of its
// own that it removes at the end.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <system_error>

#include <qvnrt/qvnrt.h>

#include "cli/commands/ShowQuotes.h"

namespace qvnrt::cli {
namespace {

constexpr double kDemoSeconds = 8.0;
const std::vector<std::string> kDemoSymbols = {"ACME",   "BLTN", "THMS.L", "EURUSD",
                                               "UST10Y", "@USX", "$USX"};

int Run(const GlobalOptions& global, double seconds) {
    std::string home;
    if (!std::getenv("QVNRT_HOME")) {
        std::error_code error;
        std::filesystem::path directory = std::filesystem::temp_directory_path(error);
        if (error) directory = "/tmp";
        std::string pattern = (directory / "qvnrt-demo-XXXXXX").string();
        if (::mkdtemp(pattern.data())) {
            home = pattern;
            ::setenv("QVNRT_HOME", home.c_str(), 1);
        }
    }
    char title[96];
    std::snprintf(title, sizeof(title), "QvnRT %s: simulated quotes for %g seconds",
                  qvnrt::LibraryVersion(), seconds);
    const int status = ShowQuotes(global, kDemoSymbols, seconds, title);
    if (!home.empty()) {
        std::error_code error;
        std::filesystem::remove_all(home, error);
        ::unsetenv("QVNRT_HOME");
    }
    return status;
}

RunCommand Setup(CLI::App& command) {
    auto seconds = std::make_shared<double>(kDemoSeconds);
    command.add_option("--seconds", *seconds, "how long it runs")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    return [seconds](const GlobalOptions& global) { return Run(global, *seconds); };
}

const CommandRegistration kRegistration{
    "demo", "a few simulated quotes for a few seconds (what `make demo` runs)", 90, Setup};

}  // namespace
}  // namespace qvnrt::cli
