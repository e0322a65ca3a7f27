#include "calendar/ZoneTable.h"

#include "calendar/DateStatics.h"
#include "calendar/ModernZones.h"
#include "platform/LocalZone.h"

namespace qvnrt::calendar {
namespace {

struct ZoneRow {
    ZoneRule standard;
    ZoneRule daylight;
};

// Rows 1 to 50. Where the daylight month is 0 the zone keeps one bias all year.
// clang-format off
constexpr ZoneRow kZones[50] = {
    {{-16200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 1
    {{32400, 36000, {10, 5, 7}}, {28800, 39600, {4, 1, 7}}},  // 2
    {{-14400, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 3
    {{14400, 18000, {10, 5, 7}}, {10800, 21600, {4, 1, 7}}},  // 4
    {{-34200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 5
    {{3600, 7200, {9, 5, 7}}, {0, 10800, {3, 5, 7}}},  // 6
    {{-25200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 7
    {{21600, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 8
    {{-34200, -30600, {3, 1, 7}}, {-37800, -27000, {10, 5, 7}}},  // 9
    {{-21600, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 10
    {{-3600, 3600, {10, 5, 7}}, {-7200, 3600, {3, 5, 7}}},  // 11
    {{-39600, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 12
    {{21600, 25200, {10, 5, 7}}, {18000, 28800, {4, 1, 7}}},  // 13
    {{-28800, -25200, {10, 2, 7}}, {-32400, -21600, {4, 2, 7}}},  // 14
    {{43200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 15
    {{-7200, -7200, {9, 5, 7}}, {-10800, -7200, {3, 5, 7}}},  // 16
    {{10800, 14400, {2, 2, 7}}, {7200, 18000, {10, 3, 7}}},  // 17
    {{18000, 21600, {10, 5, 7}}, {14400, 25200, {4, 1, 7}}},  // 18
    {{-7200, -3600, {9, 5, 3}}, {-10800, 0, {5, 1, 5}}},  // 19
    {{-43200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 20
    {{-7200, -10800, {9, 5, 7}}, {-10800, -7200, {3, 5, 7}}},  // 21
    {{0, 7200, {10, 5, 7}}, {-3600, 7200, {3, 5, 7}}},  // 22
    {{0, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 23
    {{36000, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 24
    {{-19800, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 25
    {{-12600, -9000, {9, 4, 2}}, {-16200, -5400, {3, 1, 7}}},  // 26
    {{-7200, -3600, {9, 1, 7}}, {-10800, 0, {3, 5, 7}}},  // 27
    {{21600, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 28
    {{7200, 10800, {9, 5, 7}}, {3600, 14400, {3, 5, 7}}},  // 29
    {{25200, 28800, {10, 5, 7}}, {21600, 32400, {4, 1, 7}}},  // 30
    {{-43200, -39600, {3, 3, 7}}, {-46800, -36000, {10, 1, 7}}},  // 31
    {{12600, 16200, {10, 5, 7}}, {9000, 19800, {4, 1, 7}}},  // 32
    {{28800, 32400, {10, 5, 7}}, {25200, 36000, {4, 1, 7}}},  // 33
    {{-3600, 3600, {10, 5, 7}}, {-7200, 3600, {3, 5, 7}}},  // 34
    {{-10800, -7200, {9, 5, 7}}, {-14400, -3600, {3, 5, 7}}},  // 35
    {{10800, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 36
    {{18000, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 37
    {{14400, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 38
    {{39600, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 39
    {{-10800, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 40
    {{-7200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 41
    {{-36000, -32400, {3, 1, 7}}, {-39600, -28800, {10, 5, 7}}},  // 42
    {{-28800, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 43
    {{-36000, -32400, {3, 5, 7}}, {-39600, -28800, {10, 1, 7}}},  // 44
    {{-32400, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 45
    {{18000, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 46
    {{25200, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 47
    {{-3600, 3600, {10, 5, 7}}, {-7200, 3600, {3, 5, 7}}},  // 48
    {{-18000, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 49
    {{-36000, 0, {0, 0, 0}}, {0, 0, {0, 0, 0}}},  // 50
};
// clang-format on

struct HistoryRow {
    uint32_t lastYear;  // 0 ends a run
    ZoneRule rule;
};

// Runs of rules, newest first, each row serving the years up to its own; the last row of
// a run also serves every earlier year. Rows are numbered from 1.
// clang-format off
constexpr HistoryRow kHistory[44] = {
    {1986, {14400, 25200, {4, 5, 7}}},  // 1
    {1975, {14400, 25200, {2, 23, 0}}},  // 2
    {1974, {14400, 25200, {1, 6, 0}}},  // 3
    {1973, {14400, 25200, {4, 5, 7}}},  // 4
    {1920, {14400, 25200, {3, 5, 7}}},  // 5
    {1919, {0, 0, {0, 0, 0}}},  // 6
    {0, {0, 0, {0, 0, 0}}},  // 7
    {1986, {18000, 28800, {4, 5, 7}}},  // 8
    {1975, {18000, 28800, {2, 23, 0}}},  // 9
    {1974, {18000, 28800, {1, 6, 0}}},  // 10
    {1973, {18000, 28800, {4, 5, 7}}},  // 11
    {1936, {18000, 28800, {3, 1, 0}}},  // 12
    {1935, {18000, 28800, {4, 5, 7}}},  // 13
    {1921, {18000, 28800, {3, 5, 7}}},  // 14
    {1920, {18000, 28800, {6, 13, 0}}},  // 15
    {1919, {0, 0, {0, 0, 0}}},  // 16
    {0, {0, 0, {0, 0, 0}}},  // 17
    {1986, {21600, 32400, {4, 5, 7}}},  // 18
    {1975, {21600, 32400, {2, 23, 0}}},  // 19
    {1974, {21600, 32400, {1, 6, 0}}},  // 20
    {1973, {21600, 32400, {4, 5, 7}}},  // 21
    {1964, {0, 0, {0, 0, 0}}},  // 22
    {0, {0, 0, {0, 0, 0}}},  // 23
    {1986, {25200, 36000, {4, 5, 7}}},  // 24
    {1975, {25200, 36000, {2, 23, 0}}},  // 25
    {1974, {25200, 36000, {1, 6, 0}}},  // 26
    {1973, {25200, 36000, {4, 5, 7}}},  // 27
    {1949, {0, 0, {0, 0, 0}}},  // 28
    {0, {0, 0, {0, 0, 0}}},  // 29
    {1954, {18000, 21600, {9, 5, 7}}},  // 30
    {1920, {18000, 21600, {10, 5, 7}}},  // 31
    {1919, {0, 0, {0, 0, 0}}},  // 32
    {0, {0, 0, {0, 0, 0}}},  // 33
    {1954, {21600, 25200, {9, 5, 7}}},  // 34
    {1936, {21600, 25200, {11, 15, 0}}},  // 35
    {1935, {21600, 25200, {9, 5, 7}}},  // 36
    {1921, {21600, 25200, {10, 5, 7}}},  // 37
    {1919, {0, 0, {0, 0, 0}}},  // 38
    {0, {0, 0, {0, 0, 0}}},  // 39
    {1964, {0, 0, {0, 0, 0}}},  // 40
    {0, {0, 0, {0, 0, 0}}},  // 41
    {1961, {28800, 32400, {9, 5, 7}}},  // 42
    {1949, {0, 0, {0, 0, 0}}},  // 43
    {0, {0, 0, {0, 0, 0}}},  // 44
};
// clang-format on

struct HistoryStart {
    uint8_t zone;
    uint8_t standardRow;
    uint8_t daylightRow;
};

constexpr HistoryStart kHistoryStarts[] = {{13, 34, 8}, {18, 30, 1}, {30, 40, 18}, {33, 42, 24}};

struct LocalZone {
    bool loaded = false;
    ZoneRule standard{};
    ZoneRule daylight{};
};

LocalZone& Local() {
    static LocalZone zone;
    return zone;
}

uint8_t TableZone(uint8_t zone) {
    return zone > 50 ? 18 : zone;
}

// The history row in force in `year`, or `current` when the zone's history does not reach
// back to that year.
ZoneRule FromHistory(int startRow, uint32_t year, const ZoneRule& current) {
    if (startRow == 0) return current;
    const HistoryRow* row = &kHistory[startRow - 1];
    if (row->lastYear < year) return current;
    while (row[1].lastYear != 0 && row[1].lastYear >= year) ++row;
    return row->rule;
}

const HistoryStart* HistoryOf(uint8_t zone) {
    for (const HistoryStart& start : kHistoryStarts) {
        if (start.zone == zone) return &start;
    }
    return nullptr;
}

ZoneRule RuleFromChangeDate(int32_t bias, int32_t change, const platform::ZoneChangeDate& date) {
    if (date.wMonth == 0) return ZoneRule{bias, 0, {0, 0, 0}};
    ChangeRule rule;
    rule.month = static_cast<uint8_t>(date.wMonth);
    rule.week = static_cast<uint8_t>(date.wDay);
    rule.day =
        date.wYear != 0 ? 0 : static_cast<uint8_t>(date.wDayOfWeek == 0 ? 7 : date.wDayOfWeek);
    return ZoneRule{bias, change, rule};
}

}  // namespace

void rulesFromTimeZoneInformation(const platform::TimeZoneInformation& info, ZoneRule& standard,
                                  ZoneRule& daylight) {
    const platform::ZoneChangeDate& toStandard = info.StandardDate;
    const platform::ZoneChangeDate& toDaylight = info.DaylightDate;
    const int32_t standardBias = (info.Bias + info.StandardBias) * 60;
    // The change to standard time is read on the daylight clock, and the change to
    // daylight time on the standard clock: each in the wall clock of the rule it ends.
    standard = RuleFromChangeDate(
        standardBias,
        standardBias + (toStandard.wHour * 60 + info.DaylightBias + toStandard.wMinute) * 60 +
            toStandard.wSecond,
        toStandard);
    daylight = RuleFromChangeDate(
        (info.Bias + info.DaylightBias) * 60,
        (toDaylight.wHour * 60 + info.Bias + toDaylight.wMinute) * 60 + toDaylight.wSecond,
        toDaylight);
}

void loadLocalZone() {
    LocalZone& local = Local();
    if (local.loaded) return;
    rulesFromTimeZoneInformation(platform::GetTimeZoneInformation(), local.standard,
                                 local.daylight);
    local.loaded = true;
}

void clearLocalZone() {
    Local().loaded = false;
}

ZoneRule standardRule(uint8_t zone, uint32_t year) {
    if (zone == 0) {
        loadLocalZone();
        return Local().standard;
    }
    zone = TableZone(zone);
    ZoneRule standard, daylight;
    if (modernCalendar() && modernZoneRules(zone, year, standard, daylight)) return standard;
    const HistoryStart* history = HistoryOf(zone);
    const ZoneRule& current = kZones[zone - 1].standard;
    return history ? FromHistory(history->standardRow, year, current) : current;
}

ZoneRule daylightRule(uint8_t zone, uint32_t year) {
    if (zone == 0) {
        loadLocalZone();
        return Local().daylight;
    }
    zone = TableZone(zone);
    ZoneRule standard, daylight;
    if (modernCalendar() && modernZoneRules(zone, year, standard, daylight)) return daylight;
    const HistoryStart* history = HistoryOf(zone);
    const ZoneRule& current = kZones[zone - 1].daylight;
    return history ? FromHistory(history->daylightRow, year, current) : current;
}

}  // namespace qvnrt::calendar
