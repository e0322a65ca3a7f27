// Simulated news: at most one headline in every five simulated minutes, each about one
// security, from one of three sources. Like the prices, each headline is a pure function
// of the seed and of its time slot, so history and live news agree.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Market.h"

namespace qvnsim {

struct Headline {
    uint32_t articleId = 0;  // the time slot's number
    int64_t time = 0;        // seconds since 1970
    int security = -1;       // index in the universe
    uint8_t source = 0;      // 1 to 3
    std::string text;
};

struct NewsQuery {
    std::string search;  // keyword text, or symbols separated by blanks
    bool byKeyword = true;
    bool caseSensitive = false;
    bool wholeWords = false;
    std::vector<uint8_t> sources;  // empty: every source
    int64_t start = 0;
    int64_t end = 0;  // 0: open-ended
    int maxHeadlines = 50;

    bool Matches(const Headline& headline, const Universe& universe) const;
};

class NewsWire {
public:
    static constexpr int64_t kSlotSeconds = 300;

    NewsWire(const Universe& universe, uint64_t seed);

    std::optional<Headline> Article(uint32_t articleId) const;
    // Matching headlines with `from` < time <= `to`, oldest first.
    std::vector<Headline> Between(const NewsQuery& query, int64_t from, int64_t to) const;
    // The newest matching headlines up to `until`, newest first, within two weeks.
    std::vector<Headline> History(const NewsQuery& query, int64_t until) const;
    std::string Story(const Headline& headline, Market& market) const;

    static const char* SourceName(int source);
    static const char* SourceCode(int source);
    static constexpr int kSourceCount = 3;

private:
    std::optional<Headline> InSlot(int64_t slot) const;

    const Universe& m_universe;
    uint64_t m_seed;
    std::vector<int> m_subjects;  // securities the news can be about
};

}  // namespace qvnsim
