#include "platform/AppendFile.h"

#include "platform/ConfigFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <cerrno>

namespace qvnrt::platform {

bool AppendFile::open(const std::string& path) {
    close();
    const int fd = OpenConfigFile(path, O_WRONLY | O_CREAT | O_APPEND);
    if (fd < 0) return false;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return false;
    }
    m_fd = fd;
    return true;
}

bool AppendFile::write(const char* data, size_t length) {
    while (length > 0) {
        const ssize_t written = ::write(m_fd, data, length);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += written;
        length -= static_cast<size_t>(written);
    }
    return true;
}

void AppendFile::close() {
    if (m_fd < 0) return;
    ::close(m_fd);
    m_fd = -1;
}

}  // namespace qvnrt::platform
