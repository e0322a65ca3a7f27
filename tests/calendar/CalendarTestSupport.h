// Helpers shared by the calendar tests: instants built with the C library (so that expected
// values never come from the code under test) and a scoped environment variable.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

#include <qvnrt/Date.h>

namespace qvnrt::test {

// The Date value of a GMT wall-clock time, by timegm.
inline uint32_t GmtValue(int year, int month, int day, int hour = 0, int minute = 0,
                         int second = 0) {
    struct tm parts = {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    return static_cast<uint32_t>(::timegm(&parts)) + EPOCH_1970;
}

struct Fields {
    uint32_t year, month, day, hour, minute, second;
    bool operator==(const Fields&) const = default;
};

inline Fields FieldsOf(const Date& date, uint8_t zone) {
    Fields f{};
    date.getMDYHMS(f.month, f.day, f.year, f.hour, f.minute, f.second, zone);
    return f;
}

inline std::string ToString(const Fields& f) {
    char text[64];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u %02u:%02u:%02u", f.year, f.month, f.day,
                  f.hour, f.minute, f.second);
    return text;
}

// Sets (or, with nullopt, unsets) a variable for the life of the object, and makes the C
// library read TZ again when that is the one.
class ScopedEnv {
public:
    ScopedEnv(const char* name, std::optional<std::string> value) : m_name(name) {
        if (const char* old = std::getenv(name)) m_old = old;
        Set(value);
    }
    ~ScopedEnv() { Set(m_old); }
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    void Set(const std::optional<std::string>& value) {
        if (value) {
            ::setenv(m_name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(m_name.c_str());
        }
        ::tzset();
    }

    std::string m_name;
    std::optional<std::string> m_old;
};

}  // namespace qvnrt::test
