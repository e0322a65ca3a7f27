// Helpers for the record-file tests: the log stream, hand-made files, child processes.
#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>

#include "store/_cache.h"

namespace qvnrt::test {

// Collects what the store writes to std::clog for the life of the object.
class ClogCapture {
public:
    ClogCapture() : m_previous(std::clog.rdbuf(m_text.rdbuf())) {}
    ~ClogCapture() { std::clog.rdbuf(m_previous); }
    std::string text() const { return m_text.str(); }

private:
    std::ostringstream m_text;
    std::streambuf* m_previous;
};

// A record file made by hand: the header, then zeros up to `size` bytes.
inline void WriteCacheFile(const std::string& path, RTSecCache::CacheFileHeader header,
                           size_t size) {
    std::string bytes(size, '\0');
    bytes.replace(0, sizeof header, reinterpret_cast<const char*>(&header), sizeof header);
    std::ofstream(path, std::ios::binary) << bytes;
}

inline RTSecCache::CacheFileHeader ReadCacheHeader(const std::string& path) {
    RTSecCache::CacheFileHeader header{};
    std::ifstream(path, std::ios::binary).read(reinterpret_cast<char*>(&header), sizeof header);
    return header;
}

// Runs `body` in a forked child and returns what it reports (empty when all went well),
// or how the child died.
inline std::string RunInChild(const std::function<std::string()>& body) {
    int fds[2];
    if (::pipe(fds) != 0) return "no pipe";
    std::clog.flush();
    const pid_t pid = ::fork();
    if (pid < 0) return "no fork";
    if (pid == 0) {
        ::close(fds[0]);
        const std::string report = body();
        const bool written =
            ::write(fds[1], report.data(), report.size()) == static_cast<ssize_t>(report.size());
        ::_exit(written ? 0 : 1);  // none of the parent's destructors run here
    }
    ::close(fds[1]);
    std::string report;
    char buffer[256];
    for (ssize_t got; (got = ::read(fds[0], buffer, sizeof buffer)) > 0;)
        report.append(buffer, got);
    ::close(fds[0]);
    int status = 0;
    ::waitpid(pid, &status, 0);
    if (WIFSIGNALED(status)) report += "child killed by signal " + std::to_string(WTERMSIG(status));
    if (WIFEXITED(status) && WEXITSTATUS(status) != 0) report += "child could not report";
    return report;
}

}  // namespace qvnrt::test
