#include "store/TickFilePath.h"

#include <cstdio>

#include "platform/Directories.h"
#include "store/StoreState.h"

namespace RTSecCache {
namespace {

bool IsAsciiAlnum(unsigned char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool StaysInName(unsigned char c) {
    return IsAsciiAlnum(c) || c == '@' || c == '$' || c == '-' || c == '_' || c == '#';
}

}  // namespace

std::string tickFilePath(const char* symbol) {
    const std::string text = symbol ? symbol : "";
    const unsigned char first = text.empty() ? 0 : static_cast<unsigned char>(text[0]);
    const std::string directory = qvnrt::platform::JoinPath(
        Store().directory().str(), std::string(1, IsAsciiAlnum(first) ? static_cast<char>(first) : '_'));
    qvnrt::platform::MakeDirectory(directory);
    std::string name;
    for (const unsigned char c : text) {
        if (StaysInName(c)) {
            name += static_cast<char>(c);
        } else {
            char escaped[4];
            std::snprintf(escaped, sizeof(escaped), "%%%x", c);
            name += escaped;
        }
    }
    return directory + "/" + name + ".tik";
}

}  // namespace RTSecCache
