#include "cli/DataDirectoryWriter.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace qvnrt::cli {

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Nine significant digits bring a float back exactly.
std::string Price(float value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

std::string HourMinute(int value) {
    char text[8];
    std::snprintf(text, sizeof text, "%02d%02d", (value >> 8) & 0xFF, value & 0xFF);
    return text;
}

std::string CivilDay(int64_t day) {
    // Days since 1970 to a date, proleptic Gregorian.
    day += 719468;
    const int64_t era = (day >= 0 ? day : day - 146096) / 146097;
    const int64_t dayOfEra = day - era * 146097;
    const int64_t yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t mp = (5 * dayOfYear + 2) / 153;
    const int dayOfMonth = static_cast<int>(dayOfYear - (153 * mp + 2) / 5 + 1);
    const int month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
    const int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", static_cast<int>(year), month, dayOfMonth);
    return text;
}

std::string DayTime(uint32_t date) {
    const int64_t seconds = static_cast<int64_t>(date) - EPOCH_1970;
    if (seconds % kSecondsPerDay == kSecondsPerDay / 2) return CivilDay(seconds / kSecondsPerDay);
    return std::to_string(seconds);
}

// The files are read by splitting at commas, which a name therefore must not hold.
std::string Field(std::string text) {
    for (char& c : text) {
        if (c == ',' || c == '\n' || c == '\r') c = ' ';
    }
    return text;
}

}  // namespace

bool DataDirectoryWriter::Prepare() const {
    std::error_code error;
    std::filesystem::create_directories(m_directory, error);
    if (error) {
        std::fprintf(stderr, "qvnrt-cli: %s: %s\n", m_directory.c_str(), error.message().c_str());
        return false;
    }
    return true;
}

bool DataDirectoryWriter::WriteFile(const std::string& name, const std::string& text) const {
    const std::string path = m_directory + "/" + name;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) {
        std::fprintf(stderr, "qvnrt-cli: %s: %s\n", path.c_str(), std::strerror(errno));
        return false;
    }
    return true;
}

std::string DataDirectoryWriter::SessionsText(const SESSION_INFO& rules) {
    std::string text;
    for (int i = 0; i < 4; ++i) {
        if (!rules.bSession[i]) continue;
        if (!text.empty()) text += ' ';
        text += HourMinute(rules.sStartTime[i]) + "-" + HourMinute(rules.sEndTime[i]);
    }
    return text;
}

std::string DataDirectoryWriter::HolidaysText(const std::vector<HOLIDAY_ROW>& holidays) {
    std::string text;
    for (const HOLIDAY_ROW& row : holidays) {
        char day[32];
        std::snprintf(day, sizeof day, "%04d-%02d-%02d", static_cast<int>(row.year),
                      static_cast<int>(row.month), static_cast<int>(row.day));
        if (!text.empty()) text += ' ';
        text += day;
        if (row.endTime != 0xFFFF) text += "@" + HourMinute(row.endTime);
    }
    return text;
}

bool DataDirectoryWriter::WriteListings(const std::vector<RecordedListing>& listings) const {
    std::string text = "symbol,name,asset_type,exchange,zone,sessions,holidays,price_style\n";
    for (const RecordedListing& l : listings) {
        text += Field(l.symbol) + "," + Field(l.name) + "," + std::to_string(l.assetType) + "," +
                std::to_string(l.exchange) + "," +
                std::to_string(l.hasRules ? l.rules.chTimeZone : 0) + "," +
                (l.hasRules ? SessionsText(l.rules) : "") + "," + HolidaysText(l.holidays) + "," +
                std::to_string(l.priceStyle) + "\n";
    }
    return WriteFile("securities.csv", text);
}

bool DataDirectoryWriter::WriteExchanges(const std::vector<RecordedExchange>& exchanges) const {
    std::string text = "number,suffix,short_name,long_name,open,close,currency,zone,delay_minutes\n";
    for (const RecordedExchange& e : exchanges) {
        text += std::to_string(e.number) + "," + Field(e.suffix) + "," + Field(e.shortName) + "," +
                Field(e.longName) + "," + HourMinute(e.openHour << 8 | e.openMinute) + "," +
                HourMinute(e.closeHour << 8 | e.closeMinute) + "," + Field(e.currency) + "," +
                std::to_string(e.zone) + "," + std::to_string(e.delayMinutes) + "\n";
    }
    return WriteFile("exchanges.csv", text);
}

bool DataDirectoryWriter::WriteTicks(const std::string& symbol,
                                     const std::vector<TICKREC>& ticks) const {
    std::string text = "time,price,volume,flag\n";
    for (const TICKREC& tick : ticks) {
        const uint32_t time = tick.time;
        const int32_t volume = tick.volume;
        const float price = tick.price;
        text += std::to_string(time) + "," + Price(price) + "," + std::to_string(volume) + "," +
                std::to_string(tick.flag) + "\n";
    }
    return WriteFile(symbol + ".ticks.csv", text);
}

bool DataDirectoryWriter::WriteMinutes(const std::string& symbol,
                                       const std::vector<RTINTRADAY_PRICEREC>& bars) const {
    std::string text = "time,open,high,low,close,volume\n";
    for (const RTINTRADAY_PRICEREC& bar : bars) {
        text += std::to_string(bar.time) + "," + Price(bar.open) + "," + Price(bar.high) + "," +
                Price(bar.low) + "," + Price(bar.close) + "," + std::to_string(bar.volume) + "\n";
    }
    return WriteFile(symbol + ".1m.csv", text);
}

bool DataDirectoryWriter::WriteDays(const std::string& symbol,
                                    const std::vector<RTPRICEREC>& days) const {
    std::string text = "date,open,high,low,close,volume\n";
    for (const RTPRICEREC& day : days) {
        text += DayTime(day.date) + "," + Price(day.first) + "," + Price(day.second) + "," +
                Price(day.third) + "," + Price(day.close) + "," + std::to_string(day.value) + "\n";
    }
    return WriteFile(symbol + ".daily.csv", text);
}

}  // namespace qvnrt::cli
