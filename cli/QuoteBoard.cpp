#include "cli/QuoteBoard.h"

#include <cstdio>

#include "cli/Command.h"
#include "cli/QuoteText.h"

namespace qvnrt::cli {
namespace {

constexpr int kStreaming = 1;
constexpr RTSecurityType kAnyType = RTSECTYPE_NOT_KNOWN;  // the service knows each symbol's

enum ColumnIndex { kSymbol, kLast, kChange, kBid, kAsk, kVolume, kDate, kTime, kName };

int Sign(std::optional<double> value) {
    if (!value || *value == 0.0) return 0;
    return *value > 0.0 ? 1 : -1;
}

}  // namespace

void BoardSecurity::OnSecChanged() {
    RTSecurity::OnSecChanged();
    ++batches;
    if (onBatch) onBatch();
}

void BoardSecurity::OnSecClosed() {
    closed = true;
    RTSecurity::OnSecClosed();
    if (onBatch) onBatch();
}

QuoteBoard::QuoteBoard(const std::vector<std::string>& symbols)
    : m_symbols(symbols), m_lastSeen(symbols.size()), m_lastMove(symbols.size()) {}

QuoteBoard::~QuoteBoard() {
    for (auto& security : m_securities) security->CloseSecurity();
}

const std::vector<Column>& QuoteBoard::Columns() {
    // A narrow terminal gives up the name first, then volume, date, bid and ask, change.
    static const std::vector<Column> columns = {
        {"SYMBOL", 6, false, 0, false}, {"LAST", 7, true, 0, false},
        {"CHANGE", 7, true, 3, false},  {"BID", 7, true, 4, false},
        {"ASK", 7, true, 4, false},     {"VOLUME", 8, true, 6, false},
        {"DATE", 10, false, 5, false},  {"TIME", 8, false, 2, false},
        {"NAME", 12, false, 7, true},
    };
    return columns;
}

void QuoteBoard::Open(bool streaming) {
    for (size_t i = 0; i < m_symbols.size(); ++i) {
        m_securities.push_back(std::make_unique<BoardSecurity>());
        m_securities.back()->onBatch = [this, i] {
            if (onBatch) onBatch(i);
        };
    }
    // Offline the cache answers inside OpenSecurity: every object stands before the first.
    for (size_t i = 0; i < m_symbols.size(); ++i) {
        m_securities[i]->OpenSecurity(m_symbols[i].c_str(), kAnyType,
                                      streaming ? kStreaming : 0, 0);
    }
}

bool QuoteBoard::AllAnswered() const {
    for (const auto& security : m_securities) {
        if (security->batches == 0 && !security->closed) return false;
    }
    return true;
}

Row QuoteBoard::RowOf(size_t index) {
    BoardSecurity& security = *m_securities[index];
    Row row(Columns().size());
    row[kSymbol].text = SymbolText(security, m_symbols[index]);

    const std::optional<double> last = LastPrice(security);
    if (last && m_lastSeen[index] && *last != *m_lastSeen[index]) {
        m_lastMove[index] = *last > *m_lastSeen[index] ? 1 : -1;
    }
    m_lastSeen[index] = last;

    row[kLast] = {PriceText(security, RTFIELD_LAST), m_lastMove[index]};
    row[kChange] = {ChangeText(security), Sign(Change(security))};
    row[kBid].text = PriceText(security, RTFIELD_BID);
    row[kAsk].text = PriceText(security, RTFIELD_ASK);
    row[kVolume].text = CountText(security, RTFIELD_TOTAL_VOLUME);
    row[kDate].text = QuoteDateText(security);
    row[kTime].text = QuoteTimeText(security);
    row[kName].text = NameText(security);
    return row;
}

std::vector<Row> QuoteBoard::Rows(bool quotedOnly) {
    std::vector<Row> rows;
    for (size_t i = 0; i < m_securities.size(); ++i) {
        if (!Known(i) || (quotedOnly && !HasQuote(*m_securities[i]))) continue;
        rows.push_back(RowOf(i));
    }
    return rows;
}

int QuoteBoard::ReportMissing(bool offline) {
    int status = kExitOk;
    for (size_t i = 0; i < m_securities.size(); ++i) {
        BoardSecurity& security = *m_securities[i];
        if (security.closed) {
            std::fprintf(stderr, "qvnrt-cli: %s: unknown symbol\n", m_symbols[i].c_str());
        } else if (!HasQuote(security)) {
            std::fprintf(stderr, "qvnrt-cli: %s: %s\n", m_symbols[i].c_str(),
                         offline ? "not in the cache" : "no quote arrived");
        } else {
            continue;
        }
        status = kExitIncomplete;
    }
    return status;
}

}  // namespace qvnrt::cli
