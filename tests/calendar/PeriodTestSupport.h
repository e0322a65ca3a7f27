// Helpers of the trading-period tests: session and holiday records, instants in a zone, and a
// reference list of bars built day by day with plain civil-date arithmetic, independently of
// the library's walkers (the library only converts wall-clock times to values).
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <ranges>
#include <string>
#include <utility>
#include <vector>

#include <qvnrt/Date.h>

namespace qvnrt::test {

constexpr uint8_t kEastern = 18;

inline int16_t Hm(int hour, int minute) {
    return static_cast<int16_t>(hour << 8 | minute);
}

// Sessions as (start, end) pairs in table order, all on `mask`.
inline SESSION_INFO Sessions(bool sameDay, std::initializer_list<std::pair<int16_t, int16_t>> list,
                             uint8_t mask = 'D', uint8_t zone = kEastern) {
    SESSION_INFO info;
    std::memset(&info, 0, sizeof(info));
    info.size = 38;
    int i = 0;
    for (const auto& [start, end] : list) {
        info.bSession[i] = 1;
        info.tradeDays[i] = mask;
        info.sStartTime[i] = start;
        info.sEndTime[i] = end;
        ++i;
    }
    info.chTimeZone = zone;
    info.bIsFirstSessionSameDay = sameDay;
    info.bSingleSessionStandard = sameDay && i == 1;
    info.dailyPeriod = mask;
    return info;
}

inline uint32_t At(int year, int month, int day, int hour, int minute, int second = 0,
                   uint8_t zone = kEastern) {
    return Date().makeValue(month, day, year, hour, minute, second, zone);
}

inline std::string Text(uint32_t value, uint8_t zone = kEastern) {
    if (value < 2) return std::to_string(value);
    return static_cast<const char*>(Date(value).format("%a %Y-%m-%d %H:%M:%S", zone));
}

// A security's rules and a bar weight; each operation works on a fresh Date in zone 18.
struct Walker {
    SESSION_INFO info;
    int weight;
    HOLIDAYS_INFO* holidays = nullptr;

    template <typename Step>
    uint32_t apply(uint32_t from, Step step) {
        Date date(from);
        date.m_timeZone = kEastern;
        step(date);
        return date.m_value;
    }
    uint32_t add(uint32_t from, int count) {
        return apply(from, [&](Date& d) { d.addPeriods(count, 'I', weight, &info, holidays); });
    }
    uint32_t sub(uint32_t from, int count) {
        return apply(from, [&](Date& d) { d.subPeriods(count, 'I', weight, &info, holidays); });
    }
    uint32_t first(uint32_t from) {
        return apply(from, [&](Date& d) { d.setToFirstSecondOfPeriod(weight, &info, holidays); });
    }
    uint32_t last(uint32_t from) {
        return apply(from, [&](Date& d) { d.setToLastSecondOfPeriod(weight, &info, holidays); });
    }
    uint32_t nextStart(uint32_t from) {
        return apply(from, [&](Date& d) { d.toNextSessionStart(&info, holidays); });
    }
    // The in-session test of tick and bar conversion: one minute on and one back; `next`
    // gets the minute on.
    bool inSession(uint32_t minute, uint32_t* next = nullptr) {
        Walker minutes{info, -1, holidays};
        const uint32_t on = minutes.add(minute, 1);
        if (next) *next = on;
        return minutes.sub(on, 1) == minute;
    }
};

// Civil days from 1970-01-01, from the standard library's calendar, for the reference only.
inline long DaysFromCivil(int y, int m, int d) {
    return std::chrono::sys_days{std::chrono::year{y} / m / d}.time_since_epoch().count();
}
inline void CivilFromDays(long z, int& y, int& m, int& d) {
    const std::chrono::year_month_day date{std::chrono::sys_days{std::chrono::days{z}}};
    y = static_cast<int>(date.year());
    m = static_cast<int>(static_cast<unsigned>(date.month()));
    d = static_cast<int>(static_cast<unsigned>(date.day()));
}
// 1 for Monday to 7 for Sunday.
inline int WeekdayOfCivil(long z) {
    return static_cast<int>(
        std::chrono::weekday{std::chrono::sys_days{std::chrono::days{z}}}.iso_encoding());
}

struct HolidayRow {
    int year, month, day, session;
    uint16_t end;  // 0xFFFF: closed
};

// A HOLIDAYS_INFO in owned storage, rows sorted by date and session.
class HolidayTable {
public:
    HolidayTable(std::vector<HolidayRow> rows, bool allFull) : m_rows(std::move(rows)) {
        std::sort(m_rows.begin(), m_rows.end(), [](const HolidayRow& a, const HolidayRow& b) {
            const long da = DaysFromCivil(a.year, a.month, a.day);
            const long db = DaysFromCivil(b.year, b.month, b.day);
            return da != db ? da < db : a.session < b.session;
        });
        m_bytes.resize(4 + sizeof(HOLIDAY_ROW) * m_rows.size());
        HOLIDAYS_INFO* info = get();
        info->sNumHolidays = static_cast<int16_t>(m_rows.size());
        info->bAreAllHolidaysFull = allFull;
        for (size_t k = 0; k < m_rows.size(); ++k) {
            HOLIDAY_ROW& row = info->rows[k];
            row.month = static_cast<uint8_t>(m_rows[k].month);
            row.day = static_cast<uint8_t>(m_rows[k].day);
            row.year = static_cast<int16_t>(m_rows[k].year);
            row.session = static_cast<uint16_t>(m_rows[k].session);
            row.endTime = m_rows[k].end;
        }
    }
    HOLIDAYS_INFO* get() { return reinterpret_cast<HOLIDAYS_INFO*>(m_bytes.data()); }
    const std::vector<HolidayRow>& rows() const { return m_rows; }

private:
    std::vector<HolidayRow> m_rows;
    std::vector<unsigned char> m_bytes;
};

// Every bar start of one plain session a day (start to end, same calendar day) on Monday to
// Friday, in a zone, from `fromYear` to `toYear`: a day is skipped when a row closes it
// (session 4, or session 0 with no end), and ends early when a row shortens session 0.
class BarList {
public:
    struct Day {
        long civil;
        uint32_t first;
        long bars;
    };

    BarList(int start, int end, const std::vector<HolidayRow>& rows, int weight, int fromYear,
            int toYear, uint8_t zone = kEastern)
        : m_bar(-60 * weight) {
        size_t r = 0;
        for (long z = DaysFromCivil(fromYear, 1, 1); z <= DaysFromCivil(toYear, 12, 31); ++z) {
            if (WeekdayOfCivil(z) > 5) continue;
            int finish = end;
            bool closed = false;
            while (r < rows.size() && DaysFromCivil(rows[r].year, rows[r].month, rows[r].day) < z)
                ++r;
            for (size_t k = r;
                 k < rows.size() && DaysFromCivil(rows[k].year, rows[k].month, rows[k].day) == z;
                 ++k) {
                if (rows[k].session == 4 || rows[k].end == 0xFFFF) closed = true;
                if (rows[k].session == 0 && rows[k].end != 0xFFFF) finish = rows[k].end;
            }
            if (closed) continue;
            int y, m, d;
            CivilFromDays(z, y, m, d);
            const uint32_t first = At(y, m, d, start >> 8, start & 0xFF, 0, zone);
            const uint32_t last = At(y, m, d, finish >> 8, finish & 0xFF, 0, zone);
            m_days.push_back({z, first, static_cast<long>((last - first + m_bar - 1) / m_bar)});
        }
        m_prefix.push_back(0);
        for (const Day& day : m_days) m_prefix.push_back(m_prefix.back() + day.bars);
    }

    long size() const { return m_prefix.back(); }
    uint32_t bar() const { return m_bar; }
    // The day that holds bar j, as an index into days().
    size_t dayOf(long j) const {
        return static_cast<size_t>(std::upper_bound(m_prefix.begin(), m_prefix.end(), j) -
                                   m_prefix.begin() - 1);
    }
    long firstBarOf(size_t day) const { return m_prefix[day]; }
    uint32_t at(long j) const {
        const size_t day = dayOf(j);
        return m_days[day].first + static_cast<uint32_t>(j - m_prefix[day]) * m_bar;
    }
    // The index of the first bar that starts at or after the value.
    long firstAtOrAfter(uint32_t value) const {
        return *std::ranges::partition_point(std::views::iota(0L, size()),
                                             [&](long j) { return at(j) < value; });
    }
    const std::vector<Day>& days() const { return m_days; }

private:
    uint32_t m_bar;
    std::vector<Day> m_days;
    std::vector<long> m_prefix;
};

}  // namespace qvnrt::test
