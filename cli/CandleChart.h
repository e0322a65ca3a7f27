// A candlestick chart drawn with Unicode block characters: one column a bar, the newest at
// the right, as many as the width holds, with the price scale at the left and a mark under
// the first bar of every session so that breaks and short days show.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <qvnrt/driver.h>

namespace qvnrt::cli {

struct ChartStyle {
    int width = 80;     // columns of the whole chart
    int height = 16;    // rows of candles
    bool colour = false;
    uint8_t zone = 0;   // for the times under the axis
};

// The lines of the chart, without line ends. Bars with missing numbers (the heartbeat's
// place holders) leave their column empty.
std::vector<std::string> DrawCandles(const std::map<uint32_t, RTINTRADAY_PRICEREC>& bars,
                                     const ChartStyle& style);

}  // namespace qvnrt::cli
