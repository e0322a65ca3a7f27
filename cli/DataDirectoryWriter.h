// Writes the data directory that the replay driver serves: securities.csv, exchanges.csv and
// SYMBOL.ticks.csv, SYMBOL.1m.csv, SYMBOL.daily.csv, each with its header line. Times go out
// as seconds since 1970 (days as their date when they stand at noon UTC, as end-of-day
// records do), prices with enough digits to come back as the same float.
#pragma once

#include <string>
#include <vector>

#include <qvnrt/driver.h>

namespace qvnrt::cli {

struct RecordedListing {
    std::string symbol;
    std::string name;
    int assetType = 0;
    int exchange = 0;
    int priceStyle = 0;
    bool hasRules = false;
    SESSION_INFO rules{};
    std::vector<HOLIDAY_ROW> holidays;
};

struct RecordedExchange {
    int number = 0;
    std::string suffix, shortName, longName, currency;
    int openHour = 0, openMinute = 0, closeHour = 0, closeMinute = 0;
    long zone = 0;
    long delayMinutes = 0;
};

class DataDirectoryWriter {
public:
    explicit DataDirectoryWriter(std::string directory) : m_directory(std::move(directory)) {}

    // Makes the directory when missing. False after telling why on standard error.
    bool Prepare() const;
    // Each writes its whole file; false after telling which file failed and why.
    bool WriteListings(const std::vector<RecordedListing>& listings) const;
    bool WriteExchanges(const std::vector<RecordedExchange>& exchanges) const;
    bool WriteTicks(const std::string& symbol, const std::vector<TICKREC>& ticks) const;
    bool WriteMinutes(const std::string& symbol, const std::vector<RTINTRADAY_PRICEREC>& bars) const;
    bool WriteDays(const std::string& symbol, const std::vector<RTPRICEREC>& days) const;

    // The texts of securities.csv for session rules and holidays.
    static std::string SessionsText(const SESSION_INFO& rules);
    static std::string HolidaysText(const std::vector<HOLIDAY_ROW>& holidays);

private:
    bool WriteFile(const std::string& name, const std::string& text) const;

    std::string m_directory;
};

}  // namespace qvnrt::cli
