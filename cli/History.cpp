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

Candle CandleOf(const RTPRICEREC& record) {
    return Candle{record.first, record.second, record.third, record.close, DayText(record.date)};
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
        const Candle candle = CandleOf(record);
        Cell volume;
        if (record.value != QVN_MISSING_INT) volume.text = std::to_string(record.value);
        const int move = candle.close > candle.open ? 1 : (candle.close < candle.open ? -1 : 0);
        Cell close = price(candle.close);
        close.move = move;
        rows.push_back({Cell{candle.label}, price(candle.open), price(candle.high),
                        price(candle.low), close, volume});
    }
    return rows;
}

}  // namespace qvnrt::cli
