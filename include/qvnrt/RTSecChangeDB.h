/// \file
/// The security change database: the changes that the data service reports for securities,
/// kept sorted in "secmaint.dat" in the host directory ($QVNRT_APP_DIR, else the directory
/// of the program). The library fills it at connect; an application reads it.
///
/// All three calls run on the thread of the cache timer (the thread that connects), and
/// take no lock.
#pragma once

#include <utility>

#include <qvnrt/driver.h>
#include <qvnrt/export.h>

/// The service's mark of the last change set stored, as the library passes it at connect.
/// Opens "secmaint.dat" first when no usable view of it exists. 0 when the file cannot be
/// opened or mapped, and for a file whose first word is 0x4d4e5400: such a file is reset
/// (count 0, timestamp 0) at every open and stays unusable; kept, applications rely on it.
QVNRT_API long GetRTSecChangeTimestamp();

/// Stores `timestamp`, applies each change to the cached securities (a change of kind 'S'
/// drops everything cached for its symbol) and merges the batch into the file, sorted by
/// symbol, time and kind. A record equal in all three to a stored one replaces it; equal
/// records within one batch are all kept. A negative `count` or a null `changes` changes
/// the timestamp alone. The library reads `count` records from `changes` and keeps no
/// pointer to them. When the file is not open (GetRTSecChangeTimestamp never ran, or could
/// not map it) nothing is stored, and the service sends the changes again at the next
/// connect. Always true.
QVNRT_API bool SetRTSecChangeInfo(long timestamp, int count, RTSecChange* changes);

/// The stored changes of `symbol` (cut to 15 characters) at or after `time`: a range of
/// records, [first, second), in the order of time and then kind. Equal pointers when there
/// are none. Both null when `symbol` is null or no usable view exists (before the first
/// GetRTSecChangeTimestamp, for one). The records lie in the mapped file: they stay valid
/// only until the next SetRTSecChangeInfo, which may move the view. The library owns them.
QVNRT_API std::pair<RTSecChange*, RTSecChange*> GetRTSecChangeInfo(const char* symbol,
                                                                   unsigned long time);

/// Every stored change, [first, second), sorted; both null without a usable view. An
/// addition of this port, for tools that list the whole file (qvnrt-cli changes): the
/// original interface reached the records only symbol by symbol. The same lifetime as
/// GetRTSecChangeInfo's records.
QVNRT_API std::pair<RTSecChange*, RTSecChange*> GetRTSecChangeRecords();
