#include <qvnrt/CSessionInfo.h>

#include <cstdlib>
#include <cstring>

namespace {

constexpr uint16_t kRulesSize = 38;

// Every field of the record but the spare byte.
void CopyRules(SESSION_INFO& to, const SESSION_INFO& from) {
    const uint8_t spare = to.spare;
    to = from;
    to.spare = spare;
    to.size = kRulesSize;
}

}  // namespace

CSessionInfo::CSessionInfo() : m_refCount(1) { m_info.size = kRulesSize; }

CSessionInfo::CSessionInfo(const SESSION_INFO* rules) : m_info{}, m_refCount(1) {
    m_info.size = kRulesSize;
    if (rules) CopyRules(m_info, *rules);
}

CSessionInfo::CSessionInfo(const CSessionInfo& other) : m_info{}, m_refCount(1) {
    CopyRules(m_info, other.m_info);
}

CSessionInfo& CSessionInfo::operator=(const CSessionInfo& other) {
    m_info = other.m_info;
    m_refCount = other.m_refCount;
    return *this;
}

int CSessionInfo::Use() { return ++m_refCount; }

int CSessionInfo::Free() {
    if (m_refCount > 0) --m_refCount;
    return m_refCount;
}

bool CSessionInfo::IsFree() const { return m_refCount < 1; }

CHolidaysInfo::CHolidaysInfo() : m_refCount(1), m_pHolidays(nullptr) {}

CHolidaysInfo::CHolidaysInfo(const HOLIDAYS_INFO* holidays) : CHolidaysInfo() {
    if (!holidays || holidays->sNumHolidays < 0) return;
    const size_t size = 4 + sizeof(HOLIDAY_ROW) * static_cast<size_t>(holidays->sNumHolidays);
    m_pHolidays = static_cast<HOLIDAYS_INFO*>(std::malloc(size));
    if (m_pHolidays) std::memcpy(m_pHolidays, holidays, size);
}

CHolidaysInfo::~CHolidaysInfo() { std::free(m_pHolidays); }

int CHolidaysInfo::Use() { return ++m_refCount; }

int CHolidaysInfo::Free() {
    if (m_refCount > 0) --m_refCount;
    return m_refCount;
}

HOLIDAYS_INFO* CHolidaysInfo::Rows() const {
    return (m_pHolidays && m_pHolidays->sNumHolidays != 0) ? m_pHolidays : nullptr;
}
