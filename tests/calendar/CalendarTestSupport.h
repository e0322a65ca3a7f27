// Helpers shared by the calendar tests: instants built with the C library (so that expected
// values never come from the code under test); ScopedEnv comes from the shared support.
#pragma once

#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string>

#include <qvnrt/Date.h>

#include "support/ScopedEnv.h"

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

}  // namespace qvnrt::test
