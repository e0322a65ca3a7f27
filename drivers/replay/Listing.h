// What the data directory says of its securities and exchanges: securities.csv and
// exchanges.csv, read once when the driver first needs them.
//
// securities.csv: symbol,name,asset_type,exchange,zone,sessions,holidays,price_style
//   sessions  up to four "HHMM-HHMM" spans separated by blanks, Monday to Friday, in the
//             exchange's local time; a span that ends before it starts runs past midnight
//   holidays  "YYYY-MM-DD" (closed all day) or "YYYY-MM-DD@HHMM" (the day's last session
//             ends early), separated by blanks
// exchanges.csv: number,suffix,short_name,long_name,open,close,currency,zone,delay_minutes
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <qvnrt/driver.h>

namespace qvnreplay {

struct ListedSecurity {
    std::string symbol;
    std::string name;
    int assetType = 1;
    int exchange = 0;
    int zone = 0;
    int priceStyle = 0;
    SESSION_INFO rules{};             // size 0 when the file gave no sessions
    std::vector<uint8_t> holidays;    // a HOLIDAYS_INFO record
};

struct ListedExchange {
    int number = 0;
    std::string suffix, shortName, longName, currency;
    int openHour = 0, openMinute = 0, closeHour = 0, closeMinute = 0;
    int zone = 0;
    int delayMinutes = 0;
};

class Listing {
public:
    // Reads both files of `dataDir`; a missing file lists nothing, a malformed line is
    // reported with its file and line and skipped.
    explicit Listing(const std::string& dataDir);

    const ListedSecurity* Find(const std::string& symbol) const;
    const ListedExchange* FindExchange(long number) const;
    const std::map<std::string, ListedSecurity>& Securities() const { return m_securities; }

    // The two texts of securities.csv, as the recorder writes them back.
    static bool ParseSessions(const std::string& text, SESSION_INFO& rules);
    static bool ParseHolidays(const std::string& text, const SESSION_INFO& rules,
                              std::vector<uint8_t>& record);

private:
    void ReadSecurities(const std::string& path);
    void ReadExchanges(const std::string& path);

    std::map<std::string, ListedSecurity> m_securities;
    std::map<int, ListedExchange> m_exchanges;
};

}  // namespace qvnreplay
