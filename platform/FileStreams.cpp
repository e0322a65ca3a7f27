#include "platform/FileStreams.h"

#include <cerrno>
#include <unistd.h>

namespace qvnrt::platform {

int FlushStreamToDisk(std::FILE* stream) {
    if (!stream) return EBADF;
    if (std::fflush(stream) != 0 || ::fsync(::fileno(stream)) != 0) return errno;
    return 0;
}

}  // namespace qvnrt::platform
