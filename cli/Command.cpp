#include "cli/Command.h"

#include <algorithm>

namespace qvnrt::cli {
namespace {

// A function's static, so that it stands before any command file's registration runs.
std::vector<CommandEntry>& Registry() {
    static std::vector<CommandEntry> commands;
    return commands;
}

}  // namespace

CommandRegistration::CommandRegistration(const char* name, const char* description, int order,
                                         SetupCommand setup) {
    Registry().push_back({name, description, order, setup});
}

std::vector<CommandEntry> RegisteredCommands() {
    std::vector<CommandEntry> commands = Registry();
    std::stable_sort(commands.begin(), commands.end(), [](const auto& a, const auto& b) {
        return a.order < b.order;
    });
    return commands;
}

}  // namespace qvnrt::cli
