#include "cli/ListBoard.h"

#include <cstdio>

#include <qvnrt/CDoubleToFractRep.h>

namespace qvnrt::cli {
namespace {

constexpr char kHeader[] =
    "SYMBOL          LAST          CHANGE        BID           ASK           VOLUME      NAME";

std::string Price(ListRow& row, std::optional<double> value, bool signed_ = false) {
    if (!value) return "-";
    CDoubleToFractRep rep(&row);
    const std::string text = rep.ToString(*value);  // a shared buffer: copied at once
    return (signed_ && *value >= 0 ? "+" : "") + text;
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

std::vector<std::string> ListBoard::Lines() {
    std::vector<std::string> lines{kHeader};
    for (RTSec_Base* base : m_secArray) {
        auto* row = dynamic_cast<ListRow*>(base);
        if (!row) continue;
        std::string symbol = row->m_strSymbol.IsEmpty() ? "?" : row->m_strSymbol.str();
        const auto flags = row->Value(RTFIELD_BIT_FLAGS);
        if (flags && (static_cast<int>(*flags) & RTFLAG_DELAYED)) symbol += " (d)";
        const auto volume = row->Value(RTFIELD_TOTAL_VOLUME);
        char line[256];
        std::snprintf(line, sizeof(line), "%-15s %-13s %-13s %-13s %-13s %-11s %s",
                      symbol.c_str(), Price(*row, row->Value(RTFIELD_LAST)).c_str(),
                      Price(*row, row->Change(), true).c_str(),
                      Price(*row, row->Value(RTFIELD_BID)).c_str(),
                      Price(*row, row->Value(RTFIELD_ASK)).c_str(),
                      volume ? std::to_string(static_cast<long long>(*volume)).c_str() : "-",
                      row->m_strName.GetString());
        lines.push_back(line);
    }
    return lines;
}

CString BoardFields() {
    const unsigned char fields[] = {RTFIELD_SYMBOL,   RTFIELD_NAME,       RTFIELD_ASSET_TYPE,
                                    RTFIELD_LAST,     RTFIELD_PREV_CLOSE, RTFIELD_BIT_FLAGS,
                                    RTFIELD_EXCHANGE, RTFIELD_BID,        RTFIELD_ASK,
                                    RTFIELD_TOTAL_VOLUME, 58, 0};
    return CString(reinterpret_cast<const char*>(fields));
}

}  // namespace qvnrt::cli
