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

std::vector<std::string> HistoryLines(HistorySecurity& security) {
    std::vector<std::string> lines{
        "DATE        OPEN          HIGH          LOW           CLOSE         VOLUME"};
    for (const auto& [date, record] : security.days) {
        CDoubleToFractRep rep(&security);
        const Candle candle = CandleOf(record);
        // ToString answers in a shared buffer: each price is copied before the next.
        const std::string open = rep.ToString(candle.open), high = rep.ToString(candle.high),
                          low = rep.ToString(candle.low), close = rep.ToString(candle.close);
        const std::string volume =
            record.value == QVN_MISSING_INT ? "-" : std::to_string(record.value);
        char line[160];
        std::snprintf(line, sizeof(line), "%-11s %-13s %-13s %-13s %-13s %s", candle.label.c_str(),
                      open.c_str(), high.c_str(), low.c_str(), close.c_str(), volume.c_str());
        lines.push_back(line);
    }
    return lines;
}

}  // namespace qvnrt::cli
