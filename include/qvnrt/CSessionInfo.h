/// \file
/// CSessionInfo and CHolidaysInfo: reference-counted holders of a security's session and
/// holiday rules. The counts are not atomic: the library runs on one thread.
#pragma once

#include <cstdint>

#include <qvnrt/driver.h>
#include <qvnrt/export.h>

/// A counted copy of one SESSION_INFO record, shared by the securities that use it. The
/// holder that brings the count to 0 deletes it.
class QVNRT_API CSessionInfo {
public:
    /// Count 1, size 38, the rest uncleared.
    CSessionInfo();
    /// Count 1, size 38, then every field of the record but the spare byte.
    explicit CSessionInfo(const SESSION_INFO* rules);
    /// Count 1; copies every field but the spare byte.
    CSessionInfo(const CSessionInfo& other);
    /// Copies the whole object, the count too.
    CSessionInfo& operator=(const CSessionInfo& other);

    int Use();    ///< adds 1 and returns the count
    int Free();   ///< subtracts 1, never below 0, and returns the count; does not delete
    bool IsFree() const;  ///< the count is below 1

    SESSION_INFO m_info;
    int32_t m_refCount;
};

/// A counted, owned copy of one HOLIDAYS_INFO block; Free() to 0 deletes it.
class QVNRT_API CHolidaysInfo {
public:
    CHolidaysInfo();
    /// Takes a copy of the record (4 + 10 x sNumHolidays bytes); null makes an empty holder.
    explicit CHolidaysInfo(const HOLIDAYS_INFO* holidays);
    CHolidaysInfo(const CHolidaysInfo&) = delete;
    CHolidaysInfo& operator=(const CHolidaysInfo&) = delete;
    virtual ~CHolidaysInfo();

    int Use();
    int Free();
    /// The record for the calendar's walks: null unless it holds at least one row.
    HOLIDAYS_INFO* Rows() const;

    int32_t m_refCount;
    HOLIDAYS_INFO* m_pHolidays;  ///< owned
};
