#include "securities/SessionWalk.h"

#include <qvnrt/CSessionInfo.h>

namespace qvnrt::securities {

SessionWalk::SessionWalk(CSessionInfo* session, CHolidaysInfo* holidays) {
    // A record of size 0 has not been filled in by the service yet: walking it would answer
    // nonsense, so it counts as no rules at all.
    if (!session || session->m_info.size == 0) return;
    m_session = &session->m_info;
    m_holidays = holidays ? holidays->Rows() : nullptr;
    m_zone = m_session->chTimeZone;
}

Date SessionWalk::at(uint32_t time) const {
    Date date(time);
    date.m_timeZone = m_zone;
    return date;
}

void SessionWalk::add(Date& date, int weight) const {
    date.addPeriods(1, 'I', weight, m_session, m_holidays, m_zone);
}

void SessionWalk::sub(Date& date, int weight) const {
    date.subPeriods(1, 'I', weight, m_session, m_holidays, m_zone);
}

void SessionWalk::toNextSessionStart(Date& date) const {
    date.toNextSessionStart(m_session, m_holidays, m_zone);
}

void SessionWalk::toLastSecond(Date& date, int weight) const {
    date.setToLastSecondOfPeriod(weight, m_session, m_holidays, m_zone);
}

void SessionWalk::toFirstSecond(Date& date, int weight) const {
    date.setToFirstSecondOfPeriod(weight, m_session, m_holidays, m_zone);
}

bool SessionWalk::minuteTest(uint32_t time, uint32_t& next) const {
    const uint32_t minute = minuteOf(time);
    Date date = at(minute);
    add(date, -1);
    next = date.m_value;
    sub(date, -1);
    return date.m_value == minute;
}

uint32_t SessionWalk::sessionEnd(uint32_t time, int walkWeight, int lastWeight,
                                 uint32_t& lastBarStart) const {
    uint32_t nextStart = 0;
    return sessionEnd(time, walkWeight, lastWeight, lastBarStart, nextStart);
}

uint32_t SessionWalk::sessionEnd(uint32_t time, int walkWeight, int lastWeight,
                                 uint32_t& lastBarStart, uint32_t& nextStart) const {
    Date date = at(minuteOf(time));
    toNextSessionStart(date);
    nextStart = date.m_value;
    sub(date, walkWeight);
    lastBarStart = date.m_value;
    toLastSecond(date, lastWeight);
    return date.m_value;
}

uint32_t SessionWalk::barStart(uint32_t time, int weight) const {
    Date date = at(time);
    add(date, weight);
    sub(date, weight);
    return date.m_value;
}

uint32_t SessionWalk::firstSecond(uint32_t time, int weight) const {
    Date date = at(time);
    toFirstSecond(date, weight);
    return date.m_value;
}

uint32_t SessionWalk::lastSecond(uint32_t time, int weight) const {
    Date date = at(time);
    toLastSecond(date, weight);
    return date.m_value;
}

}  // namespace qvnrt::securities
