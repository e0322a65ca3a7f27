// The shape of a command's output: its columns, and one row of cells.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace qvnrt::cli {

struct Column {
    std::string header;  // also the key in JSON, in lower case
    int width = 0;       // the width a table starts with; content may widen it
    bool alignRight = false;
    // Which columns a narrow terminal gives up first: the highest number goes first, 0
    // never goes.
    int dropRank = 0;
    // Takes the room that is left, cut short to fit; dropped when less than `width` is left.
    bool flexible = false;
};

// A value, or nothing when the security does not have it. `move` marks a rise (1) or a
// fall (-1), which a colour terminal shows.
struct Cell {
    std::optional<std::string> text;
    int move = 0;
};

using Row = std::vector<Cell>;

// The widths of `columns` that fit in `totalWidth` with one space between columns; 0 for a
// dropped column. `wanted` is each column's width as its content would have it.
std::vector<int> FitColumns(const std::vector<Column>& columns, const std::vector<int>& wanted,
                            int totalWidth);

}  // namespace qvnrt::cli
