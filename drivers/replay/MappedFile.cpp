#include "MappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace qvnreplay {

std::unique_ptr<MappedFile> MappedFile::Open(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) {
        if (errno != ENOENT) {
            std::fprintf(stderr, "qvnreplay: %s: %s\n", path.c_str(), std::strerror(errno));
        }
        return nullptr;
    }
    struct stat status {};
    if (::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode)) {
        std::fprintf(stderr, "qvnreplay: %s: not a regular file\n", path.c_str());
        ::close(fd);
        return nullptr;
    }
    const size_t size = static_cast<size_t>(status.st_size);
    const char* data = "";
    if (size > 0) {
        void* mapped = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0);
        if (mapped == MAP_FAILED) {
            std::fprintf(stderr, "qvnreplay: %s: %s\n", path.c_str(), std::strerror(errno));
            ::close(fd);
            return nullptr;
        }
        data = static_cast<const char*>(mapped);
    }
    ::close(fd);  // the mapping keeps the file
    return std::unique_ptr<MappedFile>(new MappedFile(path, data, size));
}

MappedFile::MappedFile(std::string path, const char* data, size_t size)
    : m_path(std::move(path)), m_data(data), m_size(size) {}

MappedFile::~MappedFile() {
    if (m_size > 0) ::munmap(const_cast<char*>(m_data), m_size);
}

void MappedFile::ExpectSequential() const {
    if (m_size > 0) ::madvise(const_cast<char*>(m_data), m_size, MADV_SEQUENTIAL);
}

void MappedFile::ExpectRandom() const {
    if (m_size > 0) ::madvise(const_cast<char*>(m_data), m_size, MADV_RANDOM);
}

void MappedFile::Release(size_t begin, size_t end) const {
    const size_t page = static_cast<size_t>(::sysconf(_SC_PAGESIZE));
    begin = (begin + page - 1) / page * page;  // whole pages only
    end = std::min(end, m_size) / page * page;
    if (begin < end) ::madvise(const_cast<char*>(m_data) + begin, end - begin, MADV_DONTNEED);
}

}  // namespace qvnreplay
