#include <qvnrt/RTExchange.h>

#include <cstdint>

#include <qvnrt/RTServer.h>

namespace {

constexpr long kNoExchange = -1;
constexpr long kNotSet = -2;  // no exchange set, or no error pointer given

}  // namespace

RTExchange::RTExchange() : RTExchange(kNoExchange) {}

RTExchange::RTExchange(long exchange) : m_exchange(exchange), m_position(-1), m_lastError(0) {}

RTExchange::~RTExchange() = default;

int RTExchange::SetExchange(unsigned short exchange) {
    m_exchange = exchange;
    return m_lastError == 0;  // reports the error as it stands; does not clear it
}

long RTExchange::GetLastError() { return m_lastError; }

void RTExchange::CloseExchange() {}

void* RTExchange::GetExchangeFieldAccess(int field, long* error) {
    if (!error) {
        m_lastError = kNotSet;
        return nullptr;
    }
    if (m_exchange == kNoExchange) {
        m_lastError = *error = kNotSet;
        return nullptr;
    }
    void* const value = RTServer::m_lpGetExchangeFieldAccess(m_exchange, field, &m_lastError);
    *error = m_lastError;
    return value;
}

unsigned short RTExchange::GetExchangeStringFieldAccess(int field, char* buffer,
                                                        unsigned short length, long* error) {
    if (!error) {
        m_lastError = kNotSet;
        return 0;
    }
    if (m_exchange == kNoExchange) {
        m_lastError = *error = kNotSet;
        return 0;
    }
    const unsigned short result = RTServer::m_lpGetExchangeStringFieldAccess(
        m_exchange, field, buffer, length, &m_lastError);
    *error = m_lastError;
    return result;
}

namespace {

// The numeric fields come back in the bits of the pointer.
template <class T>
T Numeric(RTExchange& exchange, int field, long* error) {
    return static_cast<T>(reinterpret_cast<uintptr_t>(exchange.GetExchangeFieldAccess(field, error)));
}

}  // namespace

unsigned short RTExchange::GetExchangeIndex(long* error) {
    return Numeric<unsigned short>(*this, RTEXFIELD_INDEX, error);
}

short RTExchange::GetExchangeStartHour(long* error) {
    return Numeric<short>(*this, RTEXFIELD_START_HOUR, error);
}

short RTExchange::GetExchangeStartMin(long* error) {
    return Numeric<short>(*this, RTEXFIELD_START_MIN, error);
}

short RTExchange::GetExchangeCloseHour(long* error) {
    return Numeric<short>(*this, RTEXFIELD_CLOSE_HOUR, error);
}

short RTExchange::GetExchangeCloseMin(long* error) {
    return Numeric<short>(*this, RTEXFIELD_CLOSE_MIN, error);
}

unsigned short RTExchange::GetExchangeSuffix(char* buffer, unsigned short length, long* error) {
    return GetExchangeStringFieldAccess(RTEXFIELD_SUFFIX, buffer, length, error);
}

unsigned short RTExchange::GetExchangeShortName(char* buffer, unsigned short length,
                                                long* error) {
    return GetExchangeStringFieldAccess(RTEXFIELD_SHORT_NAME, buffer, length, error);
}

unsigned short RTExchange::GetExchangeLongName(char* buffer, unsigned short length,
                                               long* error) {
    return GetExchangeStringFieldAccess(RTEXFIELD_LONG_NAME, buffer, length, error);
}

unsigned short RTExchange::GetExchangeCurrency(char* buffer, unsigned short length,
                                               long* error) {
    return GetExchangeStringFieldAccess(RTEXFIELD_CURRENCY, buffer, length, error);
}

RTExchangeIterator& RTExchangeIterator::operator=(const RTExchangeIterator&) { return *this; }
