// What the recorder keeps of one symbol while a session runs: its listing (quote fields and
// session rules), its days, its ticks (history, then live) and, asked once more at the end,
// its minute bars.
//
// The requests go to the loaded driver through the entry points that the library bound
// (RTServer's members), with this object's own callbacks: a recording wants the records
// exactly as the service sends them, before any conversion of the library's. Every answer
// comes from inside the driver's dispatch, on the loop's thread.
#pragma once

#include <map>
#include <string>
#include <vector>

#include <qvnrt/driver.h>

#include "cli/DataDirectoryWriter.h"

namespace qvnrt::cli {

class SymbolRecording {
public:
    explicit SymbolRecording(std::string symbol);
    // Closes whatever is still open with the driver.
    ~SymbolRecording();
    SymbolRecording(const SymbolRecording&) = delete;
    SymbolRecording& operator=(const SymbolRecording&) = delete;

    // Asks for the listing fields, the newest `days` days, the session rules and the ticks
    // with live updates. False when the driver refused one of them.
    bool Start(int days);
    // Ends the live ticks and asks for the minute bars up to now.
    bool Finish();
    // Every answer has ended (the symbol was refused, or each request sent its end).
    bool Settled() const;

    bool Unknown() const { return m_unknown; }
    const RecordedListing& Listing() const { return m_listing; }
    std::vector<TICKREC> Ticks() const;
    std::vector<RTINTRADAY_PRICEREC> Minutes() const;
    std::vector<RTPRICEREC> Days() const;

private:
    static int OnQuote(unsigned long request, int status, int field, int dataType, void* data,
                       unsigned long user);
    static int OnDays(unsigned long request, int count, int flags, RTPRICEREC* records,
                      unsigned long user);
    static int OnTicks(unsigned long request, int count, int live, int type, void* data,
                       unsigned long user);
    static int OnSession(unsigned long request, int status, SESSION_INFO* rules, void* holidays,
                         unsigned long user);
    unsigned long User() const { return reinterpret_cast<unsigned long>(this); }

    RecordedListing m_listing;
    bool m_unknown = false;
    unsigned long m_quoteRequest = 0, m_dayRequest = 0, m_tickRequest = 0, m_minuteRequest = 0;
    bool m_quoteDone = false, m_daysDone = false, m_ticksDone = false, m_sessionDone = false;
    bool m_minutesAsked = false, m_minutesDone = false;
    // History arrives newest first and live data oldest first: kept apart until asked for.
    std::vector<TICKREC> m_tickHistory, m_tickLive;
    std::vector<RTINTRADAY_PRICEREC> m_minuteHistory;
    std::map<uint32_t, RTPRICEREC> m_days;  // a later record of a day replaces an earlier one
};

}  // namespace qvnrt::cli
