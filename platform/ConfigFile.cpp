#include "platform/ConfigFile.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace qvnrt::platform {
namespace {

// Said once per file and reason: the registry store is read at every query, and one line
// is enough to tell the user.
void Report(const std::string& path, const std::string& reason) {
    static std::set<std::string> reported;
    if (!reported.insert(path + '\n' + reason).second) return;
    std::clog << "QvnRT: " << path << ": " << reason << "; not used" << std::endl;
}

}  // namespace

int OpenConfigFile(const std::string& path, int flags, mode_t mode, size_t limit) {
    // O_NONBLOCK keeps a FIFO with no writer (or, for writing, no reader) from blocking the
    // open; it is cleared again before the descriptor is handed out.
    const int fd = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK | O_NOCTTY, mode);
    if (fd < 0) {
        // ENXIO is what a FIFO without a reader gives a non-blocking open for writing.
        if (errno == ENXIO) {
            Report(path, "not a regular file");
            errno = EINVAL;
        }
        return -1;
    }
    struct stat status;
    int error = 0;
    if (::fstat(fd, &status) != 0) {
        error = errno;
    } else if (!S_ISREG(status.st_mode)) {
        Report(path, "not a regular file");
        error = EINVAL;
    } else if ((flags & O_ACCMODE) == O_RDONLY && static_cast<unsigned long long>(status.st_size) > limit) {
        Report(path, "larger than " + std::to_string(limit) + " bytes");
        error = EFBIG;
    } else if (!(flags & O_NONBLOCK) && ::fcntl(fd, F_SETFL, ::fcntl(fd, F_GETFL) & ~O_NONBLOCK) != 0) {
        error = errno;
    }
    if (error != 0) {
        ::close(fd);
        errno = error;
        return -1;
    }
    return fd;
}

bool ReadConfigFile(const std::string& path, std::string& bytes, size_t limit) {
    bytes.clear();
    const int fd = OpenConfigFile(path, O_RDONLY, 0, limit);
    if (fd < 0) return false;
    char chunk[1 << 16];
    for (;;) {
        const ssize_t got = ::read(fd, chunk, sizeof(chunk));
        if (got == 0) break;
        if (got < 0) {
            if (errno == EINTR) continue;
            const int error = errno;
            ::close(fd);
            bytes.clear();
            errno = error;
            return false;
        }
        // The file may grow while it is read; the limit holds all the same.
        if (bytes.size() + static_cast<size_t>(got) > limit) {
            Report(path, "larger than " + std::to_string(limit) + " bytes");
            ::close(fd);
            bytes.clear();
            errno = EFBIG;
            return false;
        }
        bytes.append(chunk, static_cast<size_t>(got));
    }
    ::close(fd);
    return true;
}

}  // namespace qvnrt::platform
