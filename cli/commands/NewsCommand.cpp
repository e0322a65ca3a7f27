// news SYMBOL... | --keyword TEXT [--seconds N]: headlines as they come, each batch in date
// order, with their source and time. Symbols for which news cannot be started are told on
// standard error (through the terminal host, in the library's own words) and make the exit
// status 1.
#include <qvnrt/Date.h>
#include <qvnrt/RTNewsItem.h>
#include <qvnrt/RTServer.h>

#include <algorithm>
#include <cstdio>
#include <memory>

#include "cli/CliSession.h"
#include "cli/QuoteText.h"

namespace qvnrt::cli {
namespace {

constexpr long kMaxHeadlines = 50;  // asked of the service per request

struct Options {
    std::vector<std::string> symbols;
    std::string keyword;
    double seconds = 0;
};

std::vector<Column> Columns() {
    return {{"TIME", 19, false, 0, false},
            {"SRC", 3, true, 0, false},  // what story --source takes
            {"SOURCE", 12, false, 2, false},
            {"ID", 10, true, 1, false},
            {"HEADLINE", 30, false, 0, true}};
}

// Collects the headlines of a batch and writes them, in date order, when its last arrives.
class HeadlineFeed {
public:
    HeadlineFeed(OutputSink& sink, CliSession& session) : m_sink(sink), m_session(session) {}

    static int OnArticle(RTNewsHeadline* headline, AddRemoveArticle what, RTNewsItem*,
                         int count, unsigned long user) {
        auto* feed = reinterpret_cast<HeadlineFeed*>(user);
        if (what == ARTICLE_ADDED && headline) feed->Take(*headline);
        if (what == ARTICLE_ADDED && count == 1) feed->Flush();
        return 0;
    }
    unsigned long user() { return reinterpret_cast<unsigned long>(this); }

    void Flush() {
        if (m_batch.empty()) return;
        std::stable_sort(m_batch.begin(), m_batch.end(),
                         [](const Entry& a, const Entry& b) { return a.dateTime < b.dateTime; });
        std::vector<Row> rows;
        for (Entry& entry : m_batch) rows.push_back(std::move(entry.row));
        m_batch.clear();
        if (!m_sink.WriteBatch(rows)) m_session.Stop();  // the reader has gone
    }

private:
    struct Entry {
        long dateTime;
        Row row;
    };

    void Take(RTNewsHeadline& headline) {
        CString name;
        const Cell source = headline.GetNewsSource(name) ? Cell{std::string(name)} : Cell{};
        // The service's times are seconds since 1970, shown on the machine's clock.
        const auto date = static_cast<uint32_t>(EPOCH_1970 + headline.GetDateAndTime());
        m_batch.push_back({headline.GetDateAndTime(),
                           {Cell{DateTimeText(date, ZONE_LOCAL)},
                            Cell{std::to_string(headline.GetNewsSource())}, source,
                            Cell{std::to_string(headline.GetArticleID())},
                            Cell{std::string(headline.GetHeadline())}}});
    }

    OutputSink& m_sink;
    CliSession& m_session;
    std::vector<Entry> m_batch;
};

int Run(const GlobalOptions& global, const Options& options) {
    const bool byKeyword = !options.keyword.empty();
    if (byKeyword == !options.symbols.empty()) {
        std::fprintf(stderr, "qvnrt-cli news: give either symbols or --keyword TEXT\n");
        return kExitUsage;
    }
    CliSession session;
    if (int status = session.Start(global); status != kExitOk) return status;

    std::string search = options.keyword;
    for (const std::string& symbol : options.symbols) search += (search.empty() ? "" : " ") + symbol;
    OutputSink sink = OutputSink::ToStdout(global.format, Columns());
    HeadlineFeed feed(sink, session);
    RTNewsItem item(search.c_str(), byKeyword ? 1 : 0, 0, 1, kMaxHeadlines, 0, 0, nullptr, 0,
                    &HeadlineFeed::OnArticle, feed.user());
    if (!item.StartNewsCollection(1, 0)) {
        std::fprintf(stderr, "qvnrt-cli: news for %s: not available from the service\n",
                     search.c_str());
        return kExitIncomplete;
    }
    // A partial failure of a symbol list was told by the library through the terminal host.
    const int wanted =
        byKeyword || RTServer::GetProperty(RTPROP_NEWS_WHOLE_SYMBOL_LIST, 0) != 0
            ? 1
            : static_cast<int>(options.symbols.size());
    CDWordArray events;
    const int status = item.GetRTNewsEvents(events) < wanted ? kExitIncomplete : kExitOk;

    session.Run(options.seconds);
    item.StopNewsCollection();
    feed.Flush();
    return status;
}

RunCommand Setup(CLI::App& command) {
    auto options = std::make_shared<Options>();
    command.add_option("SYMBOL", options->symbols, "symbols whose news to follow");
    command.add_option("--keyword", options->keyword, "follow headlines holding this text");
    command.add_option("--seconds", options->seconds, "stop after N seconds (default: Ctrl-C)")
        ->check(CLI::NonNegativeNumber);
    return [options](const GlobalOptions& global) { return Run(global, *options); };
}

const CommandRegistration kRegistration{
    "news", "headlines for symbols or a keyword, in date order, as they come", 50, Setup};

}  // namespace
}  // namespace qvnrt::cli
