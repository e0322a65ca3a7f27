// How a subcommand joins the program. A command is one file under cli/commands/: it adds
// its options to the CLI11 subcommand it is given and returns the function that runs it.
//
//   namespace {
//   struct Options { std::vector<std::string> symbols; };
//   int Run(const GlobalOptions& global, const Options& options) { ... return kExitOk; }
//   RunCommand Setup(CLI::App& command) {
//       auto options = std::make_shared<Options>();
//       command.add_option("SYMBOL", options->symbols, "symbols to show")->required();
//       return [options](const GlobalOptions& global) { return Run(global, *options); };
//   }
//   const CommandRegistration kRegistration{"name", "one line for --help", 50, Setup};
//   }  // namespace
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/OutputSink.h"

namespace qvnrt::cli {

// The program's exit status, as --help and the README state it.
enum ExitStatus : int {
    kExitOk = 0,          // all that was asked was delivered
    kExitIncomplete = 1,  // some of it was not: unknown or uncached symbol, no driver, ...
    kExitUsage = 2,       // the command line was wrong
};

// The worse of two outcomes of parts of one command.
inline int Worse(int a, int b) {
    return a > b ? a : b;
}

// The options that every command shares, parsed before the command runs.
struct GlobalOptions {
    std::string driver;          // empty: the configured driver
    std::string cacheDirectory;  // empty: the library's default
    bool offline = false;        // the cache alone, no driver
    Format format = Format::kTable;
    bool noColour = false;
    bool faithfulCalendar = false;  // keep the zone table's own daylight rules
};

using RunCommand = std::function<int(const GlobalOptions&)>;
using SetupCommand = RunCommand (*)(CLI::App& command);

struct CommandEntry {
    std::string name;
    std::string description;
    int order;  // the place in --help: lower first
    SetupCommand setup;
};

// Made once per command file, at namespace scope: the program finds every command through
// it, so that adding a command touches no shared list.
class CommandRegistration {
public:
    CommandRegistration(const char* name, const char* description, int order,
                        SetupCommand setup);
};

// Every registered command, in --help order.
std::vector<CommandEntry> RegisteredCommands();

}  // namespace qvnrt::cli
