// A candlestick chart drawn with text: one column per bar, a price axis on the left and
// the first and last bar's labels below. Daily history and intraday bars both use it.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace qvnrt::cli {

struct Candle {
    double open = 0;
    double high = 0;
    double low = 0;
    double close = 0;
    std::string label;  // the bar's date or time, shown below the first and last bar
};

struct ChartSize {
    int width = 80;   // columns in all, the axis included
    int height = 16;  // rows of the plot, labels excluded
};

// The chart's lines, top to bottom. When more bars are given than columns fit, the latest
// are shown. A rising bar's body is '░' and a falling one's '█' (green and red with
// `colour`); the wick is '│'. `priceText` writes the axis prices in the security's style.
// No lines for no bars or a size too small to draw in.
std::vector<std::string> DrawCandles(const std::vector<Candle>& candles, ChartSize size,
                                     bool colour,
                                     const std::function<std::string(double)>& priceText);

}  // namespace qvnrt::cli
