#include "platform/Registry.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <fcntl.h>
#include <memory>
#include <unordered_map>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/ConfigFile.h"
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
    std::string text;  // a string's text
    uint32_t dword = 0;
    // The line (or, for a value continued over lines, the lines) as read, written back as
    // it stands while the value is unchanged; empty for a value set by the library.
    std::string raw;
};

// One line of a section in file order: a value, a line kept as it stands (a comment, a
// line that cannot be read, an earlier spelling of a repeated value), or a deleted value.
struct Entry {
    enum class Kind { kValue, kKept, kDeleted } kind = Kind::kValue;
    Value value;
};

struct Section {
    std::string path;    // with its hive, as first written: HKEY_CURRENT_USER\Software\...
    std::string header;  // the label line as it stands, for a label that cannot be read
    std::vector<Entry> entries;
    std::unordered_map<std::string, size_t> byName;  // folded value name -> entry
};

// sections[0] holds the lines before the first label. Lookups go through the indexes, so
// a store of tens of thousands of values is read and changed in linear time.
struct Store {
    std::vector<Section> sections{Section{}};
    std::unordered_map<std::string, size_t> byPath;  // folded path -> section
};

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// Registry names compare without regard to case. ASCII folding only: the store is 8-bit and
// must not depend on the process's locale.
std::string Folded(std::string_view text) {
    std::string folded(text);
    for (char& c : folded) c = LowerAscii(c);
    return folded;
}

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
        return true;
    }
    return false;
}

Section* FindSection(Store& store, std::string_view path) {
    const auto found = store.byPath.find(Folded(path));
    return found == store.byPath.end() ? nullptr : &store.sections[found->second];
}

const Section* FindSection(const Store& store, std::string_view path) {
    return FindSection(const_cast<Store&>(store), path);
}

Value* FindValue(Section& section, std::string_view name) {
    const auto found = section.byName.find(Folded(name));
    return found == section.byName.end() ? nullptr : &section.entries[found->second].value;
}

Section& AddSection(Store& store, std::string path) {
    store.byPath.emplace(Folded(path), store.sections.size());
    store.sections.push_back(Section{std::move(path), {}, {}, {}});
    return store.sections.back();
}

void KeepLine(Section& section, std::string line) {
    Entry entry;
    entry.kind = Entry::Kind::kKept;
    entry.value.raw = std::move(line);
    section.entries.push_back(std::move(entry));
}

// Sets `value` in `section`. A value already there keeps its place and its first spelling.
void PutValue(Section& section, Value value) {
    const std::string folded = Folded(value.name);
    const auto found = section.byName.find(folded);
    if (found == section.byName.end()) {
        section.byName.emplace(folded, section.entries.size());
        section.entries.push_back(Entry{Entry::Kind::kValue, std::move(value)});
        return;
    }
    Value& existing = section.entries[found->second].value;
    value.name = existing.name;
    existing = std::move(value);
}

bool EndsInContinuation(std::string_view line) {
    const std::string_view trimmed = Trim(line);
    return !trimmed.empty() && trimmed.back() == '\\';
}

// Line by line, in one pass. What cannot be read is kept as it stands, in its place: a
// comment, a line that is not a value, a label that is not a key of a hive and the lines
// under it. Sections of other hives are kept too, so a write loses nothing of the file.
Store Parse(std::string_view text) {
    Store store;
    Section* current = &store.sections[0];
    size_t pos = 0;
    auto nextLine = [&](std::string_view& line) {
        if (pos >= text.size()) return false;
        size_t end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        line = text.substr(pos, end - pos);
        pos = end + 1;
        return true;
    };
    std::string_view raw;
    while (nextLine(raw)) {
        const std::string_view line = Trim(raw);
        if (line.empty() || (line == kHeader && current == &store.sections[0])) continue;
        if (line[0] == '[') {
            const size_t close = line.rfind(']');
            std::string path;
            if (close != std::string_view::npos && Trim(line.substr(close + 1)).empty()) {
                path = std::string(line.substr(1, close - 1));
                while (!path.empty() && path.back() == '\\') path.pop_back();
            }
            if (!StartsWithName(path, "HKEY_") || path.find("\\\\") != std::string::npos) {
                // Not a key: kept with the lines under it, which belong to no known key.
                store.sections.push_back(Section{{}, std::string(raw), {}, {}});
                current = &store.sections.back();
                continue;
            }
            current = FindSection(store, path);
            if (!current) current = &AddSection(store, std::move(path));
            continue;
        }
        Value value;
        if (current->path.empty() || line[0] == ';' || !ParseValueLine(line, value)) {
            KeepLine(*current, std::string(raw));
            continue;
        }
        value.raw = std::string(raw);
        // A value of another type may go on over lines that end in a backslash.
        std::string_view last = raw;
        while (value.type == ValueType::kOther && EndsInContinuation(last) && nextLine(last)) {
            value.raw.append("\n").append(last);
        }
        if (const auto earlier = current->byName.find(Folded(value.name));
            earlier != current->byName.end()) {
            // A later line wins, under the first spelling; the earlier line stays in the
            // file as it stands, where a reader again finds the later one.
            Entry& entry = current->entries[earlier->second];
            value.name = entry.value.name;
            entry.kind = Entry::Kind::kKept;
            current->byName.erase(earlier);
        }
        PutValue(*current, std::move(value));
    }
    return store;
}

// The parsed store of the file as it is on disk. Every read takes the file's bytes, so that
// a change by another process is seen; the parse is kept while the bytes stay the same, so
// a file is parsed once per change however often it is read. (The bytes, not the file's
// times, decide: a change within one tick of the file system's clock must not be missed.)
// False only when the file exists and cannot be read: a write must then fail rather than
// replace a store it could not see. A missing file is an empty store.
class StoreCache {
public:
    bool Get(const std::string& file, std::shared_ptr<const Store>& store) {
        std::string bytes;
        if (file.empty() || !ReadConfigFile(file, bytes)) {
            const bool missing = file.empty() || errno == ENOENT;
            store = std::make_shared<const Store>();
            return missing;
        }
        if (!m_store || m_file != file || m_bytes != bytes) {
            m_store = std::make_shared<const Store>(Parse(bytes));
            m_file = file;
            m_bytes = std::move(bytes);
        }
        store = m_store;
        return true;
    }

    void Forget() {
        m_store.reset();
        m_bytes.clear();
    }

private:
    std::string m_file;
    std::string m_bytes;
    std::shared_ptr<const Store> m_store;
};

// The platform layer's one cache of the store; the library takes no lock (one thread).
StoreCache& TheStoreCache() {
    static StoreCache cache;
    return cache;
}

bool Load(const std::string& file, std::shared_ptr<const Store>& store) {
    return TheStoreCache().Get(file, store);
}

// For reads, an unreadable store is as good as an empty one: every value is missing.
std::shared_ptr<const Store> Load(const std::string& file) {
    std::shared_ptr<const Store> store;
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

void AppendValue(std::string& out, const Value& value) {
    if (!value.raw.empty()) {
        out.append(value.raw);
        // A continuation backslash on the last line of the file continued nothing; written
        // as it stands it would take in the next value on the following read.
        // Every such backslash goes: of two, the one left would still continue.
        while (value.type == ValueType::kOther && EndsInContinuation(out)) {
            out.erase(out.rfind('\\'), 1);
        }
        out.append("\n");
        return;
    }
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
            break;  // only ever read from the file, so it always has its lines
    }
    out.append("\n");
}

std::string Serialise(const Store& store) {
    std::string out(kHeader);
    out.append("\n");
    for (const Entry& entry : store.sections[0].entries) out.append(entry.value.raw).append("\n");
    out.append("\n");
    for (size_t i = 1; i < store.sections.size(); ++i) {
        const Section& section = store.sections[i];
        if (section.path.empty()) {
            out.append(section.header).append("\n");
        } else {
            out.append("[").append(section.path).append("]\n");
        }
        for (const Entry& entry : section.entries) {
            if (entry.kind == Entry::Kind::kKept) out.append(entry.value.raw).append("\n");
            if (entry.kind == Entry::Kind::kValue) AppendValue(out, entry.value);
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

void ReportNotSaved(const std::string& file, const char* reason) {
    std::clog << "QvnRT: " << file << ": " << reason << "; the setting is not saved" << std::endl;
}

// Readers never see a half-written store: the new text goes to a temporary file beside it,
// which then replaces it in one rename(2). A store that its owner made read-only is left
// as it is: the change fails rather than replace the file.
bool Save(const std::string& file, const Store& store) {
    struct stat existing;
    const bool exists = ::stat(file.c_str(), &existing) == 0;
    if (exists && ((existing.st_mode & 0222) == 0 || ::access(file.c_str(), W_OK) != 0)) {
        ReportNotSaved(file, "the file is read-only");
        return false;
    }
    std::string temporary = file + ".XXXXXX";
    const int fd = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (fd < 0) {
        ReportNotSaved(file, std::strerror(errno));
        return false;
    }
    const mode_t mode = exists ? (existing.st_mode & 07777) : 0644;
    // A write beyond RLIMIT_FSIZE or onto a full disk fails here, and the old store stays.
    const bool written = WriteAll(fd, Serialise(store)) && ::fchmod(fd, mode) == 0 &&
                         ::fsync(fd) == 0;
    const int writeError = errno;
    const bool closed = ::close(fd) == 0;
    TheStoreCache().Forget();
    if (!written || !closed || ::rename(temporary.c_str(), file.c_str()) != 0) {
        ReportNotSaved(file, std::strerror(written ? errno : writeError));
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
    std::shared_ptr<const Store> current;
    if (!Load(file, current)) return false;
    Store store = *current;  // a copy: the cached parse stays as the file still is
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
    return AddSection(store, path);
}

bool KeyExists(const Store& store, const std::string& path) {
    for (const Section& section : store.sections) {
        if (section.path.empty()) continue;
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
    const std::shared_ptr<const Store> store = Load(RegistryFilePath());
    Section* section = FindSection(const_cast<Store&>(*store), SectionPath(keyPath));
    const Value* value = section ? FindValue(*section, valueName) : nullptr;
    if (!value) return std::nullopt;
    return *value;
}

bool SetValue(const std::string& keyPath, const std::string& valueName, Value value) {
    if (HasLineBreakOrNul(valueName)) return false;
    const std::string path = SectionPath(keyPath);
    return Update([&](Store& store) {
        Section& section = SectionFor(store, path);
        // Nothing is written for a value that is already so: a reader that saves what it
        // read (the profile's last path) leaves the file alone.
        if (const Value* existing = FindValue(section, valueName);
            existing && existing->type == value.type &&
            (value.type == ValueType::kString ? existing->text == value.text
                                              : existing->dword == value.dword)) {
            return Outcome::kUnchanged;
        }
        value.name = valueName;
        PutValue(section, std::move(value));
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
    if (!KeyExists(*Load(RegistryFilePath()), SectionPath(path))) return std::nullopt;
    return RegistryKey(path);
}

std::optional<RegistryKey> RegistryKey::Create(const std::string& keyPath) {
    std::string path;
    if (!NormaliseKeyPath(keyPath, path)) return std::nullopt;
    const std::string section = SectionPath(path);
    // An existing key opens without the write lock, so a read-only store still opens it.
    if (FindSection(*Load(RegistryFilePath()), section)) return RegistryKey(path);
    const bool made = Update([&](Store& store) {
        if (FindSection(store, section)) return Outcome::kUnchanged;
        AddSection(store, section);
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
        const auto found = section->byName.find(Folded(valueName));
        if (found == section->byName.end()) return Outcome::kFail;
        section->entries[found->second].kind = Entry::Kind::kDeleted;
        section->byName.erase(found);
        return Outcome::kWrite;
    });
}

}  // namespace qvnrt::platform
