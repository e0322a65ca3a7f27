#include "ListRequest.h"

#include <algorithm>

#include "CivilDate.h"
#include "QuoteFields.h"
#include "Simulation.h"

namespace qvnsim {

ListRequest::ListRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                         SecurityCallback callback, std::vector<int> rows, std::string fields)
    : Request(sim, handle, user),
      m_callback(callback),
      m_rows(std::move(rows)),
      m_fields(std::move(fields)) {}

void ListRequest::MakeAnswer(Simulation& sim) {
    SendRows(sim, m_rows);
}

void ListRequest::SendRows(Simulation& sim, const std::vector<int>& rows) {
    const Universe& universe = sim.universe();
    std::string fields(1, static_cast<char>(RTFIELD_SYMBOL));
    for (const char c : m_fields) {
        if (c != RTFIELD_SYMBOL) fields.push_back(c);
    }
    const int count = static_cast<int>(rows.size());
    for (int row = 0; row < count; ++row) {
        const int status = count - row;
        const Security& security = universe.Securities()[static_cast<size_t>(rows[row])];
        const Snapshot snap = sim.market().At(security, sim.NowFor(security));
        const Exchange& exchange = universe.ExchangeOf(security);
        const int sessions = universe.CalendarOf(security).SessionsPerDay();
        for (const char c : fields) {
            const int field = static_cast<unsigned char>(c);
            if (!QuoteFields::Serves(field)) continue;
            FieldValue value = QuoteFields::Encode(field, security, exchange, sessions, snap);
            m_callback(Handle(), status, field, value.type, value.Data(), m_user);
            if (!Alive(sim)) return;
        }
        m_callback(Handle(), status, RTFIELD_END, 0, nullptr, m_user);
        if (!Alive(sim)) return;
    }
}

RankedListRequest::RankedListRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                                     SecurityCallback callback, int list, int assetType, int rows)
    : ListRequest(sim, handle, user, callback, {},
                  std::string{RTFIELD_NAME, RTFIELD_ASSET_TYPE, RTFIELD_LAST, RTFIELD_PREV_CLOSE,
                              RTFIELD_TOTAL_VOLUME, 55, 56}),
      m_list(list),
      m_assetType(assetType),
      m_rowCount(rows) {}

void RankedListRequest::MakeAnswer(Simulation& sim) {
    SendRows(sim, Rank(sim, m_list, m_assetType, m_rowCount));
}

void RankedListRequest::Step(Simulation& sim, int64_t from, int64_t to) {
    if (FloorDiv(from, 60) == FloorDiv(to, 60)) return;
    SendRows(sim, Rank(sim, m_list, m_assetType, m_rowCount));
}

std::vector<int> RankedListRequest::Rank(Simulation& sim, int list, int assetType, int rows) {
    if (list < 1 || list > 4) return {};
    struct Entry {
        int index;
        double score;
    };
    std::vector<Entry> entries;
    const Universe& universe = sim.universe();
    for (const Security& s : universe.Securities()) {
        if (!s.visible || s.assetType == kOption) continue;
        if (ClassBitOf(assetType) != 0 && s.assetType != assetType) continue;
        if (list >= 3 && s.volumeUnit == 0) continue;  // an index has no volume to rank by
        const Snapshot snap = sim.market().At(s, sim.NowFor(s));
        double score = 0;
        if (list <= 2) {
            score = snap.prevClose != 0 ? (snap.last - snap.prevClose) / snap.prevClose : 0.0;
            if (list == 2) score = -score;
        } else {
            score = list == 3 ? static_cast<double>(snap.volume) : snap.trades;
        }
        entries.push_back({universe.IndexOf(s), score});
    }
    // Stable, so that ties keep the universe's order.
    std::stable_sort(entries.begin(), entries.end(),
                     [](const Entry& a, const Entry& b) { return a.score > b.score; });
    std::vector<int> ranked;
    for (size_t i = 0; i < entries.size() && ranked.size() < static_cast<size_t>(rows); ++i) {
        ranked.push_back(entries[i].index);
    }
    return ranked;
}

}  // namespace qvnsim
