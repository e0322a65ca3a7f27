// A set of securities and their latest quotes, one row each: what `quotes`, `snapshot` and
// `demo` show, on a live board or as streamed rows.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <qvnrt/RTSecurity.h>

#include "cli/Table.h"

namespace qvnrt::cli {

// A security on the board: it notes each completed batch and whether the service closed it
// (which it does for a symbol it does not know).
class BoardSecurity : public RTSecurity {
public:
    void OnSecChanged() override;
    void OnSecClosed() override;

    int batches = 0;
    bool closed = false;
    std::function<void()> onBatch;
};

class QuoteBoard {
public:
    explicit QuoteBoard(const std::vector<std::string>& symbols);
    ~QuoteBoard();
    QuoteBoard(const QuoteBoard&) = delete;
    QuoteBoard& operator=(const QuoteBoard&) = delete;

    // SYMBOL LAST CHANGE BID ASK VOLUME DATE TIME NAME, in the order of Row().
    static const std::vector<Column>& Columns();

    // Requests every symbol: streaming or one batch. Offline, the cache answers at once.
    void Open(bool streaming);
    // Called with a security's index each time one of its batches completes.
    std::function<void(size_t)> onBatch;

    size_t size() const { return m_securities.size(); }
    // Every symbol has had its batch, or was closed by the service.
    bool AllAnswered() const;
    // The security's row as the cache holds it.
    Row RowOf(size_t index);
    // False for a symbol the service closed (unknown to it), which gets no row.
    bool Known(size_t index) const { return !m_securities[index]->closed; }
    // The rows of the known symbols; with `quotedOnly`, of those that have a quote too.
    std::vector<Row> Rows(bool quotedOnly = false);

    // After the run: tells on standard error of each symbol that was not delivered (unknown
    // to the service; offline, not in the cache) and returns kExitOk or kExitIncomplete.
    int ReportMissing(bool offline);

private:
    std::vector<std::string> m_symbols;
    std::vector<std::unique_ptr<BoardSecurity>> m_securities;
    std::vector<std::optional<double>> m_lastSeen;  // for the direction of the latest move
    std::vector<int> m_lastMove;
};

}  // namespace qvnrt::cli
