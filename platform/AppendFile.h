// A file that one process appends to at a time: created when missing, opened for appending,
// and held under an exclusive advisory lock (flock) while open, in place of the Windows open
// whose share mode denied others writing. The lock goes with the descriptor when it closes.
#pragma once

#include <cstddef>
#include <string>

namespace qvnrt::platform {

class AppendFile {
  public:
    AppendFile() = default;
    ~AppendFile() { close(); }
    AppendFile(const AppendFile&) = delete;
    AppendFile& operator=(const AppendFile&) = delete;

    // False when the file cannot be opened or another holder has it locked; an open file is
    // closed first.
    bool open(const std::string& path);
    bool isOpen() const { return m_fd >= 0; }
    // Writes all the bytes, going on after interrupted writes; false at the first error.
    bool write(const char* data, size_t length);
    void close();

  private:
    int m_fd = -1;
};

}  // namespace qvnrt::platform
