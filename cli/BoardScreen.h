// A live table on a terminal, drawn again in place: it fits the terminal's width (dropping
// or cutting columns, so no line ever wraps) and redraws whole after a resize.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "cli/Table.h"
#include "cli/Terminal.h"

namespace qvnrt::cli {

class BoardScreen {
public:
    BoardScreen(FILE* out, std::vector<Column> columns, bool colour);

    // Draws the title line and the rows over the previous drawing.
    void Draw(const std::string& title, const std::vector<Row>& rows);
    // The terminal changed size: the next drawing starts on a clear screen, since the
    // terminal may have rewrapped what was drawn.
    void Resized() { m_resized = true; }

private:
    FILE* m_out;
    std::vector<Column> m_columns;
    bool m_colour;
    ScreenGuard m_guard;
    std::vector<int> m_wanted;  // widths only grow, so that columns do not jump about
    int m_linesDrawn = 0;
    bool m_resized = false;
};

}  // namespace qvnrt::cli
