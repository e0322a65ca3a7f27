// Settings of the replay: defaults, then the file named by QVNREPLAY_CONFIG, then the
// QVNREPLAY_* variables. A bad setting is reported on standard error and skipped.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qvnreplay {

struct ReplayConfig {
    std::string dataDir = ".";
    // Where the replay clock starts, seconds since 1970. Without it nothing is replayed:
    // every file is history, and the clock stands after the newest record.
    std::optional<int64_t> start;
    // Replayed seconds per wall-clock second; 0 means as fast as the loop dispatches.
    double speed = 1.0;
    // Replayed seconds that one dispatch moves the clock on when the speed is 0.
    int fastStepSeconds = 60;
    int packetRecords = 500;

    // "key = value", one setting; false with `error` naming what was wrong.
    bool Set(const std::string& key, const std::string& value, std::string& error);
    // Settings one a line or separated by ';'; '#' starts a comment. Every bad setting is
    // reported on standard error, naming `where`, and skipped; the result says whether all
    // were good.
    bool Apply(const std::string& text, const std::string& where);

    static ReplayConfig FromEnvironment();
};

}  // namespace qvnreplay
