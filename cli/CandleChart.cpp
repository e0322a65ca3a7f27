#include "cli/CandleChart.h"

#include <algorithm>
#include <cmath>

namespace qvnrt::cli {
namespace {

constexpr const char* kRiseBody = "░";
constexpr const char* kFallBody = "█";
constexpr const char* kWick = "│";
constexpr const char* kGreen = "\x1b[32m";
constexpr const char* kRed = "\x1b[31m";
constexpr const char* kReset = "\x1b[0m";

// The rows of the plot cover [low, high] from top to bottom, each a slice `step` high.
struct Scale {
    double low;
    double step;
    int rows;

    // The row of `price`, 0 at the top.
    int RowOf(double price) const {
        const int fromBottom = static_cast<int>(std::floor((price - low) / step));
        return rows - 1 - std::clamp(fromBottom, 0, rows - 1);
    }
};

std::string Padded(const std::string& text, size_t width) {
    return text.size() >= width ? text : std::string(width - text.size(), ' ') + text;
}

}  // namespace

std::vector<std::string> DrawCandles(const std::vector<Candle>& candles, ChartSize size,
                                     bool colour,
                                     const std::function<std::string(double)>& priceText) {
    if (candles.empty() || size.height < 2) return {};
    double low = candles.front().low, high = candles.front().high;
    for (const Candle& c : candles) {
        low = std::min({low, c.low, c.open, c.close});
        high = std::max({high, c.high, c.open, c.close});
    }
    const std::string top = priceText(high), bottom = priceText(low);
    const size_t axis = std::max(top.size(), bottom.size());
    const int columns = size.width - static_cast<int>(axis) - 2;
    if (columns < 1) return {};
    const size_t shown = std::min(candles.size(), static_cast<size_t>(columns));
    const auto first = candles.end() - static_cast<std::ptrdiff_t>(shown);

    // A flat series still needs a height to divide.
    const Scale scale{low, high > low ? (high - low) / size.height * (1 + 1e-9) : 1.0,
                      size.height};
    std::vector<std::string> lines;
    for (int row = 0; row < size.height; ++row) {
        const std::string price = row == 0 ? top : row == size.height - 1 ? bottom : "";
        std::string line = Padded(price, axis) + " ┤";
        for (auto c = first; c != candles.end(); ++c) {
            const bool rising = c->close >= c->open;
            const int bodyTop = scale.RowOf(std::max(c->open, c->close));
            const int bodyBottom = scale.RowOf(std::min(c->open, c->close));
            const int wickTop = scale.RowOf(c->high), wickBottom = scale.RowOf(c->low);
            const char* mark = " ";
            if (row >= bodyTop && row <= bodyBottom) {
                mark = rising ? kRiseBody : kFallBody;
            } else if (row >= wickTop && row <= wickBottom) {
                mark = kWick;
            }
            if (colour && *mark != ' ') {
                line += std::string(rising ? kGreen : kRed) + mark + kReset;
            } else {
                line += mark;
            }
        }
        lines.push_back(line);
    }
    std::string labels(axis + 2, ' ');
    labels += first->label;
    const std::string& last = candles.back().label;
    if (shown > first->label.size() + last.size() + 1) {
        labels += std::string(shown - first->label.size() - last.size(), ' ') + last;
    }
    lines.push_back(labels);
    return lines;
}

}  // namespace qvnrt::cli
