// The operating-system side of the store's mapped files.
//
// Windows gave each file a share mode and each mapping a name; here the share mode is an
// flock held on the descriptor for as long as it is open (exclusive for read-write, shared
// for read-only and copy-on-write), and a process that cannot take the lock maps the file
// through a descriptor of its own that takes none (AttachView).
//
// Nothing here maps past the end of a file: touching such pages raises SIGBUS on Linux, so
// every view is checked against the file's length first, and a file grows only by space
// that is really reserved (posix_fallocate), never by a sparse extension.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace qvnrt::platform {

enum class MapAccess {
    ReadOnly,     // PROT_READ, shared
    ReadWrite,    // PROT_READ | PROT_WRITE, shared: writes reach the file
    CopyOnWrite,  // PROT_READ | PROT_WRITE, private: writes stay in this process
};

inline constexpr int kNoFile = -1;

// Opens a regular file and takes its lock without waiting. ReadWrite creates the file
// (mode 0666 before umask) and takes LOCK_EX; the other accesses need an existing file and
// take LOCK_SH. kNoFile on any failure, a lock held elsewhere included.
int OpenLockedFile(const std::string& path, MapAccess access);
// Takes an exclusive lock on a directory without waiting, held until CloseFile on the
// result. kNoFile when it cannot be had; `heldElsewhere` then says whether that is because
// another open of the directory holds it (otherwise the directory cannot be opened).
int LockDirectory(const std::string& path, bool& heldElsewhere);

// Closes the descriptor, which releases its lock. kNoFile is ignored.
void CloseFile(int fd);
// The file's length in bytes; 0 when it cannot be read.
uint64_t FileLength(int fd);
// Grows the file by reserved, zeroed space, or shrinks it, then syncs it. A growth that
// fails (no space, RLIMIT_FSIZE) puts the old length back and returns false. SIGXFSZ is the
// caller's affair: its default action ends the process.
bool ResizeFile(int fd, uint64_t size);

// Maps the first `size` bytes of the open file; null when the file is shorter or mmap fails.
void* MapView(int fd, size_t size, MapAccess access);
// Maps the first `size` bytes of the file at `path` through a descriptor of its own that
// takes no lock and is closed again at once; null when the file is missing, not a regular
// file, shorter than `size`, or cannot be mapped.
void* AttachView(const std::string& path, size_t size, MapAccess access);
// Resizes a view of `fd` (mremap, which may move it). Null when the file is shorter than
// `newSize` or mremap fails, and then the old view is left as it was.
void* ResizeView(int fd, void* view, size_t oldSize, size_t newSize);
// Writes the view's dirty pages to the file and waits for them (msync MS_SYNC).
bool FlushView(void* view, size_t size);
void UnmapView(void* view, size_t size);

// How a view is about to be read, so that the kernel reads ahead (Sequential) or stops
// doing so (Normal). Advice only: a view that refuses it reads the same, only slower.
enum class AccessPattern { Sequential, Normal };
void AdviseAccess(void* view, size_t size, AccessPattern pattern);

// The absolute, canonical form of a path: realpath when the file exists; otherwise the
// canonical directory joined with the name, or the lexically normal absolute path when
// the directory does not exist either. Empty for an empty path.
std::string FullPathName(const std::string& path);

}  // namespace qvnrt::platform
