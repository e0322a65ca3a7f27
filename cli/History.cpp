#include "cli/History.h"

#include <cstdio>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/Date.h>

namespace qvnrt::cli {

bool HistorySecurity::ReqEODCallback(unsigned long, int count, int flags,
                                     RTPRICEREC* records) {
    for (int i = 0; records && i < count; ++i) days[records[i].date] = records[i];
    if (count == 0 && flags == -1) ended = true;
    return true;
}

RTINTRADAY_PRICEREC BarOf(const RTPRICEREC& record) {
    return RTINTRADAY_PRICEREC{record.date, record.value, record.first, record.close,
                               record.second, record.third};
}

std::string DayText(uint32_t date) {
    uint32_t month, day, year, hour, minute, second;
    Date(date).getMDYHMS(month, day, year, hour, minute, second, ZONE_GMT);
    char text[16];
    std::snprintf(text, sizeof(text), "%04u-%02u-%02u", year, month, day);
    return text;
}

const std::vector<Column>& HistoryColumns() {
    static const std::vector<Column> columns = {
        {"DATE", 10, false, 0, false}, {"OPEN", 7, true, 2, false},
        {"HIGH", 7, true, 3, false},   {"LOW", 7, true, 3, false},
        {"CLOSE", 7, true, 0, false},  {"VOLUME", 8, true, 1, false},
    };
    return columns;
}

std::vector<Row> HistoryRows(HistorySecurity& security) {
    std::vector<Row> rows;
    CDoubleToFractRep rep(&security);
    // ToString answers in a shared buffer: each price is copied before the next.
    const auto price = [&rep](double value) { return Cell{std::string(rep.ToString(value))}; };
    for (const auto& [date, record] : security.days) {
        const RTINTRADAY_PRICEREC bar = BarOf(record);
        Cell volume;
        if (record.value != QVN_MISSING_INT) volume.text = std::to_string(record.value);
        Cell close = price(bar.close);
        close.move = bar.close > bar.open ? 1 : (bar.close < bar.open ? -1 : 0);
        rows.push_back({Cell{DayText(date)}, price(bar.open), price(bar.high), price(bar.low),
                        close, volume});
    }
    return rows;
}

}  // namespace qvnrt::cli
