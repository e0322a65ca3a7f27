// The parts of a web address, as far as the research code needs them: which service it
// names, where the server is, and what object is asked of it. No network is touched.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qvnrt::research {

struct ParsedUrl {
    std::string scheme;  // lower case
    std::string userName;
    std::string password;
    std::string server;  // a bracketed IPv6 literal keeps its brackets
    uint16_t port = 0;   // the scheme's default when the address names none
    std::string object;  // path and query, "/" at least; the fragment is not part of it

    bool IsHttp() const { return scheme == "http"; }
};

// Splits "scheme://[user[:password]@]server[:port][/path][?query][#fragment]". Nullopt for
// anything else: no scheme, no "//" authority, an empty server, a port that is no number
// from 1 to 65535, or a control character anywhere. Path and query may hold what a
// browser would still take (blanks of a company name, say); the server may not.
std::optional<ParsedUrl> ParseUrl(std::string_view url);

}  // namespace qvnrt::research
