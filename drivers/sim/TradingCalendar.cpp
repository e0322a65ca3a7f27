#include "TradingCalendar.h"

#include <cstring>

#include "CivilDate.h"

namespace qvnsim {

namespace {

constexpr int MinuteOfDay(int16_t hourMinute) {
    return (hourMinute >> 8) * 60 + (hourMinute & 0xFF);
}

constexpr int64_t HolidayDay(const HOLIDAY_ROW& row) {
    return DaysFromCivil(row.year, row.month, row.day);
}

// Enough to keep a long session of requests from growing the cache without bound.
constexpr size_t kSessionCacheLimit = 8192;

}  // namespace

bool DayMaskAllows(uint8_t mask, int weekday) {
    // Tuesday to Thursday read their bits inverted, so that the letter "D" means Monday to
    // Friday; an odd mask is a period letter, which as a day mask means Monday to Friday.
    if (mask & 0x01) return weekday <= 5;
    switch (weekday) {
        case 1:
            return (mask & 0x40) != 0;
        case 2:
            return (mask & 0x20) == 0;
        case 3:
            return (mask & 0x10) == 0;
        case 4:
            return (mask & 0x08) == 0;
        case 5:
            return (mask & 0x04) != 0;
        case 6:
            return (mask & 0x02) != 0;
        default:
            return (mask & 0x80) != 0;
    }
}

TradingCalendar::TradingCalendar(uint8_t zone, bool firstSessionSameDay,
                                 std::vector<SessionRule> sessions,
                                 std::vector<HOLIDAY_ROW> holidays)
    : m_zone(zone), m_rules(), m_holidays(std::move(holidays)) {
    std::memset(&m_rules, 0, sizeof m_rules);
    m_rules.size = sizeof(SESSION_INFO);
    for (size_t i = 0; i < sessions.size() && i < 4; ++i) {
        m_rules.bSession[i] = 1;
        m_rules.tradeDays[i] = sessions[i].days;
        m_rules.sStartTime[i] = sessions[i].start;
        m_rules.sEndTime[i] = sessions[i].end;
    }
    m_rules.sOpeningSession = 0;
    m_rules.chTimeZone = zone;
    m_rules.bIsFirstSessionSameDay = firstSessionSameDay ? 1 : 0;
    m_rules.bSingleSessionStandard =
        firstSessionSameDay && sessions.size() == 1 && sessions[0].start < sessions[0].end;
    m_rules.dailyPeriod = sessions.empty() ? kMondayToFriday : sessions[0].days;

    HOLIDAYS_INFO header{};
    header.sNumHolidays = static_cast<int16_t>(m_holidays.size());
    header.bAreAllHolidaysFull = 1;
    for (const HOLIDAY_ROW& row : m_holidays) {
        if (row.session != 4) header.bAreAllHolidaysFull = 0;
    }
    m_holidayRecord.resize(sizeof(HOLIDAYS_INFO) + m_holidays.size() * sizeof(HOLIDAY_ROW));
    std::memcpy(m_holidayRecord.data(), &header, sizeof header);
    if (!m_holidays.empty()) {
        std::memcpy(m_holidayRecord.data() + sizeof header, m_holidays.data(),
                    m_holidays.size() * sizeof(HOLIDAY_ROW));
    }
}

int TradingCalendar::SessionsPerDay() const {
    int count = 0;
    for (const uint8_t exists : m_rules.bSession) count += exists ? 1 : 0;
    return count;
}

// The session that starts on the evening before its trading day and runs past midnight.
int TradingCalendar::Crossover() const {
    if (m_rules.bIsFirstSessionSameDay) return -1;
    int last = -1;
    for (int i = 0; i < 4; ++i) {
        if (!m_rules.bSession[i]) continue;
        if (m_rules.sStartTime[i] >= m_rules.sEndTime[i]) return i;
        last = i;
    }
    return last;
}

const HOLIDAY_ROW* TradingCalendar::FindHoliday(int64_t day, int session) const {
    for (const HOLIDAY_ROW& row : m_holidays) {
        const int64_t rowDay = HolidayDay(row);
        if (rowDay > day) break;
        if (rowDay == day && (row.session == 4 || row.session == session)) return &row;
    }
    return nullptr;
}

std::vector<Span> TradingCalendar::ComputeSessions(int64_t tradingDay) const {
    std::vector<Span> spans;
    const int weekday = Weekday(tradingDay);
    const int crossover = Crossover();
    for (int i = 0; i < 4; ++i) {
        if (!m_rules.bSession[i]) continue;
        if (!DayMaskAllows(static_cast<uint8_t>(m_rules.tradeDays[i] & 0xFF), weekday)) continue;
        const HOLIDAY_ROW* holiday = FindHoliday(tradingDay, i);
        if (holiday != nullptr && (holiday->session == 4 || holiday->endTime == 0xFFFF)) continue;

        const int startMinute = MinuteOfDay(m_rules.sStartTime[i]);
        int endMinute = MinuteOfDay(m_rules.sEndTime[i]);
        int64_t startDay = tradingDay;
        int64_t endDay = tradingDay;
        if (crossover >= 0 && i <= crossover) {
            startDay = tradingDay - 1;
            endDay = (i == crossover && startMinute >= endMinute) ? tradingDay : tradingDay - 1;
        } else if (startMinute >= endMinute) {
            endDay = tradingDay + 1;
        }
        if (holiday != nullptr) {
            // A short day: the session now ends at the row's time, the first such minute
            // after its start.
            endMinute = MinuteOfDay(static_cast<int16_t>(holiday->endTime));
            endDay = endMinute > startMinute ? startDay : startDay + 1;
        }
        const int64_t start = m_zone.LocalToUtc(startDay * kSecondsPerDay + startMinute * 60);
        const int64_t end = m_zone.LocalToUtc(endDay * kSecondsPerDay + endMinute * 60);
        if (end > start) spans.push_back({start, end, i});
    }
    return spans;
}

std::vector<Span> TradingCalendar::Sessions(int64_t tradingDay) const {
    auto found = m_sessionCache.find(tradingDay);
    if (found != m_sessionCache.end()) return found->second;
    if (m_sessionCache.size() >= kSessionCacheLimit) m_sessionCache.clear();
    return m_sessionCache.emplace(tradingDay, ComputeSessions(tradingDay)).first->second;
}

std::optional<int64_t> TradingCalendar::CurrentDay(int64_t utc) const {
    const int64_t localDay = DayOf(m_zone.UtcToLocal(utc));
    // A day's first session can begin on the evening before, hence the day after; the
    // longest closing (New Year in Tokyo with a weekend) is well inside two weeks.
    for (int64_t day = localDay + 1; day >= localDay - 15; --day) {
        const std::vector<Span> spans = Sessions(day);
        if (!spans.empty() && spans.front().start <= utc) return day;
    }
    return std::nullopt;
}

std::optional<int64_t> TradingCalendar::PreviousTradingDay(int64_t tradingDay) const {
    for (int64_t day = tradingDay - 1; day >= tradingDay - 16; --day) {
        if (!Sessions(day).empty()) return day;
    }
    return std::nullopt;
}

int TradingCalendar::SessionAt(int64_t utc) const {
    const std::optional<int64_t> day = CurrentDay(utc);
    if (!day) return -1;
    for (const Span& span : Sessions(*day)) {
        if (utc >= span.start && utc < span.end) return span.session;
    }
    return -1;
}

}  // namespace qvnsim
