/// \file
/// Time: a time of day.
#pragma once

#include <cstdint>

#include <qvnrt/export.h>

/// A time of day: hour, minute, second.
class QVNRT_API Time {
public:
    /// The machine's local time of day now, read through the library's clock (see
    /// qvnrt::SetClock) and the C library's idea of the local zone.
    Time();

    void setTime(int32_t hour, int32_t minute, int32_t second);
    int32_t getHour() const { return m_hour; }
    int32_t getMinute() const { return m_minute; }

    int32_t m_hour;
    int32_t m_minute;
    int32_t m_second;
    int32_t m_mode;  ///< 2 after the default constructor; nothing in the library reads it
};

static_assert(sizeof(Time) == 16, "Time is four 32-bit words, with no table of virtual operations");
