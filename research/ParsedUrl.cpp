#include "research/ParsedUrl.h"

namespace qvnrt::research {
namespace {

bool IsAlpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsHexDigit(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}
char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool HasControlCharacter(std::string_view text) {
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) return true;
    }
    return false;
}

// Letters, digits and "-._~%!$&'()*+,;=": what a registered name may hold, escapes included.
bool IsRegisteredName(std::string_view host) {
    if (host.empty()) return false;
    for (const char c : host) {
        if (IsAlpha(c) || IsDigit(c)) continue;
        if (std::string_view("-._~%!$&'()*+,;=").find(c) == std::string_view::npos) return false;
    }
    return true;
}

bool IsIpv6Literal(std::string_view host) {
    if (host.size() < 4 || host.front() != '[' || host.back() != ']') return false;
    for (const char c : host.substr(1, host.size() - 2)) {
        if (!IsHexDigit(c) && c != ':' && c != '.') return false;
    }
    return true;
}

uint16_t DefaultPort(std::string_view scheme) {
    if (scheme == "http") return 80;
    if (scheme == "https") return 443;
    if (scheme == "ftp") return 21;
    if (scheme == "gopher") return 70;
    return 0;
}

// An empty port text means the default, as browsers read "host:".
bool ParsePort(std::string_view digits, uint16_t defaultPort, uint16_t& port) {
    if (digits.empty()) {
        port = defaultPort;
        return true;
    }
    if (digits.size() > 5) return false;
    unsigned value = 0;
    for (const char c : digits) {
        if (!IsDigit(c)) return false;
        value = value * 10 + static_cast<unsigned>(c - '0');
    }
    if (value == 0 || value > 65535) return false;
    port = static_cast<uint16_t>(value);
    return true;
}

bool SplitUserInfo(std::string_view userInfo, ParsedUrl& parsed) {
    for (const char c : userInfo) {
        if (c == ' ' || c == '[' || c == ']') return false;
    }
    const size_t colon = userInfo.find(':');
    parsed.userName = std::string(userInfo.substr(0, colon));
    if (colon != std::string_view::npos) parsed.password = std::string(userInfo.substr(colon + 1));
    return true;
}

bool SplitHostPort(std::string_view hostPort, ParsedUrl& parsed) {
    std::string_view host = hostPort;
    std::string_view port;
    if (!hostPort.empty() && hostPort.front() == '[') {
        const size_t close = hostPort.find(']');
        if (close == std::string_view::npos) return false;
        host = hostPort.substr(0, close + 1);
        const std::string_view rest = hostPort.substr(close + 1);
        if (!rest.empty()) {
            if (rest.front() != ':') return false;
            port = rest.substr(1);
        }
        if (!IsIpv6Literal(host)) return false;
    } else {
        const size_t colon = hostPort.find(':');
        if (colon != std::string_view::npos) {
            host = hostPort.substr(0, colon);
            port = hostPort.substr(colon + 1);
        }
        if (!IsRegisteredName(host)) return false;
    }
    parsed.server = std::string(host);
    return ParsePort(port, DefaultPort(parsed.scheme), parsed.port);
}

}  // namespace

std::optional<ParsedUrl> ParseUrl(std::string_view url) {
    if (url.empty() || HasControlCharacter(url)) return std::nullopt;

    ParsedUrl parsed;
    const size_t colon = url.find(':');
    if (colon == std::string_view::npos || colon == 0 || !IsAlpha(url[0])) return std::nullopt;
    for (const char c : url.substr(0, colon)) {
        if (!IsAlpha(c) && !IsDigit(c) && c != '+' && c != '-' && c != '.') return std::nullopt;
        parsed.scheme.push_back(Lower(c));
    }

    std::string_view rest = url.substr(colon + 1);
    if (rest.substr(0, 2) != "//") return std::nullopt;
    rest.remove_prefix(2);

    const size_t authorityEnd = rest.find_first_of("/?#");
    const std::string_view authority = rest.substr(0, authorityEnd);
    std::string_view object =
        authorityEnd == std::string_view::npos ? std::string_view() : rest.substr(authorityEnd);

    const size_t at = authority.rfind('@');
    if (at != std::string_view::npos && !SplitUserInfo(authority.substr(0, at), parsed)) {
        return std::nullopt;
    }
    const std::string_view hostPort =
        at == std::string_view::npos ? authority : authority.substr(at + 1);
    if (!SplitHostPort(hostPort, parsed)) return std::nullopt;

    object = object.substr(0, object.find('#'));
    parsed.object = (object.empty() || object.front() != '/') ? "/" + std::string(object)
                                                              : std::string(object);
    return parsed;
}

}  // namespace qvnrt::research
