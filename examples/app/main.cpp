// quote_watch: streams quotes for a few symbols and asks for their 7-minute bars.
//
//   quote_watch [--driver PATH] [--seconds N] [--quotes-only] SYMBOL...
//
// Prints one line per completed quote batch ("quote ACME 101.25") and one per finished bar
// history ("bars ACME 42, last 2024-06-11 13:55 close 101.50"), and ends when every symbol
// has its quote and its bars, or after N seconds (default 10). --quotes-only asks for no
// bars, for a driver that serves no intraday history. Exit status 0 when everything asked
// for arrived.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <qvnrt/qvnrt.h>

namespace {

bool RequestBars(RTSecurity& security);

// One symbol. RTSessSecurity asks for the symbol's session rules along with its quote:
// bars are cut at the sessions' edges, so they are asked for once the rules are known. The
// library calls the overridden notifications on the main loop's thread.
class Watch : public RTSessSecurity {
public:
    explicit Watch(bool wantBars) : barsAsked(!wantBars), barsDone(!wantBars) {}

    bool hasQuote = false;
    bool hasRules = false;
    bool barsAsked;
    bool barsDone;
    int bars = 0;
    RTINTRADAY_PRICEREC lastBar{};

    // The session and holiday rules arrived (or changed): hand them to the bar walk.
    void OnSessChanged() override {
        if (!m_pSessionRec) return;
        auto* session = new CSessionInfo(m_pSessionRec);
        auto* holidays = new CHolidaysInfo(m_pHolidayRec);
        setSessHolInfo(session, holidays, 0);
        session->Free();  // the security holds its own references
        holidays->Free();
        hasRules = true;
    }

    // Bars are asked for once the rules are known and the service has told its clock (event
    // 4, soon after connecting), or after a short wait for a service on this machine's
    // clock: "now" for an open-ended request is the service's time, and a service whose
    // clock differs from this machine's would otherwise be asked for a span it cannot have.
    void AskForBarsWhenReady(bool waitedForTheClock) {
        if (barsAsked || !hasRules) return;
        if (RTServer::s_lServerTimeDelta == 0 && !waitedForTheClock) return;
        barsAsked = true;
        if (!RequestBars(*this)) {
            std::fprintf(stderr, "bars refused for %s\n", static_cast<const char*>(m_strSymbol));
        }
    }

    // A batch of quote fields is complete; the fields are in the object and in the cache.
    void OnSecChanged() override {
        long error = 0;
        const double last = GetSecLastTrade(&error);
        if (error != 0) return;  // a batch without a last trade, such as the symbol alone
        std::printf("quote %s %.4f\n", static_cast<const char*>(m_strSymbol), last);
        hasQuote = true;
    }

    // A packet of intraday records, converted to the 7-minute bars asked for. History ends
    // with an empty packet; live bars follow while the request stays open.
    bool ReqTickCallback(unsigned long, int count, int, int isNew, int type,
                         void* data) override {
        if (type == RTREC_INTRADAY_PRICEREC && data) {
            const auto* records = static_cast<const RTINTRADAY_PRICEREC*>(data);
            for (int i = 0; i < count; ++i) {
                // History arrives newest first: the first record seen is the latest.
                if (bars == 0 || records[i].time > lastBar.time) lastBar = records[i];
                ++bars;
            }
        }
        if (count == 0 && !isNew && !barsDone) {
            barsDone = true;
            PrintBars();
        }
        return true;
    }

private:
    void PrintBars() const {
        if (bars == 0) {
            std::printf("bars %s 0\n", static_cast<const char*>(m_strSymbol));
            return;
        }
        // Times that reach the application are Date values: seconds since 1900, plus 3000000.
        const time_t when = static_cast<time_t>(lastBar.time - EPOCH_1970);
        char text[32];
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M", std::gmtime(&when));
        std::printf("bars %s %d, last %s close %.4f\n", static_cast<const char*>(m_strSymbol),
                    bars, text, lastBar.close);
    }
};

// Seven-minute bars (a negative weight counts minutes) from an open start, then live.
bool RequestBars(RTSecurity& security) {
    bool allSessions[4] = {true, true, true, true};
    return security.RequestTick(0, 0, -7, 1, 2, 0, 0, 0, 0, 0xC6 /* every day */, allSessions,
                                0, 0, 0, 0, 0);
}

bool Finished(const std::vector<std::unique_ptr<Watch>>& watches) {
    for (const auto& watch : watches) {
        if (!watch->hasQuote || !watch->barsDone) return false;
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    std::string driver;
    unsigned seconds = 10;
    bool wantBars = true;
    std::vector<std::string> symbols;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--driver") == 0 && i + 1 < argc) {
            driver = argv[++i];
        } else if (std::strcmp(argv[i], "--seconds") == 0 && i + 1 < argc) {
            seconds = static_cast<unsigned>(std::strtoul(argv[++i], nullptr, 10));
        } else if (std::strcmp(argv[i], "--quotes-only") == 0) {
            wantBars = false;
        } else {
            symbols.emplace_back(argv[i]);
        }
    }
    if (symbols.empty()) symbols = {"ACME", "EURUSD"};

    // The loop comes first: the cache timer and the driver's descriptor go onto it.
    qvnrt::PollLoop loop;
    qvnrt::SetMainLoop(&loop);
    if (!driver.empty() && !RTServer::SetDLLName(driver.c_str())) {
        std::fprintf(stderr, "quote_watch: driver name too long\n");
        return 2;
    }
    // Without a name the library loads its default driver, which an installed library finds
    // among its own drivers.
    if (!LoadRTServer(0, 0)) {
        std::fprintf(stderr, "quote_watch: no driver could be loaded\n");
        return 2;
    }
    if (RTServer::Connect("", "", 0, 0, 1) != 0) {
        std::fprintf(stderr, "quote_watch: the driver refused to connect\n");
        RTServer::CloseServer();
        return 2;
    }

    std::vector<std::unique_ptr<Watch>> watches;
    for (const std::string& symbol : symbols) {
        auto watch = std::make_unique<Watch>(wantBars);
        watch->OpenSecurity(symbol.c_str(), RTSECTYPE_NOT_KNOWN, 1 /* streaming */, 0);
        watches.push_back(std::move(watch));
    }

    for (unsigned waited = 0; waited < seconds * 1000 && !Finished(watches); waited += 100) {
        loop.runFor(100);
        for (const auto& watch : watches) watch->AskForBarsWhenReady(waited >= 2000);
    }
    const bool complete = Finished(watches);

    // Close every request before the driver goes away.
    watches.clear();
    RTServer::CloseServer();
    return complete ? 0 : 1;
}
