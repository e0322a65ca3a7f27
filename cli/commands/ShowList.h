// What `list`, `chain` and `ranked` share: the sort option, the refusal to run offline, and
// showing a list once its first round has come.
#pragma once

#include <string>

#include <CLI/CLI.hpp>

#include "cli/CliSession.h"
#include "cli/Command.h"
#include "cli/ListBoard.h"

namespace qvnrt::cli {

struct ListView {
    std::string what;     // "list STOCKS": the title of the board and of every message
    double seconds = 0;   // 0: until Ctrl-C
    std::string sort;     // "last", "change", "volume" or empty
    bool quotes = true;   // stream the rows' quotes once the list is complete
};

// Adds --seconds and --sort to a command.
void AddListViewOptions(CLI::App& command, ListView& view);

// kExitOk to go on; else the usage status, after saying that lists need the service.
int RefuseOffline(const GlobalOptions& global, const std::string& command);

// Waits for the list's first round (kExitIncomplete, said, if none comes), then shows it:
// on a terminal as a board redrawn at every heartbeat until the time is up or Ctrl-C;
// piped, a list or chain once, and a ranked list once a round as the rounds come.
int ShowList(const GlobalOptions& global, CliSession& session, ListBoard& board,
             const ListView& view);

}  // namespace qvnrt::cli
