#include "calendar/DateLog.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/AppendFile.h"
#include "platform/Directories.h"

namespace qvnrt::calendar {
namespace {

struct DateLogState {
    bool enabled = false;
    bool holdOpen = false;
    platform::AppendFile file;
};

DateLogState& State() {
    static DateLogState state;
    return state;
}

bool OpenLog(DateLogState& state) {
    const std::string directory = platform::ConfigDirectory();
    if (directory.empty()) return false;
    // Others are denied writing while it is open, as the share mode did.
    return state.file.open(platform::JoinPath(directory, "DATE.LOG"));
}

}  // namespace

bool dateLogEnabled() {
    return State().enabled;
}

void enableDateLog() {
    State().enabled = true;
}

void writeDateLog(const char* text, size_t length) {
    DateLogState& state = State();
    if (!text || (!state.file.isOpen() && !OpenLog(state))) return;  // the text is dropped
    state.file.write(text, length);
    if (!state.holdOpen) state.file.close();
}

void writeDateLog(const char* text) {
    if (text) writeDateLog(text, std::strlen(text));
}

void writeDateLogFormat(const char* format, ...) {
    char line[512];
    va_list args;
    va_start(args, format);
    const int length = std::vsnprintf(line, sizeof(line), format, args);
    va_end(args);
    if (length < 0) return;
    writeDateLog(line, std::min(static_cast<size_t>(length), sizeof(line) - 1));
}

void setDateLogHoldOpen(bool hold) {
    DateLogState& state = State();
    state.holdOpen = hold;
    if (!hold) state.file.close();
}

}  // namespace qvnrt::calendar
