// qvnrt-cli: the command-line program a new user runs first. Each command lives in its own
// file under cli/commands/ and registers itself (see cli/Command.h); this file parses the
// command line and turns the outcome into the exit status.
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include <qvnrt/qvnrt.h>

#include "cli/Command.h"
#include "cli/LogLines.h"
#include "cli/OutputSink.h"
#include "cli/Terminal.h"

namespace {

using namespace qvnrt::cli;

const char kExitStatusFooter[] =
    "Exit status:\n"
    "  0  all that was asked was delivered\n"
    "  1  some of it was not: an unknown or uncached symbol, a driver that cannot be loaded\n"
    "     or refuses to connect, a cache directory that cannot be used\n"
    "  2  the command line was wrong";

const std::map<std::string, Format> kFormats = {
    {"table", Format::kTable}, {"csv", Format::kCsv}, {"json", Format::kJson}};

const char kSubcommandFooter[] =
    "The options of every command (--driver, --cache, --offline, --format, --no-color,\n"
    "--faithful-calendar) and the exit status are in 'qvnrt-cli --help'.";

std::string FailureMessage(const CLI::App*, const CLI::Error& error) {
    return std::string("qvnrt-cli: ") + error.what() +
           "\nRun 'qvnrt-cli --help' or 'qvnrt-cli COMMAND --help' for the options.\n";
}

void AddGlobalOptions(CLI::App& app, GlobalOptions& global, std::string& format) {
    const std::string group = "Options of every command";
    app.add_option("--driver", global.driver,
                   "driver to load: a path, or a name looked for beside the program (default: "
                   "the configured driver, else Client.DLL)")
        ->group(group);
    app.add_option("--cache", global.cacheDirectory,
                   "directory of the security cache (default: cache/ below the working "
                   "directory)")
        ->group(group);
    app.add_flag("--offline", global.offline, "read the cache alone, without a driver")
        ->group(group);
    app.add_option("--format", format,
                   "output when not a live board: table, csv, or json (one object a line)")
        ->check(CLI::IsMember(kFormats))
        ->option_text("table|csv|json")
        ->group(group);
    app.add_flag("--no-color", global.noColour,
                 "no colour on a terminal (also when NO_COLOR is set)")
        ->group(group);
    app.add_flag("--faithful-calendar", global.faithfulCalendar,
                 "keep the zone table's own daylight rules (New York changing in April and "
                 "October) instead of today's, which the program shows by default")
        ->group(group);
}

// The program shows today's dates, so it turns the library's modern calendar on unless told
// otherwise; before any command runs, since a Date keeps the rules it was made with.
void ApplyCalendarMode(bool faithful) {
    qvnrt::SetModernCalendar(!faithful);
    // The simulation is the program's default driver, and a plugin sees only the registry
    // store and its environment, not this process's calendar switch: tell it through
    // QVNSIM_CALENDAR before the driver is loaded, so that the library and the simulated
    // exchanges agree. A value the user set wins.
    ::setenv("QVNSIM_CALENDAR", faithful ? "faithful" : "modern", /*overwrite=*/0);
}

}  // namespace

int main(int argc, char** argv) {
    IgnoreFileSizeLimitSignal();
    TrackLogLines();
    CLI::App app("QvnRT's command-line program: quotes, exchanges and the cache, from any "
                 "driver (by default the simulation beside the program).",
                 "qvnrt-cli");
    app.set_version_flag("--version", std::string("qvnrt-cli ") + qvnrt::LibraryVersion());
    app.footer(kExitStatusFooter);
    app.failure_message(FailureMessage);
    app.require_subcommand(1);

    GlobalOptions global;
    std::string format = "table";
    AddGlobalOptions(app, global, format);

    RunCommand chosen;
    for (const CommandEntry& entry : RegisteredCommands()) {
        CLI::App* command = app.add_subcommand(entry.name, entry.description);
        // Global options may follow the command: `quotes ACME --format csv`.
        command->fallthrough();
        command->footer(kSubcommandFooter);
        RunCommand run = entry.setup(*command);
        command->callback([&chosen, run] { chosen = run; });
    }

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        // A word where a command should be is named as such, not as "a command is required".
        const std::vector<std::string> stray = app.remaining();
        if (app.get_subcommands().empty() && !stray.empty() && stray[0][0] != '-') {
            std::string known;
            for (const CommandEntry& entry : RegisteredCommands()) known += " " + entry.name;
            std::fprintf(stderr, "qvnrt-cli: unknown command '%s'; the commands are:%s\n",
                         stray[0].c_str(), known.c_str());
            return kExitUsage;
        }
        const int status = app.exit(error);  // help and version on standard output
        return status == 0 ? kExitOk : kExitUsage;
    }
    global.format = kFormats.at(format);
    ApplyCalendarMode(global.faithfulCalendar);
    const int status = chosen ? chosen(global) : kExitUsage;
    EndOpenLogLine();
    // Output that could not be written (a full disk, `ulimit -f`) is no success.
    if (ReportOutputFailure(stdout, "standard output") && errno != EPIPE) {
        return std::max(status, static_cast<int>(kExitIncomplete));
    }
    return status;
}
