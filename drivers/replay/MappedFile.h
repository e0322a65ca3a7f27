// A data file mapped read-only, so that a file of any size costs address space, not memory:
// the kernel keeps only the pages that a request touches.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace qvnreplay {

class MappedFile {
public:
    // Null when the file does not exist; a file that exists but cannot be read is reported
    // on standard error and also gives null.
    static std::unique_ptr<MappedFile> Open(const std::string& path);
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    std::string_view Text() const { return {m_data, m_size}; }
    const std::string& Path() const { return m_path; }
    // Tells the kernel that the whole file is about to be read once, front to back.
    void ExpectSequential() const;
    // Tells the kernel that reads jump about from here on (binary searches).
    void ExpectRandom() const;
    // Gives back the pages of [begin, end) that this process touched: they stay in the page
    // cache, but a front-to-back read of a large file does not keep it all resident.
    void Release(size_t begin, size_t end) const;

private:
    MappedFile(std::string path, const char* data, size_t size);

    std::string m_path;
    const char* m_data;
    size_t m_size;
};

}  // namespace qvnreplay
