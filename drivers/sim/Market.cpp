#include "Market.h"

#include <algorithm>
#include <cmath>

#include "CivilDate.h"
#include "Random.h"

namespace qvnsim {

namespace {

// Stream tags: each kind of random value has its own.
enum Stream : uint64_t {
    kWalkStream = 1,
    kGapStream,
    kMinuteStream,
    kTradeStream,
    kQuoteStream,
    kInterestStream,
    kDailyStream,
};

constexpr size_t kTapeCapacity = 192;
constexpr size_t kDailyCacheLimit = 60000;
constexpr int64_t kWalkReach = 40000;  // days either side of the anchor
constexpr double kRiskFreeRate = 0.04;
constexpr int kQuoteSeconds = 15;  // bid and ask move on this grid

double NormalCdf(double x) {
    return 0.5 * std::erfc(-x / std::sqrt(2.0));
}

double BlackScholes(bool call, double spot, double strike, double years, double vol) {
    if (years <= 0 || vol <= 0 || spot <= 0) {
        return std::max(0.0, call ? spot - strike : strike - spot);
    }
    const double root = vol * std::sqrt(years);
    const double d1 = (std::log(spot / strike) + (kRiskFreeRate + vol * vol / 2) * years) / root;
    const double d2 = d1 - root;
    const double discount = std::exp(-kRiskFreeRate * years);
    return call ? spot * NormalCdf(d1) - strike * discount * NormalCdf(d2)
                : strike * discount * NormalCdf(-d2) - spot * NormalCdf(-d1);
}

std::vector<int64_t> MinutesOf(const std::vector<Span>& spans) {
    std::vector<int64_t> minutes;
    for (const Span& span : spans) {
        for (int64_t t = span.start; t < span.end; t += 60) minutes.push_back(t);
    }
    return minutes;
}

}  // namespace

Market::Market(const Universe& universe, uint64_t seed, int64_t anchorDay)
    : m_universe(universe), m_seed(seed), m_anchorDay(anchorDay) {}

float Market::RoundToTick(const Security& security, double price) const {
    const double tick = security.tickSize;
    return static_cast<float>(std::max(tick, std::round(price / tick) * tick));
}

// The move of the log close from the day before to `day`; weekends move less.
double Market::WalkStep(const Security& security, int64_t day) const {
    const double scale = Weekday(day) >= 6 ? 0.35 : 1.0;
    return security.dailyVol * scale * Normal(Hash(m_seed, security.key, kWalkStream, day));
}

double Market::LogClose(const Security& security, int64_t day) {
    Walk& walk = m_walks[security.key];
    if (walk.forward.empty()) walk.forward.push_back(std::log(security.basePrice));
    day = std::clamp(day, m_anchorDay - kWalkReach, m_anchorDay + kWalkReach);
    if (day >= m_anchorDay) {
        const size_t index = static_cast<size_t>(day - m_anchorDay);
        while (walk.forward.size() <= index) {
            const int64_t next = m_anchorDay + static_cast<int64_t>(walk.forward.size());
            walk.forward.push_back(walk.forward.back() + WalkStep(security, next));
        }
        return walk.forward[index];
    }
    const size_t index = static_cast<size_t>(m_anchorDay - 1 - day);
    while (walk.backward.size() <= index) {
        const int64_t later = m_anchorDay - static_cast<int64_t>(walk.backward.size());
        const double laterValue = walk.backward.empty() ? walk.forward[0] : walk.backward.back();
        walk.backward.push_back(laterValue - WalkStep(security, later));
    }
    return walk.backward[index];
}

double Market::OptionPrice(const Security& option, double underlying, int64_t when) const {
    // Made on each call: the calendar setting may change when the simulation is reconfigured.
    const ZoneClock newYork(18);
    const int64_t expiry = newYork.LocalToUtc(option.expiryDay * kSecondsPerDay + 16 * 3600);
    const double years = static_cast<double>(expiry - when) / (365.0 * kSecondsPerDay);
    return std::max(0.01, BlackScholes(option.optionKind == 'C', underlying, option.strike, years,
                                       option.impliedVol));
}

// The level a day opens from: the close before it, and a small gap.
double Market::OpenLog(const Security& security, int64_t day) {
    const double gap = 0.25 * security.dailyVol *
                       Normal(Hash(m_seed, security.key, kGapStream, static_cast<uint64_t>(day)));
    return LogClose(security, day - 1) + gap;
}

// Log prices at the end of each minute of the day; `openLog` gets the level it starts from.
std::vector<double> Market::MinutePath(const Security& security, int64_t day,
                                       const std::vector<int64_t>& minutes, double& openLog) {
    const size_t n = minutes.size();
    std::vector<double> path(n);
    if (security.underlying >= 0) {
        const Security& base = m_universe.Securities()[static_cast<size_t>(security.underlying)];
        double baseOpen = 0;
        const std::vector<double> basePath = MinutePath(base, day, minutes, baseOpen);
        openLog = std::log(OptionPrice(security, std::exp(baseOpen), minutes.front()));
        for (size_t k = 0; k < n; ++k) {
            path[k] = std::log(OptionPrice(security, std::exp(basePath[k]), minutes[k] + 60));
        }
        return path;
    }
    openLog = OpenLog(security, day);
    const double closeLog = LogClose(security, day);
    const double minuteVol = security.dailyVol * 0.8 / std::sqrt(static_cast<double>(n));
    std::vector<double> walk(n + 1, 0.0);
    for (size_t k = 0; k < n; ++k) {
        walk[k + 1] =
            walk[k] + minuteVol * Normal(Hash(m_seed, security.key, kMinuteStream, day, k));
    }
    for (size_t k = 0; k < n; ++k) {
        const double share = static_cast<double>(k + 1) / static_cast<double>(n);
        path[k] = openLog + share * (closeLog - openLog) + walk[k + 1] - share * walk[n];
    }
    return path;
}

DayTape Market::BuildTape(const Security& security, int64_t day) {
    DayTape tape;
    tape.day = day;
    const std::vector<int64_t> minutes = MinutesOf(m_universe.CalendarOf(security).Sessions(day));
    if (minutes.empty() || !HasTrades(day)) return tape;
    double openLog = 0;
    const std::vector<double> path = MinutePath(security, day, minutes, openLog);
    tape.openReference = RoundToTick(security, std::exp(openLog));
    const bool isIndex = security.volumeUnit == 0;
    const bool isOption = security.underlying >= 0;
    const double noise =
        isOption ? 0.0 : 0.3 * security.dailyVol / std::sqrt(static_cast<double>(minutes.size()));
    tape.trades.reserve(minutes.size() * static_cast<size_t>(security.maxTicksPerMinute));
    for (size_t k = 0; k < minutes.size(); ++k) {
        const uint64_t h = Hash(m_seed, security.key, kTradeStream, day, k);
        if (Uniform(h) * 100.0 < security.quietPercent) continue;
        const int count = 1 + static_cast<int>((h >> 20) % security.maxTicksPerMinute);
        // Distinct seconds of the minute, in order; an index is fixed every 15 seconds.
        int seconds[60];
        int found = 0;
        if (isIndex) {
            for (int j = 0; j < count; ++j) seconds[found++] = j * 15;
        } else {
            bool taken[60] = {};
            for (int attempt = 0; found < count && attempt < 4 * count; ++attempt) {
                const int s = static_cast<int>(Mix64(h + static_cast<uint64_t>(attempt)) % 60);
                if (taken[s]) continue;
                taken[s] = true;
                seconds[found++] = s;
            }
            std::sort(seconds, seconds + found);
        }
        const double from = k == 0 ? openLog : path[k - 1];
        for (int j = 0; j < found; ++j) {
            const double share = static_cast<double>(j + 1) / found;
            const double jitter = j + 1 == found ? 0.0 : noise * Normal(Mix64(h ^ (0x100u + j)));
            const double price = std::exp(from + share * (path[k] - from) + jitter);
            const int32_t volume =
                isIndex
                    ? 0
                    : security.volumeUnit * static_cast<int32_t>(1 + Mix64(h ^ (0x200u + j)) % 20);
            tape.trades.push_back({minutes[k] + seconds[j], RoundToTick(security, price), volume});
        }
    }
    return tape;
}

std::shared_ptr<const DayTape> Market::Tape(const Security& security, int64_t day) {
    const std::pair<int, int64_t> key{m_universe.IndexOf(security), day};
    for (auto it = m_tapes.begin(); it != m_tapes.end(); ++it) {
        if (it->first == key) {
            m_tapes.splice(m_tapes.end(), m_tapes, it);
            return m_tapes.back().second;
        }
    }
    auto tape = std::make_shared<const DayTape>(BuildTape(security, day));
    m_tapes.emplace_back(key, tape);
    if (m_tapes.size() > kTapeCapacity) m_tapes.pop_front();
    return tape;
}

DailyBar Market::DailyUntil(const Security& security, int64_t day, int64_t until) {
    DailyBar bar;
    bar.day = day;
    const std::shared_ptr<const DayTape> tape = Tape(security, day);
    for (const Trade& trade : tape->trades) {
        if (trade.time > until) break;
        if (!bar.traded) {
            bar.traded = true;
            bar.open = bar.high = bar.low = trade.price;
        }
        bar.high = std::max(bar.high, trade.price);
        bar.low = std::min(bar.low, trade.price);
        bar.close = trade.price;
        bar.volume += trade.volume;
        bar.trades += 1;
        bar.lastTime = trade.time;
        bar.turnover += static_cast<double>(trade.price) * trade.volume;
    }
    return bar;
}

DailyBar Market::Daily(const Security& security, int64_t day) {
    const std::pair<int, int64_t> key{m_universe.IndexOf(security), day};
    auto found = m_dailies.find(key);
    if (found != m_dailies.end()) return found->second;
    if (m_dailies.size() >= kDailyCacheLimit) m_dailies.clear();
    const DailyBar bar = HasTrades(day)
                             ? DailyUntil(security, day, std::numeric_limits<int64_t>::max())
                             : DailyFromWalk(security, day);
    m_dailies.emplace(key, bar);
    return bar;
}

// A day before the trades begin: open and close from the walk, a range and a volume of
// the same size as the trades would give.
DailyBar Market::DailyFromWalk(const Security& security, int64_t day) {
    DailyBar bar;
    bar.day = day;
    const std::vector<Span> spans = m_universe.CalendarOf(security).Sessions(day);
    if (spans.empty()) return bar;
    double open = 0;
    double close = 0;
    if (security.underlying >= 0) {
        const Security& base = m_universe.Securities()[static_cast<size_t>(security.underlying)];
        open = OptionPrice(security, std::exp(OpenLog(base, day)), spans.front().start);
        close = OptionPrice(security, std::exp(LogClose(base, day)), spans.back().end);
    } else {
        open = std::exp(OpenLog(security, day));
        close = std::exp(LogClose(security, day));
    }
    const uint64_t h = Hash(m_seed, security.key, kDailyStream, static_cast<uint64_t>(day));
    const double range = security.dailyVol * (0.3 + 0.7 * Uniform(h));
    int64_t minutes = 0;
    for (const Span& span : spans) minutes += (span.end - span.start) / 60;
    const double trades = static_cast<double>(minutes) * (1 + security.maxTicksPerMinute) / 2.0 *
                          (100 - security.quietPercent) / 100.0 * (0.8 + 0.4 * Uniform(Mix64(h)));
    bar.traded = true;
    bar.open = RoundToTick(security, open);
    bar.close = RoundToTick(security, close);
    bar.high = RoundToTick(security, std::max(open, close) * std::exp(range * Uniform(h ^ 1)));
    bar.low = RoundToTick(security, std::min(open, close) * std::exp(-range * Uniform(h ^ 2)));
    bar.trades = static_cast<int32_t>(trades);
    bar.volume = static_cast<int64_t>(trades * 10.5 * security.volumeUnit);
    bar.lastTime = spans.back().end - 1 - static_cast<int64_t>(h % 30);
    bar.turnover = static_cast<double>(bar.volume) * (bar.open + bar.close) / 2.0;
    return bar;
}

void Market::YearRange(const Security& security, int64_t day, float& high, float& low) {
    high = low = 0;
    if (security.underlying >= 0) return;  // an option has no year behind it
    const std::pair<int, int64_t> key{m_universe.IndexOf(security), day};
    auto found = m_yearRanges.find(key);
    if (found == m_yearRanges.end()) {
        if (m_yearRanges.size() >= kDailyCacheLimit) m_yearRanges.clear();
        double top = -1e300;
        double bottom = 1e300;
        for (int64_t d = day - 365; d < day; ++d) {
            const double value = LogClose(security, d);
            top = std::max(top, value);
            bottom = std::min(bottom, value);
        }
        // Closes only: widen by a typical intraday range.
        const float yearHigh = RoundToTick(security, std::exp(top + 0.4 * security.dailyVol));
        const float yearLow = RoundToTick(security, std::exp(bottom - 0.4 * security.dailyVol));
        found = m_yearRanges.emplace(key, std::make_pair(yearHigh, yearLow)).first;
    }
    high = found->second.first;
    low = found->second.second;
}

Snapshot Market::At(const Security& security, int64_t when) {
    const int index = m_universe.IndexOf(security);
    auto cached = m_snapshots.find(index);
    if (cached != m_snapshots.end() && cached->second.time == when) return cached->second;

    Snapshot snap;
    snap.time = when;
    const TradingCalendar& calendar = m_universe.CalendarOf(security);
    const std::optional<int64_t> day = calendar.CurrentDay(when);
    if (day) {
        snap.day = *day;
        for (const Span& span : calendar.Sessions(*day)) {
            if (when >= span.start && when < span.end) snap.session = span.session;
        }
        const std::optional<int64_t> previousDay = calendar.PreviousTradingDay(*day);
        const DailyBar previous = previousDay ? Daily(security, *previousDay) : DailyBar{};
        snap.prevClose = previous.close;
        snap.prevVolume = previous.volume;

        const std::shared_ptr<const DayTape> tape = Tape(security, *day);
        float before = previous.traded ? previous.close : tape->openReference;
        double turnover = 0;
        for (const Trade& trade : tape->trades) {
            if (trade.time > when) break;
            if (snap.trades == 0) snap.open = snap.high = snap.low = trade.price;
            snap.high = std::max(snap.high, trade.price);
            snap.low = std::min(snap.low, trade.price);
            snap.tickDirection = trade.price > before ? 1 : trade.price < before ? -1 : 0;
            before = trade.price;
            snap.last = trade.price;
            snap.lastSize = trade.volume;
            snap.lastTime = trade.time;
            snap.volume += trade.volume;
            snap.trades += 1;
            turnover += static_cast<double>(trade.price) * trade.volume;
        }
        if (snap.trades == 0) {
            snap.last = previous.traded ? previous.close : tape->openReference;
            snap.lastTime = previous.lastTime;
        }
        snap.vwap = snap.volume > 0 ? static_cast<float>(turnover / snap.volume) : snap.last;
        YearRange(security, *day, snap.yearHigh, snap.yearLow);
        if (snap.trades > 0 && snap.yearHigh != 0) {
            snap.yearHigh = std::max(snap.yearHigh, snap.high);
            snap.yearLow = std::min(snap.yearLow, snap.low);
        }
        const uint64_t interest = Hash(m_seed, security.key, kInterestStream, *day);
        if (security.assetType == kFuture) snap.openInterest = 100000 + interest % 400000;
        if (security.assetType == kOption) snap.openInterest = 100 + interest % 20000;
    }

    // Quotes move on their own grid while the market is open and stand still when it closes.
    const int64_t quoteEpoch =
        FloorDiv(snap.session >= 0 || snap.lastTime == 0 ? when : snap.lastTime, kQuoteSeconds);
    snap.quoteTime = snap.session >= 0 ? quoteEpoch * kQuoteSeconds : snap.lastTime;
    if (security.volumeUnit != 0 && snap.last > 0) {
        const uint64_t h = Hash(m_seed, security.key, kQuoteStream, quoteEpoch);
        const int spread = 1 + static_cast<int>(h % (security.underlying >= 0 ? 5 : 3));
        const int below = static_cast<int>((h >> 8) % (spread + 1));
        const double tick = security.tickSize;
        const double bid = std::max(tick, snap.last - below * tick);
        snap.bid = RoundToTick(security, bid);
        snap.ask = RoundToTick(security, bid + spread * tick);
        snap.bidSize = 1 + static_cast<int>((h >> 16) % 50);
        snap.askSize = 1 + static_cast<int>((h >> 24) % 50);
    }
    m_snapshots[index] = snap;
    return snap;
}

std::vector<Trade> Market::Trades(const Security& security, int64_t from, int64_t to) {
    std::vector<Trade> out;
    if (to < from) return out;
    const TradingCalendar& calendar = m_universe.CalendarOf(security);
    const ZoneClock& zone = calendar.Zone();
    const int64_t firstDay = DayOf(zone.UtcToLocal(from)) - 1;
    const int64_t lastDay = DayOf(zone.UtcToLocal(to)) + 2;
    for (int64_t day = firstDay; day <= lastDay; ++day) {
        const std::vector<Span> spans = calendar.Sessions(day);
        if (spans.empty() || spans.back().end <= from || spans.front().start > to) continue;
        const std::shared_ptr<const DayTape> tape = Tape(security, day);
        auto first = std::lower_bound(tape->trades.begin(), tape->trades.end(), from,
                                      [](const Trade& t, int64_t v) { return t.time < v; });
        for (auto it = first; it != tape->trades.end() && it->time <= to; ++it) out.push_back(*it);
    }
    return out;
}

std::vector<int64_t> Market::TradingDays(const Security& security, int64_t fromDay, int64_t until,
                                         size_t limit) {
    std::vector<int64_t> days;
    const TradingCalendar& calendar = m_universe.CalendarOf(security);
    std::optional<int64_t> day = calendar.CurrentDay(until);
    while (day && *day >= fromDay && days.size() < limit) {
        days.push_back(*day);
        day = calendar.PreviousTradingDay(*day);
    }
    return days;
}

}  // namespace qvnsim
