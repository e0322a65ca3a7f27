// The registry of the Windows build, kept as one text file, user.reg in the config
// directory, in the syntax of regedit exports:
//
//   REGEDIT4
//
//   [HKEY_CURRENT_USER\Software\Quorvane\RealTime]
//   "RealTime DLL"="Client.DLL"
//   "DispStyle0"=dword:00000007
//
// Only HKEY_CURRENT_USER is kept; key paths are given relative to it, with backslashes
// ("Software\\Quorvane\\RealTime"). Key and value names compare without regard to case.
// A key exists while it, or a key below it, has a section. Every read takes the file as it
// is on disk, so another process's writes are seen; every write rewrites the whole file
// through a temporary file and rename(2), under flock(2) on the lock file user.reg.lock
// beside it (rename gives user.reg a new inode, so it cannot carry the lock itself), and
// re-reads the file under the lock before changing it. A line that cannot be parsed is
// skipped, and the next write keeps every value that could be read.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace qvnrt::platform {

class RegistryKey {
public:
    // RegOpenKeyEx: fails (nullopt) when the key has no section.
    static std::optional<RegistryKey> Open(const std::string& keyPath);
    // RegCreateKeyEx: opens the key, making its section if needed. Fails only when the
    // store cannot be written.
    static std::optional<RegistryKey> Create(const std::string& keyPath);

    const std::string& Path() const { return m_path; }

    // RegQueryValueEx of a string into a buffer of `bufferSize` bytes: fails when the value
    // is missing, is not a string, or needs more than bufferSize bytes with its terminator.
    bool QueryString(const std::string& valueName, std::string& value,
                     size_t bufferSize = 4096) const;
    // Fails when the value is missing or is not a double word.
    bool QueryDword(const std::string& valueName, uint32_t& value) const;

    // RegSetValueEx. False when the store cannot be written.
    bool SetString(const std::string& valueName, const std::string& value) const;
    bool SetDword(const std::string& valueName, uint32_t value) const;
    // RegDeleteValue. False when there was no such value or the store cannot be written.
    bool DeleteValue(const std::string& valueName) const;

private:
    explicit RegistryKey(std::string path) : m_path(std::move(path)) {}
    std::string m_path;
};

// The store's file, in the config directory.
std::string RegistryFilePath();

}  // namespace qvnrt::platform
