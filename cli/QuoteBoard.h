// A table of securities and their latest quotes, as the terminal shows them.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <qvnrt/RTSecurity.h>

namespace qvnrt::cli {

// A security on the board: it notes when a batch completes or the service closes it.
class BoardSecurity : public RTSecurity {
public:
    void OnSecChanged() override { ++batches; }
    void OnSecClosed() override {
        closed = true;
        RTSecurity::OnSecClosed();
    }
    int batches = 0;
    bool closed = false;
};

class QuoteBoard {
public:
    explicit QuoteBoard(const std::vector<std::string>& symbols);

    // Requests every symbol: streaming or one batch. Offline, the cache answers at once.
    void Open(bool streaming);
    void Close();

    // Every symbol has had its batch, or was closed by the service.
    bool AllAnswered() const;
    // The symbols that the service closed, which are unknown to it.
    std::vector<std::string> Unknown() const;

    // The table, one row per symbol, its rows read from the cache.
    void Print(FILE* out) const;
    // The table again in place: a live board on a terminal.
    void Redraw(FILE* out);

private:
    std::string Row(BoardSecurity& security) const;

    std::vector<std::string> m_symbols;
    std::vector<std::unique_ptr<BoardSecurity>> m_securities;
    int m_linesDrawn = 0;
};

}  // namespace qvnrt::cli
