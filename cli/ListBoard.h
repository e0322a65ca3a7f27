// A board of securities that a list fills: a service list, an option chain or a ranked
// list. Each row keeps what it is sent, from the list's own answer or its quote stream.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <qvnrt/RTSecList.h>
#include <qvnrt/RTSecurity.h>

#include "cli/Table.h"

namespace qvnrt::cli {

// The columns a board sorts by; larger values first.
enum SortKey : int {
    kSortNone = 0,
    kSortLast = RTFIELD_LAST,
    kSortVolume = RTFIELD_TOTAL_VOLUME,
    kSortChange = 1000,  // last less previous close; no field of its own
};

class ListRow : public RTSecurity {
public:
    int ReqSecCallback(unsigned long request, int status, int field, int dataType,
                       void* data) override;
    // Orders by a SortKey, larger first; rows without the value go last.
    int compareTo(RTSec_Base* other, int key) override;

    // The latest value of a numeric field, from the list's answer or a quote.
    std::optional<double> Value(int field) const;
    std::optional<double> Change() const;
    std::optional<double> SortValue(int key) const;

private:
    std::map<int, double> m_values;  // the latest number of each field
};

class ListBoard : public RTSecList {
public:
    // `oneRoundShown`: each round of a ranked list replaces the rows of the last.
    explicit ListBoard(bool oneRoundShown) : m_oneRoundShown(oneRoundShown) {}

    void OnSecListStart(int count) override;
    void OnSecListStop(void*) override { ++rounds; }
    RTSec_Base* OnSecCreateNew() override { return new ListRow; }

    // SYMBOL LAST CHANGE BID ASK VOLUME NAME, in the order of Rows().
    static const std::vector<Column>& Columns();
    // One row per security, in the list's order.
    std::vector<Row> Rows();

    int rounds = 0;  // lists completed

private:
    bool m_oneRoundShown;
};

// The fields a board asks for: symbol, name, type, prices, volume and display style.
CString BoardFields();

}  // namespace qvnrt::cli
