#include "NewsWire.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <sstream>

#include "CivilDate.h"
#include "Random.h"

namespace qvnsim {

namespace {

constexpr uint64_t kNewsStream = 0x6e657773;  // "news"
constexpr int64_t kHistoryReach = 14 * kSecondsPerDay;

const char* const kCompanyTemplates[] = {
    "%s (%s) shares rise after quarterly results beat estimates",
    "%s (%s) falls as outlook disappoints analysts",
    "%s (%s) announces share buyback programme",
    "%s (%s) names new chief executive",
    "Analysts raise price target on %s (%s)",
    "%s (%s) trading volume surges ahead of earnings",
    "Regulator opens review of %s (%s)",
    "%s (%s) declares quarterly dividend",
};
const char* const kMarketTemplates[] = {
    "%s (%s) moves as traders weigh central bank comments",
    "%s (%s) steady in quiet trading",
    "%s (%s) swings after economic data surprise",
    "Volatility picks up in %s (%s)",
};

const char* const kSourceNames[] = {"Simulated Wire", "Market Desk", "Exchange Notices"};
const char* const kSourceCodes[] = {"SW", "MD", "EN"};

char Fold(char c, bool caseSensitive) {
    return caseSensitive ? c : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

bool IsWordCharacter(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

bool ContainsText(const std::string& text, const std::string& word, bool caseSensitive,
                  bool wholeWords) {
    if (word.empty()) return true;
    for (size_t at = 0; at + word.size() <= text.size(); ++at) {
        size_t i = 0;
        while (i < word.size() && Fold(text[at + i], caseSensitive) == Fold(word[i], caseSensitive))
            ++i;
        if (i != word.size()) continue;
        if (!wholeWords) return true;
        const bool startsWord = at == 0 || !IsWordCharacter(text[at - 1]);
        const size_t after = at + word.size();
        const bool endsWord = after == text.size() || !IsWordCharacter(text[after]);
        if (startsWord && endsWord) return true;
    }
    return false;
}

bool SameSymbol(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) ==
                      std::toupper(static_cast<unsigned char>(y));
           });
}

}  // namespace

bool NewsQuery::Matches(const Headline& headline, const Universe& universe) const {
    if (!sources.empty() &&
        std::find(sources.begin(), sources.end(), headline.source) == sources.end()) {
        return false;
    }
    if (headline.time < start || (end != 0 && headline.time > end)) return false;
    if (byKeyword) return ContainsText(headline.text, search, caseSensitive, wholeWords);
    const std::string& symbol =
        universe.Securities()[static_cast<size_t>(headline.security)].symbol;
    std::istringstream symbols(search);
    std::string wanted;
    while (symbols >> wanted) {
        if (SameSymbol(wanted, symbol)) return true;
    }
    return false;
}

NewsWire::NewsWire(const Universe& universe, uint64_t seed) : m_universe(universe), m_seed(seed) {
    for (const Security& s : universe.Securities()) {
        if (s.visible && s.assetType != kOption) m_subjects.push_back(universe.IndexOf(s));
    }
}

std::optional<Headline> NewsWire::InSlot(int64_t slot) const {
    if (slot <= 0 || slot > 0xFFFFFFFFll || m_subjects.empty()) return std::nullopt;
    const uint64_t h = Hash(m_seed, kNewsStream, static_cast<uint64_t>(slot));
    if (Uniform(h) >= 0.55) return std::nullopt;
    Headline headline;
    headline.articleId = static_cast<uint32_t>(slot);
    headline.time = slot * kSlotSeconds + static_cast<int64_t>((h >> 40) % kSlotSeconds);
    headline.security = m_subjects[(h >> 8) % m_subjects.size()];
    headline.source = static_cast<uint8_t>(1 + (h >> 32) % kSourceCount);
    const Security& s = m_universe.Securities()[static_cast<size_t>(headline.security)];
    const bool company = s.assetType == kStock;
    const size_t count = company ? std::size(kCompanyTemplates) : std::size(kMarketTemplates);
    const char* pattern =
        company ? kCompanyTemplates[(h >> 24) % count] : kMarketTemplates[(h >> 24) % count];
    char text[256];
    std::snprintf(text, sizeof text, pattern, s.name.c_str(), s.symbol.c_str());
    headline.text = text;
    return headline;
}

std::optional<Headline> NewsWire::Article(uint32_t articleId) const {
    return InSlot(articleId);
}

std::vector<Headline> NewsWire::Between(const NewsQuery& query, int64_t from, int64_t to) const {
    std::vector<Headline> out;
    for (int64_t slot = FloorDiv(from, kSlotSeconds); slot <= FloorDiv(to, kSlotSeconds); ++slot) {
        const std::optional<Headline> headline = InSlot(slot);
        if (headline && headline->time > from && headline->time <= to &&
            query.Matches(*headline, m_universe)) {
            out.push_back(*headline);
        }
    }
    return out;
}

std::vector<Headline> NewsWire::History(const NewsQuery& query, int64_t until) const {
    std::vector<Headline> out;
    if (query.end != 0) until = std::min(until, query.end);
    const int64_t floor = std::max(query.start, until - kHistoryReach);
    for (int64_t slot = FloorDiv(until, kSlotSeconds);
         slot >= FloorDiv(floor, kSlotSeconds) &&
         out.size() < static_cast<size_t>(query.maxHeadlines);
         --slot) {
        const std::optional<Headline> headline = InSlot(slot);
        if (headline && headline->time <= until && headline->time >= floor &&
            query.Matches(*headline, m_universe)) {
            out.push_back(*headline);
        }
    }
    return out;
}

std::string NewsWire::Story(const Headline& headline, Market& market) const {
    const Security& s = m_universe.Securities()[static_cast<size_t>(headline.security)];
    const Snapshot snap = market.At(s, headline.time - m_universe.DelaySeconds(s));
    const CivilDate date = CivilFromDays(DayOf(headline.time));
    const int64_t clock = headline.time - DayOf(headline.time) * kSecondsPerDay;
    char text[1024];
    std::snprintf(
        text, sizeof text,
        "%s\n"
        "%04d-%02d-%02d %02d:%02d UTC, %s\n"
        "\n"
        "%s last traded at %.*f, against a previous close of %.*f.\n"
        "Volume so far today:\t%lld\n"
        "\n"
        "This article is generated by the market simulation. It carries no information about\n"
        "any real company or market.\n",
        headline.text.c_str(), date.year, date.month, date.day, static_cast<int>(clock / 3600),
        static_cast<int>(clock / 60 % 60), SourceName(headline.source), s.symbol.c_str(),
        std::max(s.decimals, 2), static_cast<double>(snap.last), std::max(s.decimals, 2),
        static_cast<double>(snap.prevClose), static_cast<long long>(snap.volume));
    return text;
}

const char* NewsWire::SourceName(int source) {
    return source >= 1 && source <= kSourceCount ? kSourceNames[source - 1] : nullptr;
}

const char* NewsWire::SourceCode(int source) {
    return source >= 1 && source <= kSourceCount ? kSourceCodes[source - 1] : nullptr;
}

}  // namespace qvnsim
