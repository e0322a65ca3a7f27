#include "platform/IniFile.h"

#include <sstream>
#include <strings.h>

#include "platform/ConfigFile.h"
#include "platform/Directories.h"

namespace qvnrt::platform {
namespace {

const char kBlanks[] = " \t\r\n\v\f";

std::string Trim(const std::string& text) {
    const size_t first = text.find_first_not_of(kBlanks);
    if (first == std::string::npos) return std::string();
    return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

bool SameName(const std::string& a, const std::string& b) {
    return a.size() == b.size() && ::strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::string Cut(std::string text, size_t bufferSize) {
    if (bufferSize == 0) return std::string();
    if (text.size() > bufferSize - 1) text.resize(bufferSize - 1);
    return text;
}

// The value of `key` in `section`, read line by line; nullopt-like false when absent.
bool Find(std::istream& in, const std::string& section, const std::string& key,
          std::string& value) {
    bool inSection = false;
    std::string line;
    while (std::getline(in, line)) {
        line = Trim(line);
        if (line.empty() || line[0] == ';') continue;
        if (line.front() == '[') {
            const size_t close = line.find(']');
            if (close == std::string::npos) continue;  // not a label; skipped
            if (inSection) return false;  // the first matching section only
            inSection = SameName(Trim(line.substr(1, close - 1)), section);
            continue;
        }
        if (!inSection) continue;
        const size_t equals = line.find('=');
        if (equals == std::string::npos) continue;
        if (!SameName(Trim(line.substr(0, equals)), key)) continue;
        value = Trim(line.substr(equals + 1));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
            value = value.substr(1, value.size() - 2);
        }
        return true;
    }
    return false;
}

}  // namespace

std::string GetPrivateProfileString(const std::string& section, const std::string& key,
                                    const std::string& defaultValue, size_t bufferSize,
                                    const std::string& fileName) {
    const std::string path = fileName.find('/') == std::string::npos
                                 ? JoinPath(ConfigDirectory(), fileName)
                                 : fileName;
    std::string bytes;
    std::string value;
    if (!ReadConfigFile(path, bytes)) return Cut(defaultValue, bufferSize);
    std::istringstream in(std::move(bytes));
    if (!Find(in, section, key, value)) return Cut(defaultValue, bufferSize);
    return Cut(value, bufferSize);
}

}  // namespace qvnrt::platform
