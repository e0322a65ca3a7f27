#include "Listing.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <sstream>

#include "CivilDate.h"
#include "CsvText.h"

namespace qvnreplay {

namespace {

// Monday to Friday in the library's day mask.
constexpr uint16_t kMondayToFriday = 0x44;

bool ParseHourMinute(std::string_view text, int16_t& out) {
    const std::optional<int64_t> value = ParseWhole(text);
    if (text.size() != 4 || !value || *value / 100 > 23 || *value % 100 > 59) return false;
    out = static_cast<int16_t>((*value / 100) << 8 | (*value % 100));
    return true;
}

std::optional<int> Whole(std::string_view text, int low, int high) {
    const std::optional<int64_t> value = ParseWhole(text);
    if (!value || *value < low || *value > high) return std::nullopt;
    return static_cast<int>(*value);
}

// Calls `line` for each line after the header with its number; reports what it refuses.
void EachLine(const std::string& path, int fieldCount,
              const std::function<bool(std::string_view*)>& line) {
    std::ifstream file(path);
    if (!file) return;  // a missing file lists nothing
    std::string text;
    size_t number = 0;
    while (std::getline(file, text)) {
        if (++number == 1 || TrimBlanks(text).empty()) continue;  // the header line
        std::string_view fields[16];
        if (SplitFields(text, fields, 16) != fieldCount || !line(fields)) {
            std::fprintf(stderr, "qvnreplay: %s:%zu: malformed line (skipped)\n", path.c_str(),
                         number);
        }
    }
}

}  // namespace

bool Listing::ParseSessions(const std::string& text, SESSION_INFO& rules) {
    std::memset(&rules, 0, sizeof rules);
    std::stringstream spans(text);
    std::string span;
    int count = 0;
    while (spans >> span) {
        if (count == 4 || span.size() != 9 || span[4] != '-') return false;
        int16_t start = 0, end = 0;
        if (!ParseHourMinute(std::string_view(span).substr(0, 4), start) ||
            !ParseHourMinute(std::string_view(span).substr(5), end)) {
            return false;
        }
        rules.bSession[count] = 1;
        rules.tradeDays[count] = kMondayToFriday;
        rules.sStartTime[count] = start;
        rules.sEndTime[count] = end;
        ++count;
    }
    if (count == 0) return text.find_first_not_of(' ') == std::string::npos;
    rules.size = sizeof(SESSION_INFO);
    // A first session that ends before it starts opens on the evening before its day.
    rules.bIsFirstSessionSameDay = rules.sStartTime[0] < rules.sEndTime[0] ? 1 : 0;
    rules.bSingleSessionStandard = count == 1 && rules.bIsFirstSessionSameDay;
    rules.dailyPeriod = kMondayToFriday;
    return true;
}

bool Listing::ParseHolidays(const std::string& text, const SESSION_INFO& rules,
                            std::vector<uint8_t>& record) {
    int lastSession = 0;
    for (int i = 0; i < 4; ++i) {
        if (rules.bSession[i]) lastSession = i;
    }
    std::vector<HOLIDAY_ROW> rows;
    std::stringstream items(text);
    std::string item;
    while (items >> item) {
        const std::optional<int64_t> day = ParseDay(std::string_view(item).substr(0, 10));
        HOLIDAY_ROW row{};
        if (!day || (item.size() != 10 && (item.size() != 15 || item[10] != '@'))) return false;
        const CivilDate date = CivilFromDays(*day);
        row.year = static_cast<int16_t>(date.year);
        row.month = static_cast<uint8_t>(date.month);
        row.day = static_cast<uint8_t>(date.day);
        row.session = 4;
        row.endTime = 0xFFFF;
        if (item.size() == 15) {
            int16_t end = 0;
            if (!ParseHourMinute(std::string_view(item).substr(11), end)) return false;
            row.session = static_cast<uint16_t>(lastSession);
            row.endTime = static_cast<uint16_t>(end);
        }
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end(), [](const HOLIDAY_ROW& a, const HOLIDAY_ROW& b) {
        if (a.year != b.year) return a.year < b.year;
        if (a.month != b.month) return a.month < b.month;
        if (a.day != b.day) return a.day < b.day;
        return a.session < b.session;
    });
    HOLIDAYS_INFO header{};
    header.sNumHolidays = static_cast<int16_t>(rows.size());
    header.bAreAllHolidaysFull = 1;
    for (const HOLIDAY_ROW& row : rows) {
        if (row.session != 4) header.bAreAllHolidaysFull = 0;
    }
    record.assign(sizeof header + rows.size() * sizeof(HOLIDAY_ROW), 0);
    std::memcpy(record.data(), &header, sizeof header);
    if (!rows.empty()) {
        std::memcpy(record.data() + sizeof header, rows.data(), rows.size() * sizeof(HOLIDAY_ROW));
    }
    return true;
}

Listing::Listing(const std::string& dataDir) {
    ReadSecurities(dataDir + "/securities.csv");
    ReadExchanges(dataDir + "/exchanges.csv");
}

void Listing::ReadSecurities(const std::string& path) {
    EachLine(path, 8, [this](std::string_view* f) {
        ListedSecurity s;
        s.symbol = std::string(f[0]);
        s.name = std::string(f[1]);
        const std::optional<int> asset = Whole(f[2], 0, 255);
        const std::optional<int> exchange = Whole(f[3], 0, 255);
        const std::optional<int> zone = Whole(f[4], 0, 255);
        const std::optional<int> style = f[7].empty() ? std::optional<int>(0) : Whole(f[7], 0, 255);
        if (s.symbol.empty() || s.symbol.size() > 15 || !asset || !exchange || !zone || !style ||
            !ParseSessions(std::string(f[5]), s.rules) ||
            !ParseHolidays(std::string(f[6]), s.rules, s.holidays)) {
            return false;
        }
        s.assetType = *asset;
        s.exchange = *exchange;
        s.zone = *zone;
        s.priceStyle = *style;
        s.rules.chTimeZone = static_cast<uint8_t>(s.zone);
        m_securities[s.symbol] = std::move(s);
        return true;
    });
}

void Listing::ReadExchanges(const std::string& path) {
    EachLine(path, 9, [this](std::string_view* f) {
        ListedExchange e;
        const std::optional<int> number = Whole(f[0], 0, 255);
        int16_t open = 0, close = 0;
        const std::optional<int> zone = Whole(f[7], 0, 255);
        const std::optional<int> delay = Whole(f[8], 0, 255);
        if (!number || !ParseHourMinute(f[4], open) || !ParseHourMinute(f[5], close) || !zone ||
            !delay) {
            return false;
        }
        e.number = *number;
        e.suffix = std::string(f[1]);
        e.shortName = std::string(f[2]);
        e.longName = std::string(f[3]);
        e.currency = std::string(f[6]);
        e.openHour = open >> 8;
        e.openMinute = open & 0xFF;
        e.closeHour = close >> 8;
        e.closeMinute = close & 0xFF;
        e.zone = *zone;
        e.delayMinutes = *delay;
        m_exchanges[e.number] = std::move(e);
        return true;
    });
}

const ListedSecurity* Listing::Find(const std::string& symbol) const {
    const auto found = m_securities.find(symbol);
    return found == m_securities.end() ? nullptr : &found->second;
}

const ListedExchange* Listing::FindExchange(long number) const {
    const auto found = m_exchanges.find(static_cast<int>(number));
    return found == m_exchanges.end() ? nullptr : &found->second;
}

}  // namespace qvnreplay
