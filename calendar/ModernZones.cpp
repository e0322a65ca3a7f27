#include "calendar/ModernZones.h"

#include <array>
#include <iostream>
#include <memory>
#include <optional>
#include <vector>

#include <qvnrt/Date.h>

#include "platform/LocalZone.h"

namespace qvnrt::calendar {
namespace {

// Rows whose biases and change rules name one region. The three rows of Central European
// time (11, 34, 48) and the two of Eastern European time share one set of rules among many
// regions; the rows south of the equator keep daylight time over the turn of the year, which
// a row's form cannot state; row 6 (the Azores) moved its standard offset twice in 1992 and
// 1993: those rows stay as they are. A mapped row keeps its own rules in a year whose
// changes its form cannot state either (one standard offset and one summer a year).
struct MappedRow {
    uint8_t zone;
    const char* region;
};
constexpr MappedRow kMappedRows[] = {
    {2, "America/Anchorage"}, {4, "America/Halifax"},      {13, "America/Chicago"},
    {18, "America/New_York"}, {22, "Europe/London"},       {30, "America/Denver"},
    {32, "America/St_Johns"}, {33, "America/Los_Angeles"},
};

constexpr uint32_t kFirstYear = 1900;
constexpr uint32_t kLastYear = 2037;

struct YearRules {
    bool stated = false;
    ZoneRule standard{};
    ZoneRule daylight{};
};

using ZoneYears = std::array<YearRules, kLastYear - kFirstYear + 1>;

constexpr int64_t kSecondsPerDay = 86400;

// Days since 1970-01-01 to the civil date (H. Hinnant's algorithm).
void CivilFromDays(int64_t z, int& y, int& m, int& d) {
    z += 719468;
    const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
    const int64_t doe = z - era * 146097;
    const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
    const int64_t mp = (5 * doy + 2) / 153;
    d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
    m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    y = static_cast<int>(yoe + era * 400 + (m <= 2));
}

int64_t FloorDiv(int64_t a, int64_t b) {
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)));
}

// A change as a row states it: on the local date of the clock it ends, `change` seconds
// after 00:00 GMT of that date, which is the local time plus the ending clock's bias.
struct Change {
    int year, month, day;
    ZoneRule rule;
};

Change ChangeOf(const platform::ZoneTransition& t) {
    const int64_t local = t.at + t.offsetBefore;
    const int64_t days = FloorDiv(local, kSecondsPerDay);
    Change change{};
    CivilFromDays(days, change.year, change.month, change.day);
    const int64_t timeOfDay = local - days * kSecondsPerDay;
    change.rule.bias = -t.offsetAfter;
    change.rule.change = static_cast<int32_t>(timeOfDay - t.offsetBefore);
    // A plain day of the month: exact for the one year that the rule serves.
    change.rule.rule = {static_cast<uint8_t>(change.month), static_cast<uint8_t>(change.day), 0};
    return change;
}

std::unique_ptr<ZoneYears> BuildYears(const char* region) {
    std::vector<platform::ZoneTransition> transitions;
    platform::TimeZoneInformation closing;
    if (!platform::ReadZoneHistory(region, transitions, closing)) return nullptr;
    auto years = std::make_unique<ZoneYears>();
    const int lastListedYear =
        transitions.empty() ? static_cast<int>(kFirstYear) - 1 : ChangeOf(transitions.back()).year;
    // The clock in force through each year without changes, and the changes of the others.
    int32_t offset = transitions.empty() ? 0 : transitions.front().offsetBefore;
    bool daylight = false;
    size_t next = 0;
    for (uint32_t year = kFirstYear; year <= kLastYear; ++year) {
        std::optional<Change> toDaylight, toStandard;
        bool other = false;
        while (next < transitions.size() && ChangeOf(transitions[next]).year <= int(year)) {
            const platform::ZoneTransition& t = transitions[next++];
            const Change change = ChangeOf(t);
            if (change.year == int(year)) {
                if (t.daylightAfter && !daylight && !toDaylight) {
                    toDaylight = change;
                } else if (!t.daylightAfter && daylight) {
                    toStandard = change;
                } else {
                    other = true;  // a change of the standard offset, or a second summer
                }
            }
            offset = t.offsetAfter;
            daylight = t.daylightAfter;
        }
        YearRules& rules = (*years)[year - kFirstYear];
        if (int(year) > lastListedYear && !transitions.empty() &&
            transitions.back().daylightAfter == false && closing.DaylightDate.wMonth != 0) {
            // Past the listed changes the closing rule serves.
            rulesFromTimeZoneInformation(closing, rules.standard, rules.daylight);
            rules.stated = true;
        } else if (toDaylight && toStandard && toDaylight->month < toStandard->month && !other) {
            rules.standard = toStandard->rule;
            rules.daylight = toDaylight->rule;
            rules.stated = true;
        } else if (!toDaylight && !toStandard && !other && !daylight) {
            rules.standard = ZoneRule{-offset, 0, {0, 0, 0}};
            rules.stated = true;
        }
    }
    return years;
}

struct ModernZoneState {
    bool warned = false;
    std::array<std::unique_ptr<ZoneYears>, 51> years;
    std::array<bool, 51> tried{};
};

ModernZoneState& State() {
    static ModernZoneState state;
    return state;
}

}  // namespace

const char* modernZoneRegion(uint8_t zone) {
    for (const MappedRow& row : kMappedRows) {
        if (row.zone == zone) return row.region;
    }
    return nullptr;
}

bool modernZoneRules(uint8_t zone, uint32_t year, ZoneRule& standard, ZoneRule& daylight) {
    if (zone == 0 || zone > 50 || year < kFirstYear || year > kLastYear) return false;
    ModernZoneState& state = State();
    if (!state.tried[zone]) {
        state.tried[zone] = true;
        if (const char* region = modernZoneRegion(zone)) {
            state.years[zone] = BuildYears(region);
            if (!state.years[zone] && !state.warned) {
                state.warned = true;
                std::clog << "QvnRT: the tz database has no readable " << region
                          << "; the calendar keeps its own zone rules" << std::endl;
            }
        }
    }
    if (!state.years[zone]) return false;
    const YearRules& rules = (*state.years[zone])[year - kFirstYear];
    if (!rules.stated) return false;
    standard = rules.standard;
    daylight = rules.daylight;
    return true;
}

}  // namespace qvnrt::calendar
