// A temporary directory for one test, removed with everything in it at the end.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace qvnrt::test {

class TempDir {
public:
    TempDir() {
        std::string pattern = (std::filesystem::temp_directory_path() / "qvnrt-test-XXXXXX").string();
        m_path = ::mkdtemp(pattern.data()) ? pattern : std::string();
    }
    ~TempDir() {
        std::error_code ignored;
        if (!m_path.empty()) std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    const std::string& path() const { return m_path; }
    std::string file(const std::string& name) const { return m_path + "/" + name; }

    // Writes bytes as given (no line-end translation).
    void write(const std::string& name, const std::string& content) const {
        std::ofstream(file(name), std::ios::binary) << content;
    }
    std::string read(const std::string& name) const {
        std::ifstream in(file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

private:
    std::string m_path;
};

// Points the library's config and host directories at fresh temporary directories for the
// life of the object, so a test never touches the user's files.
class IsolatedHome {
public:
    IsolatedHome() {
        ::setenv("QVNRT_HOME", m_config.path().c_str(), 1);
        ::setenv("QVNRT_APP_DIR", m_host.path().c_str(), 1);
    }
    ~IsolatedHome() {
        ::unsetenv("QVNRT_HOME");
        ::unsetenv("QVNRT_APP_DIR");
    }
    const TempDir& config() const { return m_config; }
    const TempDir& host() const { return m_host; }

private:
    TempDir m_config;
    TempDir m_host;
};

}  // namespace qvnrt::test
