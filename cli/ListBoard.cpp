#include "cli/ListBoard.h"

#include <qvnrt/CDoubleToFractRep.h>

namespace qvnrt::cli {
namespace {

enum ColumnIndex { kSymbol, kLast, kChange, kBid, kAsk, kVolume, kName };

// A list's rows bring their values to the object, not to the cache: prices are written
// from the row's own values, in the security's style.
std::optional<std::string> Price(ListRow& row, std::optional<double> value, bool withSign = false) {
    if (!value) return std::nullopt;
    CDoubleToFractRep rep(&row);
    std::string text = rep.ToString(*value);  // a shared buffer: copied at once
    return (withSign && *value >= 0 ? "+" : "") + text;
}

int Sign(std::optional<double> value) {
    return !value || *value == 0 ? 0 : (*value > 0 ? 1 : -1);
}

}  // namespace

int ListRow::ReqSecCallback(unsigned long request, int status, int field, int dataType,
                            void* data) {
    if (status >= 0 && data) {
        switch (dataType) {
            case RTDATA_DOUBLE: m_values[field] = *static_cast<const double*>(data); break;
            case RTDATA_FLOAT: m_values[field] = *static_cast<const float*>(data); break;
            case RTDATA_INT: m_values[field] = *static_cast<const int32_t*>(data); break;
            default: break;
        }
    }
    return RTSecurity::ReqSecCallback(request, status, field, dataType, data);
}

std::optional<double> ListRow::Value(int field) const {
    const auto found = m_values.find(field);
    if (found == m_values.end()) return std::nullopt;
    return found->second;
}

std::optional<double> ListRow::Change() const {
    const auto last = Value(RTFIELD_LAST), close = Value(RTFIELD_PREV_CLOSE);
    if (!last || !close || *close == 0) return std::nullopt;
    return *last - *close;
}

std::optional<double> ListRow::SortValue(int key) const {
    return key == kSortChange ? Change() : Value(key);
}

int ListRow::compareTo(RTSec_Base* other, int key) {
    auto* row = dynamic_cast<ListRow*>(other);
    if (!row || key == kSortNone) return 0;
    const auto mine = SortValue(key), theirs = row->SortValue(key);
    if (mine && theirs) return *mine > *theirs ? -1 : (*mine < *theirs ? 1 : 0);
    return mine ? -1 : (theirs ? 1 : 0);
}

void ListBoard::OnSecListStart(int count) {
    if (m_oneRoundShown) Clear();
    RTSecList::OnSecListStart(count);
}

const std::vector<Column>& ListBoard::Columns() {
    // A narrow terminal gives up the name first, then bid and ask, the volume, the change.
    static const std::vector<Column> columns = {
        {"SYMBOL", 6, false, 0, false}, {"LAST", 7, true, 0, false},
        {"CHANGE", 7, true, 2, false},  {"BID", 7, true, 4, false},
        {"ASK", 7, true, 4, false},     {"VOLUME", 8, true, 3, false},
        {"NAME", 12, false, 5, true},
    };
    return columns;
}

std::vector<Row> ListBoard::Rows() {
    std::vector<Row> rows;
    for (RTSec_Base* base : m_secArray) {
        auto* security = dynamic_cast<ListRow*>(base);
        if (!security || security->m_strSymbol.IsEmpty()) continue;
        Row row(Columns().size());
        std::string symbol = security->m_strSymbol.str();
        const auto flags = security->Value(RTFIELD_BIT_FLAGS);
        if (flags && (static_cast<int>(*flags) & RTFLAG_DELAYED)) symbol += " (d)";
        row[kSymbol].text = symbol;
        const auto change = security->Change();
        row[kLast] = {Price(*security, security->Value(RTFIELD_LAST)), Sign(change)};
        row[kChange] = {Price(*security, change, true), Sign(change)};
        row[kBid].text = Price(*security, security->Value(RTFIELD_BID));
        row[kAsk].text = Price(*security, security->Value(RTFIELD_ASK));
        if (const auto volume = security->Value(RTFIELD_TOTAL_VOLUME)) {
            row[kVolume].text = std::to_string(static_cast<long long>(*volume));
        }
        if (!security->m_strName.IsEmpty()) row[kName].text = security->m_strName.str();
        rows.push_back(std::move(row));
    }
    return rows;
}

CString BoardFields() {
    const unsigned char fields[] = {RTFIELD_SYMBOL,   RTFIELD_NAME,       RTFIELD_ASSET_TYPE,
                                    RTFIELD_LAST,     RTFIELD_PREV_CLOSE, RTFIELD_BIT_FLAGS,
                                    RTFIELD_EXCHANGE, RTFIELD_BID,        RTFIELD_ASK,
                                    RTFIELD_TOTAL_VOLUME, 58, 0};
    return CString(reinterpret_cast<const char*>(fields));
}

}  // namespace qvnrt::cli
