// Opening and reading the files that configure the library (QUORVANE.INI, user.reg,
// DATE.LOG, .smd maps, private profiles). Only regular files are taken: a FIFO in their
// place would block the open for ever, and /dev/zero would grow memory without end. A file
// refused for that, or for its size, is reported in one line on std::clog, naming the
// path and the reason, so that a user can see why the settings were not read.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

namespace qvnrt::platform {

// Far above any real configuration (a registry store of 50,000 values is a few MB), and
// far below what would strain the memory of a desktop.
constexpr size_t kMaxConfigFileSize = size_t{64} << 20;

// open(2) with `flags` (O_CLOEXEC is added) that never blocks on a FIFO or device and
// keeps the descriptor only for a regular file. Reading opens (neither O_WRONLY nor O_RDWR)
// also refuse a file larger than `limit`. -1 with errno set on failure: ENOENT and the
// other errors of open(2); EINVAL for a file that is not regular; EFBIG for one too large.
// A refusal for the type or the size is reported on std::clog; plain errors are left to
// the caller.
int OpenConfigFile(const std::string& path, int flags, mode_t mode = 0666,
                   size_t limit = kMaxConfigFileSize);

// Reads the whole of a configuration file into `bytes`. False with errno set as above (or
// by read(2)); `bytes` is then empty.
bool ReadConfigFile(const std::string& path, std::string& bytes,
                    size_t limit = kMaxConfigFileSize);

}  // namespace qvnrt::platform
