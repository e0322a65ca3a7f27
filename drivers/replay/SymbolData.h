// Everything the data directory holds for one symbol: its listing and its three files,
// each opened on first use and kept mapped.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "Listing.h"
#include "SeriesFile.h"

namespace qvnreplay {

struct QuoteState {
    bool traded = false;
    double last = 0;
    int64_t time = 0;
    int64_t volume = 0;  // of the last trade
    double high = 0, low = 0;
    int64_t totalVolume = 0;  // of the trade's day
    std::optional<double> previousClose;
};

class SymbolData {
public:
    SymbolData(const std::string& dataDir, std::string symbol, const ListedSecurity* listing);

    const std::string& Symbol() const { return m_symbol; }
    const ListedSecurity* Listed() const { return m_listing; }
    // True when the symbol is listed or has a file of any kind.
    bool Known();

    const SeriesFile* Ticks();
    const SeriesFile* Minutes();
    const SeriesFile* Days();

    // The quote at `now`: the latest trade (a tick, else a minute bar's close, else a day's
    // close), its day's range so far and the close of the day before. A day is a day in
    // UTC, which holds the whole session of the exchanges that the data directory serves.
    QuoteState QuoteAt(int64_t now);

private:
    struct Lazy {
        bool opened = false;
        std::unique_ptr<SeriesFile> file;
    };
    const SeriesFile* Get(Lazy& lazy, const char* suffix, SeriesKind kind);

    // The trades of one day up to a time, kept so that a quote that follows the replay
    // clock reads only what is new since its last update.
    struct DayRange {
        int64_t day = -1;
        int64_t upTo = 0;
        bool any = false;
        double high = 0, low = 0;
        int64_t volume = 0;
    };
    void ExtendDayRange(const SeriesFile& file, bool ticks, int64_t day, int64_t now);

    DayRange m_dayRange;
    std::string m_dataDir;
    std::string m_symbol;
    const ListedSecurity* m_listing;
    Lazy m_ticks, m_minutes, m_days;
};

}  // namespace qvnreplay
