#include "cli/CandleChart.h"

#include <algorithm>
#include <cstdio>

#include <qvnrt/Date.h>

namespace qvnrt::cli {

namespace {

constexpr float kMissing = -32080.0f;
constexpr int kScaleWidth = 10;  // "12345.67 ┤"
const char* const kUp = "\x1b[32m";
const char* const kDown = "\x1b[31m";
const char* const kPlain = "\x1b[0m";

bool Empty(const RTINTRADAY_PRICEREC& bar) {
    return bar.high == kMissing || bar.low == kMissing || bar.open == kMissing ||
           bar.close == kMissing;
}

}  // namespace

std::vector<std::string> DrawCandles(const std::map<uint32_t, RTINTRADAY_PRICEREC>& bars,
                                     const ChartStyle& style) {
    std::vector<std::string> lines;
    const int columns = std::max(1, style.width - kScaleWidth);
    std::vector<RTINTRADAY_PRICEREC> shown;
    for (auto it = bars.rbegin(); it != bars.rend() && static_cast<int>(shown.size()) < columns;
         ++it) {
        shown.push_back(it->second);
    }
    std::reverse(shown.begin(), shown.end());
    float low = 0, high = 0;
    bool any = false;
    for (const auto& bar : shown) {
        if (Empty(bar)) continue;
        low = any ? std::min(low, bar.low) : bar.low;
        high = any ? std::max(high, bar.high) : bar.high;
        any = true;
    }
    if (!any) return {"(no bars yet)"};
    if (high == low) high = low + 1.0f;
    const int rows = std::max(2, style.height);
    const float step = (high - low) / static_cast<float>(rows);

    // A session starts where the gap to the bar before is wider than the narrowest gap.
    uint32_t narrowest = UINT32_MAX;
    for (size_t i = 1; i < shown.size(); ++i) {
        narrowest = std::min(narrowest, shown[i].time - shown[i - 1].time);
    }
    std::vector<bool> sessionStart(shown.size(), false);
    for (size_t i = 1; i < shown.size(); ++i) {
        sessionStart[i] = shown[i].time - shown[i - 1].time > narrowest;
    }

    for (int row = rows - 1; row >= 0; --row) {
        const float bottom = low + step * static_cast<float>(row);
        const float top = bottom + step;
        char scale[32];
        std::snprintf(scale, sizeof(scale), "%9.2f ", static_cast<double>(top));
        std::string line = scale;
        const char* colourNow = nullptr;
        for (const auto& bar : shown) {
            const char* glyph = " ";
            if (!Empty(bar) && bar.high >= bottom && bar.low <= top) {
                const float bodyLow = std::min(bar.open, bar.close);
                const float bodyHigh = std::max(bar.open, bar.close);
                glyph = (bodyHigh >= bottom && bodyLow <= top) ? "\u2588" : "\u2502";
            }
            if (style.colour && !Empty(bar)) {
                const char* want = bar.close >= bar.open ? kUp : kDown;
                if (want != colourNow) {
                    line += want;
                    colourNow = want;
                }
            }
            line += glyph;
        }
        if (colourNow) line += kPlain;
        lines.push_back(line);
    }
    std::string axis(kScaleWidth - 1, ' ');
    axis += "\u2514";
    std::string labels(kScaleWidth, ' ');
    size_t labelEnd = 0;
    for (size_t i = 0; i < shown.size(); ++i) {
        axis += (i == 0 || sessionStart[i]) ? "\u2534" : "\u2500";
        if (i == 0 || sessionStart[i]) {
            const size_t at = kScaleWidth + i;
            const std::string text =
                static_cast<const char*>(Date(shown[i].time).format("%a %H:%M", style.zone));
            if (at >= labelEnd) {
                labels.resize(at, ' ');
                labels += text;
                labelEnd = labels.size() + 1;
            }
        }
    }
    lines.push_back(axis);
    lines.push_back(labels);
    return lines;
}

}  // namespace qvnrt::cli
