#include "calendar/DateLog.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/Directories.h"

namespace qvnrt::calendar {
namespace {

struct DateLogState {
    bool enabled = false;
    bool holdOpen = false;
    int fd = -1;
};

DateLogState& State() {
    static DateLogState state;
    return state;
}

void CloseLog(DateLogState& state) {
    if (state.fd < 0) return;
    ::close(state.fd);  // releases the flock too
    state.fd = -1;
}

bool OpenLog(DateLogState& state) {
    const std::string directory = platform::ConfigDirectory();
    if (directory.empty()) return false;
    const std::string path = platform::JoinPath(directory, "DATE.LOG");
    const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (fd < 0) return false;
    // Others are denied writing while it is open, as the share mode did.
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return false;
    }
    state.fd = fd;
    return true;
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
    if (!text || (state.fd < 0 && !OpenLog(state))) return;  // the text is dropped
    while (length > 0) {
        const ssize_t written = ::write(state.fd, text, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            break;
        }
        text += written;
        length -= static_cast<size_t>(written);
    }
    if (!state.holdOpen) CloseLog(state);
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
    if (!hold) CloseLog(state);
}

}  // namespace qvnrt::calendar
