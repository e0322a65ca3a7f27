#include "cli/BoardScreen.h"

#include <algorithm>

#include "cli/OutputSink.h"

namespace qvnrt::cli {

BoardScreen::BoardScreen(FILE* out, std::vector<Column> columns, bool colour)
    : m_out(out), m_columns(std::move(columns)), m_colour(colour), m_guard(out) {
    for (const Column& column : m_columns) {
        m_wanted.push_back(std::max<int>(column.width, column.header.size()));
    }
}

void BoardScreen::Draw(const std::string& title, const std::vector<Row>& rows) {
    for (const Row& row : rows) {
        for (size_t i = 0; i < row.size() && i < m_wanted.size(); ++i) {
            if (row[i].text) m_wanted[i] = std::max<int>(m_wanted[i], row[i].text->size());
        }
    }
    const int width = TerminalWidth(m_out);
    const std::vector<int> widths = FitColumns(m_columns, m_wanted, width);

    std::string screen;
    if (m_resized) {
        screen = "\x1b[H\x1b[2J";  // home, and clear the whole screen
        m_resized = false;
    } else if (m_linesDrawn > 0) {
        screen = "\r\x1b[" + std::to_string(m_linesDrawn) + "A";  // back to the top
    }
    screen += "\r\x1b[J";  // clear from here down
    screen += title.substr(0, width) + "\n";
    screen += TableHeader(m_columns, widths) + "\n";
    for (const Row& row : rows) screen += TableLine(m_columns, widths, row, m_colour) + "\n";
    std::fputs(screen.c_str(), m_out);
    std::fflush(m_out);
    m_linesDrawn = static_cast<int>(rows.size()) + 2;
}

}  // namespace qvnrt::cli
