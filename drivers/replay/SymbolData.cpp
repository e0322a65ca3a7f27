#include "SymbolData.h"

#include <algorithm>
#include <limits>

#include "CivilDate.h"

namespace qvnreplay {

SymbolData::SymbolData(const std::string& dataDir, std::string symbol,
                       const ListedSecurity* listing)
    : m_dataDir(dataDir), m_symbol(std::move(symbol)), m_listing(listing) {}

const SeriesFile* SymbolData::Get(Lazy& lazy, const char* suffix, SeriesKind kind) {
    if (!lazy.opened) {
        lazy.opened = true;
        lazy.file = SeriesFile::Open(m_dataDir + "/" + m_symbol + suffix, kind);
    }
    return lazy.file.get();
}

const SeriesFile* SymbolData::Ticks() {
    return Get(m_ticks, ".ticks.csv", SeriesKind::kTicks);
}
const SeriesFile* SymbolData::Minutes() {
    return Get(m_minutes, ".1m.csv", SeriesKind::kMinutes);
}
const SeriesFile* SymbolData::Days() {
    return Get(m_days, ".daily.csv", SeriesKind::kDays);
}

bool SymbolData::Known() {
    return m_listing != nullptr || Ticks() != nullptr || Minutes() != nullptr ||
           Days() != nullptr;
}

void SymbolData::ExtendDayRange(const SeriesFile& file, bool ticks, int64_t day, int64_t now) {
    if (m_dayRange.day != day || now < m_dayRange.upTo) {
        m_dayRange = DayRange{day, day * kSecondsPerDay - 1};
    }
    file.Forward(m_dayRange.upTo + 1, now, [this, ticks](const SeriesRow& r) {
        const double high = ticks ? r.values[0] : r.values[1];
        const double low = ticks ? r.values[0] : r.values[2];
        m_dayRange.high = m_dayRange.any ? std::max(m_dayRange.high, high) : high;
        m_dayRange.low = m_dayRange.any ? std::min(m_dayRange.low, low) : low;
        m_dayRange.any = true;
        m_dayRange.volume += static_cast<int64_t>(ticks ? r.values[1] : r.values[4]);
        return true;
    });
    m_dayRange.upTo = std::max(m_dayRange.upTo, now);
}

QuoteState SymbolData::QuoteAt(int64_t now) {
    QuoteState quote;
    const SeriesFile* intraday = Ticks() != nullptr ? Ticks() : Minutes();
    const bool ticks = intraday == Ticks();
    if (intraday != nullptr) {
        if (const std::optional<SeriesRow> row = intraday->AtOrBefore(now)) {
            quote.traded = true;
            quote.time = row->time;
            quote.last = ticks ? row->values[0] : row->values[3];
            quote.volume = static_cast<int64_t>(ticks ? row->values[1] : row->values[4]);
            ExtendDayRange(*intraday, ticks, DayOf(row->time), now);
            quote.high = m_dayRange.high;
            quote.low = m_dayRange.low;
            quote.totalVolume = m_dayRange.volume;
        }
    }
    const SeriesFile* days = Days();
    if (days == nullptr) return quote;
    if (!quote.traded) {
        // No intraday file: the newest day stands for the latest trade.
        const std::optional<SeriesRow> day = days->AtOrBefore(now);
        if (!day) return quote;
        quote.traded = true;
        quote.time = day->time;
        quote.last = day->values[3];
        quote.high = day->values[1];
        quote.low = day->values[2];
        quote.totalVolume = static_cast<int64_t>(day->values[4]);
    }
    if (const std::optional<SeriesRow> before =
            days->AtOrBefore(DayOf(quote.time) * kSecondsPerDay - 1)) {
        quote.previousClose = before->values[3];
    }
    return quote;
}

}  // namespace qvnreplay
