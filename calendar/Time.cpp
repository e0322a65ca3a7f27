#include <qvnrt/Time.h>

#include "platform/Clock.h"
#include "platform/LocalZone.h"

Time::Time() : m_mode(2) {
    int hour = 0, minute = 0, second = 0;
    qvnrt::platform::LocalTimeOfDay(qvnrt::platform::Now(), hour, minute, second);
    m_hour = hour;
    m_minute = minute;
    m_second = second;
}

void Time::setTime(int32_t hour, int32_t minute, int32_t second) {
    m_hour = hour;
    m_minute = minute;
    m_second = second;
}
