// A security's daily history as the program shows it: a table, and a candlestick chart.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <qvnrt/RTSecurity.h>

#include "cli/Table.h"

namespace qvnrt::cli {

// The request record as the simulation driver reads it behind EODDATA; the layout is an
// agreement between an application and its driver, which the library never reads.
struct EodRequestRecord {
    uint32_t start = 0;      // Date value: no day before; 0 for no bound
    uint32_t end = 0;        // Date value: no day after; 0 for up to today
    int32_t maxRecords = 0;  // the newest this many days; 0: the driver's default
    uint32_t reserved = 0;
};

// Collects the days it is given, by date: a later record of a day replaces an earlier
// one, as the library's held-back record may be.
class HistorySecurity : public RTSecurity {
public:
    bool ReqEODCallback(unsigned long request, int count, int flags,
                        RTPRICEREC* records) override;

    std::map<uint32_t, RTPRICEREC> days;
    bool ended = false;  // the history is complete
};

// A day as a bar of the candlestick chart, under its record's date: `first` is the open,
// `second` the high and `third` the low, as the simulation driver fills them.
RTINTRADAY_PRICEREC BarOf(const RTPRICEREC& record);

// "YYYY-MM-DD" of a record's date.
std::string DayText(uint32_t date);

// DATE OPEN HIGH LOW CLOSE VOLUME, in the order of HistoryRows().
const std::vector<Column>& HistoryColumns();
// One row per day, oldest first, prices in the security's style.
std::vector<Row> HistoryRows(HistorySecurity& security);

}  // namespace qvnrt::cli
