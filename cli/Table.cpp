#include "cli/Table.h"

#include <algorithm>
#include <numeric>

namespace qvnrt::cli {
namespace {

int Used(const std::vector<int>& widths) {
    int used = 0, shown = 0;
    for (int width : widths) {
        if (width == 0) continue;
        used += width;
        ++shown;
    }
    return used + std::max(0, shown - 1);
}

}  // namespace

std::vector<int> FitColumns(const std::vector<Column>& columns, const std::vector<int>& wanted,
                            int totalWidth) {
    std::vector<int> widths(columns.size());
    for (size_t i = 0; i < columns.size(); ++i) {
        // A flexible column asks for its minimum first and takes what is left at the end.
        widths[i] = columns[i].flexible ? columns[i].width : wanted[i];
    }
    std::vector<size_t> dropOrder(columns.size());
    std::iota(dropOrder.begin(), dropOrder.end(), size_t{0});
    std::stable_sort(dropOrder.begin(), dropOrder.end(), [&columns](size_t a, size_t b) {
        return columns[a].dropRank > columns[b].dropRank;
    });
    for (size_t index : dropOrder) {
        if (Used(widths) <= totalWidth || columns[index].dropRank == 0) break;
        widths[index] = 0;
    }
    // What no drop could save is cut from the right: the terminal must never wrap.
    for (size_t i = columns.size(); i-- > 0 && Used(widths) > totalWidth;) {
        const int over = Used(widths) - totalWidth;
        widths[i] = std::max(0, widths[i] - over);
    }
    for (size_t i = 0; i < columns.size(); ++i) {
        if (!columns[i].flexible || widths[i] == 0) continue;
        widths[i] = std::max(widths[i], std::min(wanted[i], widths[i] + totalWidth - Used(widths)));
    }
    return widths;
}

}  // namespace qvnrt::cli
