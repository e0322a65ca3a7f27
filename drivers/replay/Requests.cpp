#include "Requests.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "CivilDate.h"
#include "Replay.h"

namespace qvnreplay {

namespace {

constexpr int kDefaultDays = 250;

int32_t Clamp32(int64_t value) {
    return static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                    std::numeric_limits<int32_t>::max()));
}

TICKREC TickOf(const SeriesRow& row) {
    TICKREC tick{};
    tick.time = static_cast<uint32_t>(row.time);
    tick.volume = Clamp32(static_cast<int64_t>(row.values[1]));
    tick.price = static_cast<float>(row.values[0]);
    tick.flag = static_cast<uint8_t>(row.values[2]);
    return tick;
}

RTINTRADAY_PRICEREC BarOf(const SeriesRow& row) {
    return {static_cast<uint32_t>(row.time), Clamp32(static_cast<int64_t>(row.values[4])),
            static_cast<float>(row.values[0]), static_cast<float>(row.values[3]),
            static_cast<float>(row.values[1]), static_cast<float>(row.values[2])};
}

RTPRICEREC DayOf(const SeriesRow& row) {
    RTPRICEREC record{};
    record.date = ToDateValue(row.time);
    record.first = static_cast<float>(row.values[0]);
    record.close = static_cast<float>(row.values[3]);
    record.second = static_cast<float>(row.values[1]);
    record.third = static_cast<float>(row.values[2]);
    record.value = Clamp32(static_cast<int64_t>(row.values[4]));
    return record;
}

}  // namespace

bool Request::Alive(const Replay& replay) const {
    return !m_closed && replay.Generation() == m_generation;
}

// ---- Quotes ---------------------------------------------------------------------------------

void QuoteRequest::SetFields(std::string fields) {
    m_fields = std::move(fields);
    m_sent.clear();
}

void QuoteRequest::Answer(Replay& replay) {
    if (m_data == nullptr) {
        m_callback(m_handle, -1, RTFIELD_END, 0, nullptr, m_user);
        return;
    }
    Send(replay, true);
}

void QuoteRequest::Advance(Replay& replay, int64_t /*from*/, int64_t /*to*/) {
    Send(replay, false);
}

bool QuoteRequest::Encode(int field, const QuoteState& quote, Value& value) const {
    const ListedSecurity* listed = m_data->Listed();
    auto text = [&value](const std::string& t) { value.type = RTDATA_TEXT, value.text = t; };
    auto whole = [&value](int64_t v) { value.type = RTDATA_INT, value.integer = Clamp32(v); };
    auto single = [&value](double v) { value.type = RTDATA_FLOAT, value.single = static_cast<float>(v); };
    switch (field) {
        case RTFIELD_SYMBOL:
            text(m_data->Symbol());
            return true;
        case RTFIELD_NAME:
            text(listed != nullptr ? listed->name : m_data->Symbol());
            return true;
        case RTFIELD_ASSET_TYPE:
            whole(listed != nullptr ? listed->assetType : 1);
            return true;
        case RTFIELD_EXCHANGE:
            whole(listed != nullptr ? listed->exchange : 0);
            return true;
        case RTFIELD_DISPLAY_STYLE:
            whole(listed != nullptr ? listed->priceStyle : 0);
            return true;
        default:
            break;
    }
    if (!quote.traded) return false;
    switch (field) {
        case RTFIELD_LAST:
            value.type = RTDATA_DOUBLE;
            value.real = quote.last;
            return true;
        case RTFIELD_PREV_CLOSE:
            if (!quote.previousClose) return false;
            single(*quote.previousClose);
            return true;
        case RTFIELD_HIGH:
            single(quote.high);
            return true;
        case RTFIELD_LOW:
            single(quote.low);
            return true;
        case RTFIELD_TOTAL_VOLUME:
            whole(quote.totalVolume);
            return true;
        case RTFIELD_VOLUME:
            whole(quote.volume);
            return true;
        case RTFIELD_QUOTE_TIME:
            // A Date value keeps all 32 bits; it travels as the bits of an int.
            value.type = RTDATA_INT;
            value.integer = static_cast<int32_t>(ToDateValue(quote.time));
            return true;
        default:
            return false;  // a field the data directory does not hold
    }
}

void QuoteRequest::Send(Replay& replay, bool everything) {
    const QuoteState quote = m_data->QuoteAt(replay.Now());
    bool sent = false;
    const std::string fields = m_fields;  // a callback may change this request's fields
    for (const char c : fields) {
        const int field = static_cast<unsigned char>(c);
        Value value;
        if (!Encode(field, quote, value)) continue;
        const auto previous = m_sent.find(field);
        if (!everything && previous != m_sent.end() && previous->second == value) continue;
        m_sent[field] = value;
        void* data = value.type == RTDATA_TEXT     ? static_cast<void*>(value.text.data())
                     : value.type == RTDATA_DOUBLE ? static_cast<void*>(&value.real)
                     : value.type == RTDATA_FLOAT  ? static_cast<void*>(&value.single)
                                                   : static_cast<void*>(&value.integer);
        m_callback(m_handle, 0, field, value.type, data, m_user);
        sent = true;
        if (!Alive(replay)) return;
    }
    if (sent || everything) m_callback(m_handle, 0, RTFIELD_END, 0, nullptr, m_user);
}

// ---- Ticks and one-minute bars --------------------------------------------------------------

HistoryRequest::HistoryRequest(uint32_t handle, unsigned long user, SymbolData* data,
                               TickCallback callback, const TICKDATA& request)
    : Request(handle, user, data),
      m_callback(callback),
      m_bars(request.weight < 0),
      m_start(FromDateValue(request.start)),
      m_end(request.end != 0 ? FromDateValue(request.end) : std::numeric_limits<int64_t>::max()),
      m_live(request.live != 0 && request.end == 0) {}

const SeriesFile* HistoryRequest::File() const {
    return m_bars ? m_data->Minutes() : m_data->Ticks();
}

bool HistoryRequest::Send(Replay& replay, int64_t first, int64_t last, bool live) {
    const SeriesFile* file = File();
    if (file == nullptr) return true;  // no file of this kind: no data
    const size_t packet = static_cast<size_t>(replay.Config().packetRecords);
    std::vector<TICKREC> ticks;
    std::vector<RTINTRADAY_PRICEREC> bars;
    bool alive = true;
    auto flush = [&]() {
        const size_t count = m_bars ? bars.size() : ticks.size();
        if (count == 0) return true;
        void* data = m_bars ? static_cast<void*>(bars.data()) : static_cast<void*>(ticks.data());
        m_callback(m_handle, static_cast<int>(count), live ? 1 : 0,
                   m_bars ? RTREC_INTRADAY_PRICEREC : RTREC_TICKREC, data, m_user);
        bars.clear();
        ticks.clear();
        alive = Alive(replay);
        return alive;
    };
    auto add = [&](const SeriesRow& row) {
        if (m_bars)
            bars.push_back(BarOf(row));
        else
            ticks.push_back(TickOf(row));
        return (m_bars ? bars.size() : ticks.size()) < packet || flush();
    };
    // History goes newest first, live data oldest first, as the contract wants them.
    if (live)
        file->Forward(first, last, add);
    else
        file->Backward(first, last, add);
    return alive && flush();
}

void HistoryRequest::Answer(Replay& replay) {
    if (m_data == nullptr) {
        m_callback(m_handle, -1, 0, RTREC_NONE, nullptr, m_user);
        return;
    }
    if (Send(replay, m_start, std::min(m_end, replay.Now()), false)) {
        m_callback(m_handle, 0, 0, RTREC_NONE, nullptr, m_user);
    }
}

void HistoryRequest::Advance(Replay& replay, int64_t from, int64_t to) {
    Send(replay, from + 1, to, true);
}

// ---- Days -----------------------------------------------------------------------------------

void EodRequest::Answer(Replay& replay) {
    if (m_data == nullptr) {
        m_callback(m_handle, -1, 0, nullptr, m_user);
        return;
    }
    const SeriesFile* days = m_data->Days();
    const int64_t first = m_start != 0 ? qvnreplay::DayOf(FromDateValue(m_start)) * kSecondsPerDay
                                       : std::numeric_limits<int64_t>::min();
    int64_t last = replay.Now();
    if (m_end != 0) {
        last = std::min(last, (qvnreplay::DayOf(FromDateValue(m_end)) + 1) * kSecondsPerDay - 1);
    }
    const size_t most = static_cast<size_t>(m_maxRecords > 0 ? m_maxRecords : kDefaultDays);
    const size_t batch = static_cast<size_t>(replay.Config().packetRecords);
    // Batches go newest first, each holding its days oldest first.
    std::vector<RTPRICEREC> records;
    size_t taken = 0;
    bool alive = true;
    auto flush = [&]() {
        if (records.empty()) return true;
        std::reverse(records.begin(), records.end());
        m_callback(m_handle, static_cast<int>(records.size()), 1, records.data(), m_user);
        records.clear();
        alive = Alive(replay);
        return alive;
    };
    if (days != nullptr) {
        days->Backward(first, last, [&](const SeriesRow& row) {
            records.push_back(DayOf(row));
            if (++taken >= most) return false;
            return records.size() < batch || flush();
        });
    }
    if (!alive || !flush()) return;
    m_callback(m_handle, 0, 1, nullptr, m_user);
}

// ---- Session rules --------------------------------------------------------------------------

void SessionRequest::Answer(Replay& /*replay*/) {
    const ListedSecurity* listed = m_data != nullptr ? m_data->Listed() : nullptr;
    if (listed == nullptr) {
        m_callback(m_handle, -1, nullptr, nullptr, m_user);
        return;
    }
    // Copies: the callee gets writable records that live through the call.
    SESSION_INFO rules = listed->rules;
    std::vector<uint8_t> holidays = listed->holidays;
    m_callback(m_handle, 0, &rules, holidays.data(), m_user);
}

}  // namespace qvnreplay
