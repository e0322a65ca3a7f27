// Settings of the simulation: built-in defaults, then the file named by QVNSIM_CONFIG,
// then QVNSIM_* environment variables, then whatever a control call hands over.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "CalendarMode.h"

namespace qvnsim {

enum class ConnectAnswer {
    kAuto,     // connect mode 1 answers 1 (remote); any other mode answers 3, then event 6
    kRemote,   // always 1
    kLocal,    // always 2
    kPending,  // always 3, then event 6
    kRefuse,   // always 0
};

enum class LiveMinutes { kBars, kTicks };

struct ScheduledEvent {
    long step;  // steps since the connection opened
    int event;
    long argument;
};

struct SimConfig {
    uint64_t seed = 1;
    int speedMs = 250;           // wall-clock milliseconds per step; 0: no timer
    int stepSeconds = 5;         // simulated seconds per step
    int64_t start = 1718114400;  // Tuesday 11 June 2024, 14:00 UTC (10:00 in New York)
    unsigned universe = 0x3F;    // AssetClassBit values
    ConnectAnswer connect = ConnectAnswer::kAuto;
    LiveMinutes liveMinutes = LiveMinutes::kBars;
    long serverLimit = 500;
    bool timeEvents = true;  // event 4 at connect and at each simulated minute
    bool changes = true;     // the change log as event 8 at connect
    std::vector<ScheduledEvent> events;
    CalendarChoice calendar = CalendarChoice::kRegistry;  // the exchanges' daylight rules

    // Applies "key = value" settings, one a line or separated by ';'. Blank lines and text
    // after '#' are ignored. On a bad setting, returns false with `error` naming it; the
    // settings before it stay applied.
    bool Apply(const std::string& text, std::string& error);
    bool Set(const std::string& key, const std::string& value, std::string& error);

    // Defaults, the file of QVNSIM_CONFIG, then the QVNSIM_* variables. Bad settings are
    // reported on standard error and skipped.
    static SimConfig FromEnvironment();
};

}  // namespace qvnsim
