#include "platform/Registry.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sstream>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/Directories.h"

namespace qvnrt::platform {
namespace {

constexpr std::string_view kHeader = "REGEDIT4";
constexpr std::string_view kHive = "HKEY_CURRENT_USER";
constexpr std::string_view kFileName = "user.reg";
// The lock is taken on a file of its own: rename(2) gives user.reg a new inode at every
// write, so a lock on user.reg itself would not keep a second writer out.
constexpr std::string_view kLockSuffix = ".lock";
constexpr char kBlanks[] = " \t\r";

enum class ValueType { kString, kDword, kOther };

struct Value {
    std::string name;  // as first written; "" is the key's default value ("@")
    ValueType type = ValueType::kString;
    std::string text;  // a string's text, or the raw right-hand side of another type
    uint32_t dword = 0;
};

struct Section {
    std::string path;  // with its hive, as first written: HKEY_CURRENT_USER\Software\...
    std::vector<Value> values;
};

using Store = std::vector<Section>;

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// Registry names compare without regard to case. ASCII folding only: the store is 8-bit and
// must not depend on the process's locale.
bool SameName(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i) {
        if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
    }
    return true;
}

bool StartsWithName(std::string_view text, std::string_view prefix) {
    return text.size() >= prefix.size() && SameName(text.substr(0, prefix.size()), prefix);
}

std::string_view Trim(std::string_view text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool HasLineBreakOrNul(std::string_view text) {
    return text.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos;
}

// "Software\Quorvane\RealTime" with surrounding backslashes removed; false for a path that
// no section line can hold (an empty component, a line break).
bool NormaliseKeyPath(const std::string& keyPath, std::string& normalised) {
    const size_t first = keyPath.find_first_not_of('\\');
    if (first == std::string::npos) {
        normalised.clear();
        return !HasLineBreakOrNul(keyPath);
    }
    normalised = keyPath.substr(first, keyPath.find_last_not_of('\\') - first + 1);
    return normalised.find("\\\\") == std::string::npos && !HasLineBreakOrNul(normalised);
}

std::string SectionPath(const std::string& keyPath) {
    std::string path(kHive);
    if (!keyPath.empty()) path.append("\\").append(keyPath);
    return path;
}

// ---- Reading ------------------------------------------------------------------------------

// A quoted text starting at text[pos] == '"'; `\\` and `\"` are the only escapes of the
// format. A backslash before anything else is taken literally, as regedit does.
bool ParseQuoted(std::string_view text, size_t& pos, std::string& out) {
    if (pos >= text.size() || text[pos] != '"') return false;
    out.clear();
    for (size_t i = pos + 1; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            pos = i + 1;
            return true;
        }
        if (c == '\\' && i + 1 < text.size() && (text[i + 1] == '\\' || text[i + 1] == '"')) {
            out.push_back(text[++i]);
        } else {
            out.push_back(c);
        }
    }
    return false;  // unterminated
}

bool ParseHex32(std::string_view digits, uint32_t& value) {
    if (digits.empty() || digits.size() > 8) return false;
    value = 0;
    for (const char c : digits) {
        const char lower = LowerAscii(c);
        uint32_t digit;
        if (lower >= '0' && lower <= '9') {
            digit = static_cast<uint32_t>(lower - '0');
        } else if (lower >= 'a' && lower <= 'f') {
            digit = static_cast<uint32_t>(lower - 'a' + 10);
        } else {
            return false;
        }
        value = value << 4 | digit;
    }
    return true;
}

// `"name"=...` or `@=...`. The right-hand side is a quoted string, dword:XXXXXXXX, or
// another regedit type (hex:..., hex(2):...), which is kept as written though the library
// never reads it.
bool ParseValueLine(std::string_view line, Value& value) {
    size_t pos = 0;
    if (line[0] == '@') {
        value.name.clear();
        pos = 1;
    } else if (!ParseQuoted(line, pos, value.name)) {
        return false;
    }
    const std::string_view rest = Trim(line.substr(pos));
    if (rest.empty() || rest[0] != '=') return false;
    const std::string_view data = Trim(rest.substr(1));
    if (!data.empty() && data[0] == '"') {
        size_t end = 0;
        if (!ParseQuoted(data, end, value.text) || end != data.size()) return false;
        value.type = ValueType::kString;
        return true;
    }
    if (StartsWithName(data, "dword:")) {
        value.type = ValueType::kDword;
        return ParseHex32(Trim(data.substr(6)), value.dword);
    }
    if (StartsWithName(data, "hex")) {
        value.type = ValueType::kOther;
        value.text = std::string(data);
        return true;
    }
    return false;
}

Section* FindSection(Store& store, std::string_view path) {
    for (Section& section : store) {
        if (SameName(section.path, path)) return &section;
    }
    return nullptr;
}

Value* FindValue(Section& section, std::string_view name) {
    for (Value& value : section.values) {
        if (SameName(value.name, name)) return &value;
    }
    return nullptr;
}

// Line by line; a line that cannot be read is skipped, and so are the values under a
// section line that cannot be read, since they belong to no known key. Sections of other
// hives are kept, so that a write loses nothing that was in the file.
Store Parse(std::istream& in) {
    Store store;
    Section* current = nullptr;
    std::string raw;
    while (std::getline(in, raw)) {
        std::string_view line = Trim(raw);
        if (line.empty() || line[0] == ';' || line == kHeader) continue;
        if (line[0] == '[') {
            current = nullptr;
            const size_t close = line.rfind(']');
            if (close == std::string_view::npos || !Trim(line.substr(close + 1)).empty()) continue;
            std::string path(line.substr(1, close - 1));
            while (!path.empty() && path.back() == '\\') path.pop_back();
            if (!StartsWithName(path, "HKEY_") || path.find("\\\\") != std::string::npos) {
                continue;
            }
            current = FindSection(store, path);
            if (!current) {
                store.push_back(Section{std::move(path), {}});
                current = &store.back();
            }
            continue;
        }
        if (!current) continue;
        Value value;
        if (!ParseValueLine(line, value)) continue;
        // A value of another type may go on over lines that end in a backslash.
        while (value.type == ValueType::kOther && !value.text.empty() &&
               value.text.back() == '\\' && std::getline(in, raw)) {
            value.text.pop_back();
            value.text.append(Trim(raw));
        }
        if (Value* existing = FindValue(*current, value.name)) {
            value.name = existing->name;  // a later line wins, under the first spelling
            *existing = std::move(value);
        } else {
            current->values.push_back(std::move(value));
        }
    }
    return store;
}

// False only when the file exists and cannot be read: a write must then fail rather than
// replace a store it could not see. A missing file is an empty store.
bool Load(const std::string& file, Store& store) {
    store.clear();
    const int fd = file.empty() ? -1 : ::open(file.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return file.empty() || errno == ENOENT;
    std::string bytes;
    char chunk[4096];
    ssize_t got;
    while ((got = ::read(fd, chunk, sizeof(chunk))) != 0) {
        if (got < 0) {
            if (errno == EINTR) continue;
            ::close(fd);
            return false;
        }
        bytes.append(chunk, static_cast<size_t>(got));
    }
    ::close(fd);
    std::istringstream in(bytes);
    store = Parse(in);
    return true;
}

// For reads, an unreadable store is as good as an empty one: every value is missing.
Store Load(const std::string& file) {
    Store store;
    Load(file, store);
    return store;
}

// ---- Writing ------------------------------------------------------------------------------

std::string Quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '\\' || c == '"') out.push_back('\\');
        out.push_back(c);
    }
    out.push_back('"');
    return out;
}

std::string Serialise(const Store& store) {
    std::string out(kHeader);
    out.append("\n\n");
    for (const Section& section : store) {
        out.append("[").append(section.path).append("]\n");
        for (const Value& value : section.values) {
            out.append(value.name.empty() ? std::string("@") : Quoted(value.name)).append("=");
            switch (value.type) {
                case ValueType::kString:
                    out.append(Quoted(value.text));
                    break;
                case ValueType::kDword: {
                    char digits[16];
                    std::snprintf(digits, sizeof(digits), "dword:%08x", value.dword);
                    out.append(digits);
                    break;
                }
                case ValueType::kOther:
                    out.append(value.text);
                    break;
            }
            out.append("\n");
        }
        out.append("\n");
    }
    return out;
}

bool WriteAll(int fd, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t written = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (written < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        done += static_cast<size_t>(written);
    }
    return true;
}

// Readers never see a half-written store: the new text goes to a temporary file beside it,
// which then replaces it in one rename(2).
bool Save(const std::string& file, const Store& store) {
    std::string temporary = file + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) return false;
    struct stat existing;
    const mode_t mode = ::stat(file.c_str(), &existing) == 0 ? (existing.st_mode & 07777) : 0644;
    const bool written = WriteAll(fd, Serialise(store)) && ::fchmod(fd, mode) == 0 &&
                         ::fsync(fd) == 0;
    const bool closed = ::close(fd) == 0;
    if (!written || !closed || ::rename(temporary.c_str(), file.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return true;
}

class WriteLock {
public:
    explicit WriteLock(const std::string& path)
        : m_fd(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
        if (m_fd < 0) return;
        while (::flock(m_fd, LOCK_EX) != 0) {
            if (errno != EINTR) {
                ::close(m_fd);
                m_fd = -1;
                return;
            }
        }
    }
    ~WriteLock() {
        if (m_fd >= 0) ::close(m_fd);  // closing the last descriptor releases the lock
    }
    WriteLock(const WriteLock&) = delete;
    WriteLock& operator=(const WriteLock&) = delete;

    bool held() const { return m_fd >= 0; }

private:
    int m_fd;
};

enum class Outcome { kWrite, kUnchanged, kFail };

// Applies a change under the write lock, to the store as it is on disk once the lock is
// held, so that a concurrent writer's values are never overwritten by a stale copy.
template <class Change>
bool Update(Change&& change) {
    const std::string file = RegistryFilePath();
    if (file.empty()) return false;
    WriteLock lock(file + std::string(kLockSuffix));
    if (!lock.held()) return false;
    Store store;
    if (!Load(file, store)) return false;
    switch (change(store)) {
        case Outcome::kWrite:
            return Save(file, store);
        case Outcome::kUnchanged:
            return true;
        case Outcome::kFail:
            break;
    }
    return false;
}

// A value set through an open key whose section has gone meanwhile (edited away by hand,
// or by another process) makes the section again, rather than being dropped.
Section& SectionFor(Store& store, const std::string& path) {
    if (Section* section = FindSection(store, path)) return *section;
    store.push_back(Section{path, {}});
    return store.back();
}

bool KeyExists(const Store& store, const std::string& path) {
    for (const Section& section : store) {
        // A key below it implies the key, as in the registry, where parents always exist.
        if (SameName(section.path, path) ||
            (StartsWithName(section.path, path) && section.path.size() > path.size() &&
             section.path[path.size()] == '\\')) {
            return true;
        }
    }
    return false;
}

std::optional<Value> LookUp(const std::string& keyPath, const std::string& valueName) {
    Store store = Load(RegistryFilePath());
    Section* section = FindSection(store, SectionPath(keyPath));
    Value* value = section ? FindValue(*section, valueName) : nullptr;
    if (!value) return std::nullopt;
    return std::move(*value);
}

bool SetValue(const std::string& keyPath, const std::string& valueName, Value value) {
    if (HasLineBreakOrNul(valueName)) return false;
    const std::string path = SectionPath(keyPath);
    return Update([&](Store& store) {
        Section& section = SectionFor(store, path);
        if (Value* existing = FindValue(section, valueName)) {
            value.name = existing->name;
            *existing = std::move(value);
        } else {
            value.name = valueName;
            section.values.push_back(std::move(value));
        }
        return Outcome::kWrite;
    });
}

}  // namespace

std::string RegistryFilePath() {
    const std::string directory = ConfigDirectory();
    return directory.empty() ? std::string() : JoinPath(directory, std::string(kFileName));
}

std::optional<RegistryKey> RegistryKey::Open(const std::string& keyPath) {
    std::string path;
    if (!NormaliseKeyPath(keyPath, path)) return std::nullopt;
    if (path.empty()) return RegistryKey(path);  // the hive itself always exists
    if (!KeyExists(Load(RegistryFilePath()), SectionPath(path))) return std::nullopt;
    return RegistryKey(path);
}

std::optional<RegistryKey> RegistryKey::Create(const std::string& keyPath) {
    std::string path;
    if (!NormaliseKeyPath(keyPath, path)) return std::nullopt;
    const std::string section = SectionPath(path);
    // An existing key opens without the write lock, so a read-only store still opens it.
    Store current = Load(RegistryFilePath());
    if (FindSection(current, section)) return RegistryKey(path);
    const bool made = Update([&](Store& store) {
        if (FindSection(store, section)) return Outcome::kUnchanged;
        store.push_back(Section{section, {}});
        return Outcome::kWrite;
    });
    if (!made) return std::nullopt;
    return RegistryKey(path);
}

bool RegistryKey::QueryString(const std::string& valueName, std::string& value,
                              size_t bufferSize) const {
    const std::optional<Value> found = LookUp(m_path, valueName);
    if (!found || found->type != ValueType::kString) return false;
    if (found->text.size() + 1 > bufferSize) return false;  // ERROR_MORE_DATA
    value = found->text;
    return true;
}

bool RegistryKey::QueryDword(const std::string& valueName, uint32_t& value) const {
    const std::optional<Value> found = LookUp(m_path, valueName);
    if (!found || found->type != ValueType::kDword) return false;
    value = found->dword;
    return true;
}

bool RegistryKey::SetString(const std::string& valueName, const std::string& value) const {
    // A line break or NUL cannot be written in the format, and would end the text anyway.
    if (HasLineBreakOrNul(value)) return false;
    Value entry;
    entry.type = ValueType::kString;
    entry.text = value;
    return SetValue(m_path, valueName, std::move(entry));
}

bool RegistryKey::SetDword(const std::string& valueName, uint32_t value) const {
    Value entry;
    entry.type = ValueType::kDword;
    entry.dword = value;
    return SetValue(m_path, valueName, std::move(entry));
}

bool RegistryKey::DeleteValue(const std::string& valueName) const {
    const std::string path = SectionPath(m_path);
    return Update([&](Store& store) {
        Section* section = FindSection(store, path);
        if (!section) return Outcome::kFail;
        for (auto it = section->values.begin(); it != section->values.end(); ++it) {
            if (SameName(it->name, valueName)) {
                section->values.erase(it);
                return Outcome::kWrite;
            }
        }
        return Outcome::kFail;
    });
}

}  // namespace qvnrt::platform
