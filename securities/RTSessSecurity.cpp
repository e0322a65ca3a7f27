#include <qvnrt/RTSessSecurity.h>

#include <cstdlib>
#include <cstring>

#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/SessionRulesRequest.h"

RTSessSecurity::RTSessSecurity()
    : m_hSessEvent(0), m_bReadSessHolInfo(1), m_pSessionRec(nullptr), m_pHolidayRec(nullptr) {}

RTSessSecurity::~RTSessSecurity() { RTSessSecurity::CloseEvent(); }

void RTSessSecurity::closeSessionRequest() { RTServer::CloseEvent(m_hSessEvent); }

int RTSessSecurity::CloseEvent() {
    closeSessionRequest();
    std::free(m_pSessionRec);
    m_pSessionRec = nullptr;
    std::free(m_pHolidayRec);
    m_pHolidayRec = nullptr;
    RTSecurity::CloseEvent();
    return 1;
}

// One body with OnSessClosed: the quote request stays as it is.
void RTSessSecurity::OnSecClosed() { closeSessionRequest(); }

void RTSessSecurity::OnSessClosed() { closeSessionRequest(); }

void RTSessSecurity::OnSessChanged() {}

int RTSessSecurity::ReqSecurity(const char* symbol, char* fields, RTSecurityType type, int flags,
                                ServiceLimit limit) {
    const int result = RTSecurity::ReqSecurity(symbol, fields, type, flags, limit);
    if (result && m_bReadSessHolInfo) ReqSessionInfo(limit);
    return result;
}

int RTSessSecurity::ReqSessionInfo(int) {
    if (!m_pCacheEntry) return 0;
    if (m_hSessEvent) closeSessionRequest();
    return qvnrt::securities::RequestSessionRules(*this);
}

void RTSessSecurity::readSessHolInfo(bool read) { m_bReadSessHolInfo = read ? 1 : 0; }

int RTSessSecurity::ReqSessCallback(unsigned long, int status, SESSION_INFO* rules,
                                    void* holidays) {
    if (status < 0) return 0;
    if (rules) {
        if (!m_pSessionRec) {
            m_pSessionRec = static_cast<SESSION_INFO*>(std::malloc(sizeof(SESSION_INFO)));
            if (!m_pSessionRec) return 0;
        }
        std::memcpy(m_pSessionRec, rules, sizeof(SESSION_INFO));
    }
    const auto* given = static_cast<const HOLIDAYS_INFO*>(holidays);
    if (given && given->sNumHolidays >= 0) {
        const size_t size = 4 + sizeof(HOLIDAY_ROW) * static_cast<size_t>(given->sNumHolidays);
        auto* copy = static_cast<HOLIDAYS_INFO*>(std::malloc(size));
        if (!copy) return 0;
        std::memcpy(copy, given, size);
        // Kept as it always was: the block held before is not freed here (CloseEvent frees
        // the latest one). Applications that take several holiday updates should know it.
        m_pHolidayRec = copy;
    }
    return 0;
}

int RTSecurity::ReqSessCallbackHelper(unsigned long handle, int status, SESSION_INFO* rules,
                                      void* holidays, unsigned long user) {
    if (!user) return 0;
    try {
        auto* security = qvnrt::platform::LiveObjects<RTSec_Base>::Cast<RTSessSecurity>(user);
        if (!security || security->m_hSessEvent != handle) return 1;
        if (status < 0) {
            security->OnSessClosed();
        } else {
            security->ReqSessCallback(handle, status, rules, holidays);
            security->OnSessChanged();
        }
    } catch (const std::exception&) {
    }
    return 1;
}
