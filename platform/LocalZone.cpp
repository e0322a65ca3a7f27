#include "platform/LocalZone.h"

#include <time.h>
#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>

#include "platform/Directories.h"

namespace qvnrt::platform {
namespace {

const char kDefaultZoneFile[] = "/etc/localtime";
const char kDefaultZoneDirectory[] = "/usr/share/zoneinfo";
// Far more than any zone file holds; a bigger file is not a zone file.
const std::streamsize kMaxZoneFileSize = 4 << 20;

std::string& LocalZoneFilePath() {
    static std::string path = kDefaultZoneFile;
    return path;
}

// One change date of a POSIX rule.
struct PosixDate {
    enum Kind { kMonthWeekDay, kJulianNoLeap, kJulianWithLeap } kind = kMonthWeekDay;
    int month = 0, week = 0, weekday = 0;  // Mm.w.d
    int dayNumber = 0;                     // Jn or n
    int seconds = 2 * 3600;                // local time of the change, 02:00 by default
};

// The C library's rules for a daylight zone named without them.
const PosixDate kDefaultDaylightStart{PosixDate::kMonthWeekDay, 3, 2, 0, 0, 2 * 3600};
const PosixDate kDefaultDaylightEnd{PosixDate::kMonthWeekDay, 11, 1, 0, 0, 2 * 3600};

class PosixRuleParser {
public:
    explicit PosixRuleParser(const std::string& text)
        : m_p(text.c_str()), m_end(text.c_str() + text.size()) {}

    bool Parse(TimeZoneInformation& info) {
        int standardOffset = 0;
        if (!Name() || !Offset(standardOffset, 24)) return false;
        TimeZoneInformation result;
        result.Bias = standardOffset / 60;
        if (AtEnd()) {  // no daylight time: both change dates stay zero
            info = result;
            return true;
        }
        if (!Name()) return false;
        int daylightOffset = standardOffset - 3600;
        if (!AtEnd() && *m_p != ',' && !Offset(daylightOffset, 24)) return false;
        PosixDate start = kDefaultDaylightStart;
        PosixDate end = kDefaultDaylightEnd;
        if (!AtEnd()) {
            if (!Skip(',') || !Date(start) || !Skip(',') || !Date(end) || !AtEnd()) {
                return false;
            }
        }
        result.DaylightBias = daylightOffset / 60 - result.Bias;
        Fill(result.DaylightDate, start);
        Fill(result.StandardDate, end);
        info = result;
        return true;
    }

private:
    bool AtEnd() const { return m_p == m_end; }

    bool Skip(char ch) {
        if (AtEnd() || *m_p != ch) return false;
        ++m_p;
        return true;
    }

    // Three or more letters, or <...> of letters, digits, '+' and '-'.
    bool Name() {
        const char* start = m_p;
        if (Skip('<')) {
            start = m_p;
            while (!AtEnd() &&
                   (std::isalnum(static_cast<unsigned char>(*m_p)) || *m_p == '+' || *m_p == '-')) {
                ++m_p;
            }
            const bool longEnough = m_p - start >= 3;
            return Skip('>') && longEnough;
        }
        while (!AtEnd() && std::isalpha(static_cast<unsigned char>(*m_p))) ++m_p;
        return m_p - start >= 3;
    }

    bool Number(int& value, int maxDigits) {
        const char* start = m_p;
        value = 0;
        while (!AtEnd() && std::isdigit(static_cast<unsigned char>(*m_p)) &&
               m_p - start < maxDigits) {
            value = value * 10 + (*m_p++ - '0');
        }
        return m_p != start;
    }

    // [+|-]hh[:mm[:ss]], in seconds; positive west of Greenwich, as Windows' bias.
    bool Offset(int& seconds, int maxHours) {
        int sign = 1;
        if (Skip('-')) {
            sign = -1;
        } else {
            Skip('+');
        }
        int hours = 0, minutes = 0, secs = 0;
        if (!Number(hours, 3) || hours > maxHours) return false;
        if (Skip(':')) {
            if (!Number(minutes, 2) || minutes > 59) return false;
            if (Skip(':') && (!Number(secs, 2) || secs > 59)) return false;
        }
        seconds = sign * (hours * 3600 + minutes * 60 + secs);
        return true;
    }

    bool Date(PosixDate& date) {
        if (Skip('M')) {
            date.kind = PosixDate::kMonthWeekDay;
            if (!Number(date.month, 2) || date.month < 1 || date.month > 12) return false;
            if (!Skip('.') || !Number(date.week, 1) || date.week < 1 || date.week > 5) {
                return false;
            }
            if (!Skip('.') || !Number(date.weekday, 1) || date.weekday > 6) return false;
        } else if (Skip('J')) {
            date.kind = PosixDate::kJulianNoLeap;
            if (!Number(date.dayNumber, 3) || date.dayNumber < 1 || date.dayNumber > 365) {
                return false;
            }
        } else {
            date.kind = PosixDate::kJulianWithLeap;
            if (!Number(date.dayNumber, 3) || date.dayNumber > 365) return false;
        }
        date.seconds = 2 * 3600;
        // RFC 8536 lets the time run from -167 to 167 hours.
        return !Skip('/') || Offset(date.seconds, 167);
    }

    static void Fill(ZoneChangeDate& out, const PosixDate& date) {
        out = ZoneChangeDate();
        if (date.kind == PosixDate::kMonthWeekDay) {
            out.wMonth = date.month;
            out.wDay = date.week;
            out.wDayOfWeek = date.weekday;
        } else {
            // "n" counts February 29 and "Jn" does not; as an absolute date both become a
            // day of a common year, so "n" is one day late after February in leap years.
            int day = date.kind == PosixDate::kJulianNoLeap ? date.dayNumber : date.dayNumber + 1;
            if (day > 365) day = 365;
            static const int kMonthLengths[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
            int month = 0;
            while (day > kMonthLengths[month]) day -= kMonthLengths[month++];
            out.wYear = 1;  // any nonzero year marks an absolute date
            out.wMonth = month + 1;
            out.wDay = day;
        }
        // Truncating division keeps the three parts' signs equal, so they add up exactly.
        out.wHour = date.seconds / 3600;
        out.wMinute = date.seconds % 3600 / 60;
        out.wSecond = date.seconds % 60;
    }

    const char* m_p;
    const char* m_end;
};

uint32_t BigEndian32(const unsigned char* bytes) {
    return (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) | (uint32_t{bytes[2]} << 8) |
           uint32_t{bytes[3]};
}

// Size of the data block that follows the TZif header at `at`, with times of `timeSize`
// bytes; false when the header is not there.
bool TzifBlockSize(const std::string& bytes, uint64_t at, uint64_t timeSize, uint64_t& size) {
    if (at + 44 > bytes.size() || bytes.compare(at, 4, "TZif") != 0) return false;
    const auto* header = reinterpret_cast<const unsigned char*>(bytes.data()) + at;
    const uint64_t isUtCount = BigEndian32(header + 20);
    const uint64_t isStdCount = BigEndian32(header + 24);
    const uint64_t leapCount = BigEndian32(header + 28);
    const uint64_t timeCount = BigEndian32(header + 32);
    const uint64_t typeCount = BigEndian32(header + 36);
    const uint64_t charCount = BigEndian32(header + 40);
    size = timeCount * timeSize + timeCount + typeCount * 6 + charCount +
           leapCount * (timeSize + 4) + isStdCount + isUtCount;
    return true;
}

// The POSIX rule between the newlines that end a TZif file of version 2 or later.
bool TzifFooter(const std::string& bytes, std::string& footer) {
    if (bytes.size() < 44 || bytes.compare(0, 4, "TZif") != 0 || bytes[4] < '2') return false;
    uint64_t firstBlock = 0, secondBlock = 0;
    if (!TzifBlockSize(bytes, 0, 4, firstBlock)) return false;
    const uint64_t secondHeader = 44 + firstBlock;
    if (!TzifBlockSize(bytes, secondHeader, 8, secondBlock)) return false;
    const uint64_t footerStart = secondHeader + 44 + secondBlock;
    if (footerStart >= bytes.size() || bytes[footerStart] != '\n') return false;
    const size_t footerEnd = bytes.find('\n', footerStart + 1);
    if (footerEnd == std::string::npos) return false;
    footer = bytes.substr(footerStart + 1, footerEnd - footerStart - 1);
    return !footer.empty();
}

std::string ZoneFileOf(const std::string& name) {
    if (name.empty() || name[0] == '/') return name;
    const char* directory = std::getenv("TZDIR");
    return JoinPath(directory && *directory ? directory : kDefaultZoneDirectory, name);
}

}  // namespace

bool TimeZoneFromPosixRule(const std::string& rule, TimeZoneInformation& info) {
    return PosixRuleParser(rule).Parse(info);
}

namespace {

bool ReadZoneFile(const std::string& path, std::string& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    bytes.resize(kMaxZoneFileSize + 1);
    in.read(bytes.data(), kMaxZoneFileSize + 1);
    if (in.gcount() > kMaxZoneFileSize) return false;
    bytes.resize(static_cast<size_t>(in.gcount()));
    return true;
}

int32_t SignedBigEndian32(const unsigned char* bytes) {
    return static_cast<int32_t>(BigEndian32(bytes));
}

}  // namespace

bool TimeZoneFromTzifFile(const std::string& path, TimeZoneInformation& info) {
    std::string bytes, footer;
    return !path.empty() && ReadZoneFile(path, bytes) && TzifFooter(bytes, footer) &&
           TimeZoneFromPosixRule(footer, info);
}

bool ReadZoneHistory(const std::string& name, std::vector<ZoneTransition>& transitions,
                     TimeZoneInformation& rule) {
    std::string bytes, footer;
    if (name.empty() || !ReadZoneFile(ZoneFileOf(name), bytes)) return false;
    if (!TzifFooter(bytes, footer) || !TimeZoneFromPosixRule(footer, rule)) return false;
    uint64_t firstBlock = 0;
    TzifBlockSize(bytes, 0, 4, firstBlock);  // TzifFooter has checked both headers
    const uint64_t header = 44 + firstBlock;
    const auto* data = reinterpret_cast<const unsigned char*>(bytes.data()) + header;
    const uint64_t timeCount = BigEndian32(data + 32);
    const uint64_t typeCount = BigEndian32(data + 36);
    if (typeCount == 0) return false;
    const unsigned char* times = data + 44;
    const unsigned char* indexes = times + timeCount * 8;
    const unsigned char* types = indexes + timeCount;
    auto offsetOf = [&](uint64_t type) { return SignedBigEndian32(types + 6 * type); };
    transitions.clear();
    // Before the first transition the first type is in force (RFC 8536, 3.2).
    int32_t before = offsetOf(0);
    for (uint64_t k = 0; k < timeCount; ++k) {
        const uint64_t type = indexes[k];
        if (type >= typeCount) return false;
        const int64_t at = static_cast<int64_t>((uint64_t{BigEndian32(times + 8 * k)} << 32) |
                                                BigEndian32(times + 8 * k + 4));
        const int32_t after = offsetOf(type);
        transitions.push_back({at, before, after, types[6 * type + 4] != 0});
        before = after;
    }
    return true;
}

TimeZoneInformation GetTimeZoneInformation() {
    TimeZoneInformation info;  // GMT, no daylight time
    const char* tz = std::getenv("TZ");
    if (tz) {
        const std::string value = tz[0] == ':' ? tz + 1 : tz;
        if (value.empty()) return info;
        if (!TimeZoneFromTzifFile(ZoneFileOf(value), info)) TimeZoneFromPosixRule(value, info);
        return info;
    }
    TimeZoneFromTzifFile(LocalZoneFilePath(), info);
    return info;
}

std::string SetLocalZoneFile(const std::string& path) {
    std::string previous = LocalZoneFilePath();
    LocalZoneFilePath() = path.empty() ? std::string(kDefaultZoneFile) : path;
    return previous;
}

void ReloadLocalZone() {
    ::tzset();
}

void LocalTimeOfDay(time_t when, int& hour, int& minute, int& second) {
    struct tm parts;
    std::memset(&parts, 0, sizeof(parts));
    ::localtime_r(&when, &parts);
    hour = parts.tm_hour;
    minute = parts.tm_min;
    second = parts.tm_sec;
}

}  // namespace qvnrt::platform
