#include "platform/MappedFiles.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "platform/Directories.h"

namespace qvnrt::platform {
namespace {

int Protection(MapAccess access) {
    return access == MapAccess::ReadOnly ? PROT_READ : PROT_READ | PROT_WRITE;
}

int Sharing(MapAccess access) {
    return access == MapAccess::CopyOnWrite ? MAP_PRIVATE : MAP_SHARED;
}

// O_NONBLOCK keeps a FIFO that bears the name from stalling the open; it is then refused
// as not a regular file, and the flag means nothing for the regular files that are kept.
int OpenRegular(const std::string& path, int flags) {
    if (path.empty()) return kNoFile;
    const int fd = ::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0666);
    if (fd < 0) return kNoFile;
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode)) {
        ::close(fd);
        return kNoFile;
    }
    return fd;
}

bool Truncate(int fd, uint64_t size) {
    int rc;
    do rc = ::ftruncate(fd, static_cast<off_t>(size));
    while (rc != 0 && errno == EINTR);
    return rc == 0;
}

std::string Canonical(const std::string& path) {
    char* resolved = ::realpath(path.c_str(), nullptr);
    if (!resolved) return std::string();
    std::string result(resolved);
    std::free(resolved);
    return result;
}

}  // namespace

int OpenLockedFile(const std::string& path, MapAccess access) {
    const bool write = access == MapAccess::ReadWrite;
    const int fd = OpenRegular(path, write ? O_RDWR | O_CREAT : O_RDONLY);
    if (fd == kNoFile) return kNoFile;
    if (::flock(fd, (write ? LOCK_EX : LOCK_SH) | LOCK_NB) != 0) {
        ::close(fd);
        return kNoFile;
    }
    return fd;
}

int LockDirectory(const std::string& path, bool& heldElsewhere) {
    heldElsewhere = false;
    if (path.empty()) return kNoFile;
    const int fd = ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) return kNoFile;
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        heldElsewhere = errno == EWOULDBLOCK;
        ::close(fd);
        return kNoFile;
    }
    return fd;
}

void CloseFile(int fd) {
    if (fd != kNoFile) ::close(fd);
}

uint64_t FileLength(int fd) {
    struct stat info;
    if (fd == kNoFile || ::fstat(fd, &info) != 0) return 0;
    return static_cast<uint64_t>(info.st_size);
}

bool ResizeFile(int fd, uint64_t size) {
    struct stat info;
    if (fd == kNoFile || ::fstat(fd, &info) != 0) return false;
    if (size > static_cast<uint64_t>(std::numeric_limits<off_t>::max())) return false;
    const uint64_t old = static_cast<uint64_t>(info.st_size);
    if (size == 0 && old == 0) return true;
    if (size >= old) {
        // From offset 0, not from the old end: a hole that some other writer left in the
        // file would raise SIGBUS when touched on a full disk just as a new page would.
        // Ranges already allocated cost nothing here.
        int rc;
        do rc = ::posix_fallocate(fd, 0, static_cast<off_t>(size));
        while (rc == EINTR);
        if (rc != 0) {
            if (size > old) Truncate(fd, old);  // give back whatever part was reserved
            return false;
        }
    } else if (!Truncate(fd, size)) {
        return false;
    }
    // FlushFileBuffers, as the resize always did. A failed sync leaves a file of the right
    // length, so it does not undo the resize.
    if (size != old) ::fsync(fd);
    return true;
}

void* MapView(int fd, size_t size, MapAccess access) {
    if (fd == kNoFile || size == 0 || FileLength(fd) < size) return nullptr;
    void* view = ::mmap(nullptr, size, Protection(access), Sharing(access), fd, 0);
    return view == MAP_FAILED ? nullptr : view;
}

void* AttachView(const std::string& path, size_t size, MapAccess access) {
    const int fd = OpenRegular(path, access == MapAccess::ReadWrite ? O_RDWR : O_RDONLY);
    if (fd == kNoFile) return nullptr;
    void* view = MapView(fd, size, access);
    ::close(fd);  // the mapping keeps the file alive
    return view;
}

void* ResizeView(int fd, void* view, size_t oldSize, size_t newSize) {
    if (!view || newSize == 0 || FileLength(fd) < newSize) return nullptr;
    void* moved = ::mremap(view, oldSize, newSize, MREMAP_MAYMOVE);
    return moved == MAP_FAILED ? nullptr : moved;
}

bool FlushView(void* view, size_t size) {
    return view && ::msync(view, size, MS_SYNC) == 0;
}

void UnmapView(void* view, size_t size) {
    if (view) ::munmap(view, size);
}

void AdviseAccess(void* view, size_t size, AccessPattern pattern) {
    if (!view || size == 0) return;
    if (pattern == AccessPattern::Normal) {
        ::madvise(view, size, MADV_NORMAL);
        return;
    }
    // Read ahead aggressively, and start reading now for pages not yet in memory. Then map
    // every page in one call where the kernel can (Linux 5.14 on): far cheaper than a page
    // fault for each few pages as the pass reaches them.
    ::madvise(view, size, MADV_SEQUENTIAL);
    ::madvise(view, size, MADV_WILLNEED);
#ifdef MADV_POPULATE_READ
    ::madvise(view, size, MADV_POPULATE_READ);
#endif
}

std::string FullPathName(const std::string& path) {
    if (path.empty()) return std::string();
    std::string full = Canonical(path);
    if (!full.empty()) return full;

    const std::string absolute =
        std::filesystem::path(path[0] == '/' ? path : JoinPath(CurrentDirectory(), path))
            .lexically_normal()
            .string();
    const size_t slash = absolute.rfind('/');
    if (slash == std::string::npos || slash + 1 == absolute.size()) return absolute;
    const std::string directory = Canonical(slash == 0 ? "/" : absolute.substr(0, slash));
    if (directory.empty()) return absolute;
    return JoinPath(directory, absolute.substr(slash + 1));
}

}  // namespace qvnrt::platform
