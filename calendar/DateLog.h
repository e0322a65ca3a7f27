// DATE.LOG, the calendar's optional log, in the config directory. It is on when
// LOGDATECALLS in section [INHOUSEDEVELOPMENT] of QUORVANE.INI starts with 'T' or 't'
// (read once, by Date::ensureDateStatics). Lines end in "\r\n", as they always did, so that
// logs from both builds compare.
//
// The file is opened for each write and closed after it, appended to, and held under an
// exclusive flock while open so that two processes' lines do not interleave; a write that
// cannot open or lock the file is dropped. A run of lines that belongs together (a session
// or holiday dump) holds the file open: DateLogHold.
#pragma once

#include <cstddef>

namespace qvnrt::calendar {

bool dateLogEnabled();
// Turns the log on; Date::ensureDateStatics does this when the INI says so.
void enableDateLog();

// Writes the bytes as given, whether or not the log is on: callers test dateLogEnabled().
void writeDateLog(const char* text, size_t length);
void writeDateLog(const char* text);
// printf into a buffer of 512 bytes (a longer line is cut), then writeDateLog.
void writeDateLogFormat(const char* format, ...) __attribute__((format(printf, 1, 2)));

// While set, the file stays open between writes; clearing it closes the file.
void setDateLogHoldOpen(bool hold);

// Holds the log open for the life of the object.
class DateLogHold {
public:
    DateLogHold() { setDateLogHoldOpen(true); }
    ~DateLogHold() { setDateLogHoldOpen(false); }
    DateLogHold(const DateLogHold&) = delete;
    DateLogHold& operator=(const DateLogHold&) = delete;
};

}  // namespace qvnrt::calendar
