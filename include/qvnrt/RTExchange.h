/// \file
/// RTExchange: names one exchange and reads its fields through the driver.
#pragma once

#include <qvnrt/export.h>

/// One exchange, by the driver's number, and its fields (500 to 508). Every accessor calls
/// the driver: load it first (LoadRTServer).
class QVNRT_API RTExchange {
public:
    RTExchange();
    explicit RTExchange(long exchange);
    RTExchange(const RTExchange&) = default;
    RTExchange& operator=(const RTExchange&) = default;
    virtual ~RTExchange();

    /// Stores the number and reports whether m_lastError is 0; it does not clear the error.
    int SetExchange(unsigned short exchange);
    long GetLastError();
    void CloseExchange();

    /// Every accessor: -2 without an error pointer (in m_lastError only) or without an
    /// exchange (in both); otherwise the driver's answer, its error in both places. The
    /// driver must be loaded.
    void* GetExchangeFieldAccess(int field, long* error);
    unsigned short GetExchangeStringFieldAccess(int field, char* buffer, unsigned short length,
                                                long* error);

    unsigned short GetExchangeIndex(long* error);   ///< field 500
    unsigned short GetExchangeSuffix(char* buffer, unsigned short length, long* error);  ///< 501
    unsigned short GetExchangeShortName(char* buffer, unsigned short length, long* error);  ///< 502
    unsigned short GetExchangeLongName(char* buffer, unsigned short length, long* error);  ///< 503
    short GetExchangeStartHour(long* error);  ///< 504
    short GetExchangeStartMin(long* error);   ///< 505
    short GetExchangeCloseHour(long* error);  ///< 506
    short GetExchangeCloseMin(long* error);   ///< 507
    unsigned short GetExchangeCurrency(char* buffer, unsigned short length, long* error);  ///< 508

    long m_exchange;   ///< -1 when none is set
    long m_position;   ///< iterator position: kept and copied, not otherwise used
    long m_lastError;  ///< error of the latest access
};

/// Exported with its assignment only; the library gives it no behaviour of its own.
class QVNRT_API RTExchangeIterator {
public:
    RTExchangeIterator& operator=(const RTExchangeIterator& other);
};
