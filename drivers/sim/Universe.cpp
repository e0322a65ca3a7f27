#include "Universe.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

#include "CivilDate.h"
#include "MarketHolidays.h"
#include "Random.h"

namespace qvnsim {

namespace {

// Exchange 2 reports its prices 20 minutes late: its securities carry bit 0x20 of field 7,
// and its exchange long 11 says 20.
const Exchange kExchanges[] = {
    {1, "NYX", "New York Exchange", "", 18, 9, 30, 16, 0, "USD", 0},
    {2, "LDX", "London Exchange", ".L", 22, 8, 0, 16, 30, "GBP", 20},
    {3, "TKX", "Tokyo Exchange", ".T", 45, 9, 0, 15, 0, "JPY", 0},
    {4, "CFX", "Chicago Futures Exchange", ".F", 13, 17, 0, 16, 0, "USD", 0},
    {5, "GBX", "Government Bond Market", ".B", 18, 8, 0, 17, 0, "USD", 0},
    {6, "FXC", "Currency Composite", ".X", 18, 17, 0, 17, 0, "USD", 0},
};

struct Row {
    const char* symbol;
    const char* name;
    int assetType;
    int exchange;
    Schedule schedule;
    double price;
    double vol;
    double tick;
    int style;
    int decimals;
    int volumeUnit;
    int maxTicks;
    int quiet;
    double eps;
    double dividend;
    int currency;
    int multiplier;
    const char* underlying;
};

constexpr Schedule kUs = Schedule::kUsEquity;
constexpr Schedule kLon = Schedule::kLondon;
constexpr Schedule kTok = Schedule::kTokyo;
constexpr Schedule kBnd = Schedule::kUsBonds;
constexpr Schedule kFut = Schedule::kFuturesOvernight;
constexpr Schedule kGrn = Schedule::kFuturesGrain;
constexpr Schedule kFx = Schedule::kCurrency;

// Symbol, name; asset type, exchange, schedule, base price, daily volatility, tick size,
// display style, decimals, volume unit, most trades a minute, percent of quiet minutes, EPS,
// a year's dividend or coupon, currency, multiplier, underlying. Display styles: 1 whole,
// 3 two decimals, 5 four decimals, 8 quarters, 11 32nds, 12 64ths, 14 32nds with quarters.
const Row kRows[] = {
    // clang-format off
    {"ACME", "Acme Industrial Holdings",
     kStock, 1, kUs, 84.20, 0.016, 0.01, 3, 2, 100, 4, 5, 5.12, 1.60, 1, 1, ""},
    {"BLTN", "Bolton Rail & Freight",
     kStock, 1, kUs, 46.75, 0.014, 0.01, 3, 2, 100, 4, 5, 3.05, 1.12, 1, 1, ""},
    {"CRDX", "Cardex Biosciences",
     kStock, 1, kUs, 132.40, 0.028, 0.01, 3, 2, 100, 4, 5, -1.20, 0.0, 1, 1, ""},
    {"DYNA", "Dynamo Power Systems",
     kStock, 1, kUs, 58.10, 0.013, 0.01, 3, 2, 100, 4, 5, 2.40, 2.05, 1, 1, ""},
    {"ELMW", "Elmwood Consumer Brands",
     kStock, 1, kUs, 71.35, 0.012, 0.01, 3, 2, 100, 4, 5, 3.80, 2.40, 1, 1, ""},
    {"FRGT", "Fairgate Financial Group",
     kStock, 1, kUs, 39.90, 0.017, 0.01, 3, 2, 100, 4, 5, 4.10, 1.44, 1, 1, ""},
    {"GLXS", "Galaxis Semiconductor",
     kStock, 1, kUs, 215.60, 0.026, 0.01, 3, 2, 100, 4, 5, 6.90, 0.80, 1, 1, ""},
    {"HRBR", "Harbor Mutual Insurance",
     kStock, 1, kUs, 102.15, 0.011, 0.01, 3, 2, 100, 4, 5, 8.20, 3.10, 1, 1, ""},
    {"THMS.L", "Thames Utilities",
     kStock, 2, kLon, 9.82, 0.011, 0.01, 3, 2, 100, 3, 10, 0.61, 0.45, 2, 1, ""},
    {"KNGS.L", "Kingsway Retail Group",
     kStock, 2, kLon, 4.56, 0.016, 0.01, 3, 2, 100, 3, 10, 0.33, 0.12, 2, 1, ""},
    {"MRDN.L", "Meridian Mining",
     kStock, 2, kLon, 23.40, 0.021, 0.01, 3, 2, 100, 3, 10, 2.75, 0.90, 2, 1, ""},
    {"ALBN.L", "Albion Telecom",
     kStock, 2, kLon, 2.84, 0.015, 0.01, 3, 2, 100, 3, 10, 0.19, 0.08, 2, 1, ""},
    {"7101.T", "Hoshino Motor Corporation",
     kStock, 3, kTok, 2845, 0.015, 1, 1, 0, 100, 3, 5, 210, 60, 3, 1, ""},
    {"8402.T", "Sakura Trust Bank",
     kStock, 3, kTok, 1236, 0.013, 1, 1, 0, 100, 3, 5, 118, 40, 3, 1, ""},
    {"6950.T", "Kaminari Electronics",
     kStock, 3, kTok, 9870, 0.022, 10, 1, 0, 100, 3, 5, 405, 90, 3, 1, ""},
    {"$USX", "US Composite 500 Index",
     kIndex, 1, kUs, 5320.40, 0.009, 0.01, 3, 2, 0, 4, 0, 0, 0, 1, 1, ""},
    {"$UKX", "London 100 Index",
     kIndex, 2, kLon, 8210.50, 0.008, 0.01, 3, 2, 0, 4, 0, 0, 0, 2, 1, ""},
    {"$JPX", "Tokyo 225 Index",
     kIndex, 3, kTok, 38650.00, 0.011, 0.01, 3, 2, 0, 4, 0, 0, 0, 3, 1, ""},
    {"UST2Y", "US Treasury 4.875% 05/2026",
     kBond, 5, kBnd, 99.703125, 0.0012, 1.0 / 128, 14, 0, 1, 2, 25, 0, 4.875, 1, 1, ""},
    {"UST5Y", "US Treasury 4.5% 05/2029",
     kBond, 5, kBnd, 99.34375, 0.0030, 1.0 / 64, 12, 0, 1, 2, 25, 0, 4.5, 1, 1, ""},
    {"UST10Y", "US Treasury 4.375% 05/2034",
     kBond, 5, kBnd, 98.5, 0.0050, 1.0 / 32, 11, 0, 1, 2, 25, 0, 4.375, 1, 1, ""},
    {"UST30Y", "US Treasury 4.625% 05/2054",
     kBond, 5, kBnd, 96.25, 0.0090, 1.0 / 32, 11, 0, 1, 2, 25, 0, 4.625, 1, 1, ""},
    {"@USX", "US Composite 500 Future, front month",
     kFuture, 4, kFut, 5345.25, 0.010, 0.25, 3, 2, 1, 4, 5, 0, 0, 1, 50, "$USX"},
    {"@OIL", "Light Crude Oil Future, front month",
     kFuture, 4, kFut, 78.45, 0.020, 0.01, 3, 2, 1, 4, 5, 0, 0, 1, 1000, ""},
    {"@CRN", "Corn Future, front month",
     kFuture, 4, kGrn, 452.25, 0.014, 0.25, 8, 2, 1, 3, 20, 0, 0, 1, 50, ""},
    {"EURUSD", "Euro / US Dollar",
     kCurrency, 6, kFx, 1.0765, 0.0045, 0.0001, 5, 4, 1, 5, 0, 0, 0, 1, 1, ""},
    {"GBPUSD", "Pound Sterling / US Dollar",
     kCurrency, 6, kFx, 1.2740, 0.0050, 0.0001, 5, 4, 1, 5, 0, 0, 0, 1, 1, ""},
    {"USDJPY", "US Dollar / Japanese Yen",
     kCurrency, 6, kFx, 157.05, 0.0055, 0.01, 3, 2, 1, 5, 0, 0, 0, 3, 1, ""},
    {"AUDUSD", "Australian Dollar / US Dollar",
     kCurrency, 6, kFx, 0.6615, 0.0060, 0.0001, 5, 4, 1, 5, 0, 0, 0, 1, 1, ""},
    // clang-format on
};

HOLIDAY_ROW MakeHolidayRow(int64_t day, uint16_t session, uint16_t endTime) {
    const CivilDate date = CivilFromDays(day);
    HOLIDAY_ROW row{};
    row.month = static_cast<uint8_t>(date.month);
    row.day = static_cast<uint8_t>(date.day);
    row.year = static_cast<int16_t>(date.year);
    row.session = session;
    row.endTime = endTime;
    return row;
}

// Full closings close every session (row session 4); a short day cuts one session.
std::vector<HOLIDAY_ROW> HolidayRows(HolidayMarket market, int fromYear, int toYear,
                                     int shortSession, int16_t shortEnd) {
    std::vector<HOLIDAY_ROW> rows;
    for (const MarketHoliday& holiday : HolidaysOf(market, fromYear, toYear)) {
        if (!holiday.earlyClose) {
            rows.push_back(MakeHolidayRow(holiday.day, 4, 0xFFFF));
        } else if (shortSession >= 0) {
            rows.push_back(MakeHolidayRow(holiday.day, static_cast<uint16_t>(shortSession),
                                          static_cast<uint16_t>(shortEnd)));
        }
    }
    return rows;
}

std::unique_ptr<TradingCalendar> MakeCalendar(Schedule schedule, int fromYear, int toYear) {
    const auto us = HolidayMarket::kUnitedStates;
    switch (schedule) {
        case Schedule::kUsEquity:
            return std::make_unique<TradingCalendar>(
                18, true,
                std::vector<SessionRule>{{HourMinute(9, 30), HourMinute(16, 0), kMondayToFriday}},
                HolidayRows(us, fromYear, toYear, 0, HourMinute(13, 0)));
        case Schedule::kLondon:
            return std::make_unique<TradingCalendar>(
                22, true,
                std::vector<SessionRule>{{HourMinute(8, 0), HourMinute(16, 30), kMondayToFriday}},
                HolidayRows(HolidayMarket::kLondon, fromYear, toYear, 0, HourMinute(12, 30)));
        case Schedule::kTokyo:
            return std::make_unique<TradingCalendar>(
                45, true,
                std::vector<SessionRule>{{HourMinute(9, 0), HourMinute(11, 30), kMondayToFriday},
                                         {HourMinute(12, 30), HourMinute(15, 0), kMondayToFriday}},
                HolidayRows(HolidayMarket::kTokyo, fromYear, toYear, -1, 0));
        case Schedule::kUsBonds:
            return std::make_unique<TradingCalendar>(
                18, true,
                std::vector<SessionRule>{{HourMinute(8, 0), HourMinute(17, 0), kMondayToFriday}},
                HolidayRows(us, fromYear, toYear, 0, HourMinute(14, 0)));
        case Schedule::kFuturesOvernight:
            return std::make_unique<TradingCalendar>(
                13, false,
                std::vector<SessionRule>{{HourMinute(17, 0), HourMinute(16, 0), kMondayToFriday}},
                HolidayRows(us, fromYear, toYear, 0, HourMinute(12, 0)));
        case Schedule::kFuturesGrain:
            return std::make_unique<TradingCalendar>(
                13, false,
                std::vector<SessionRule>{{HourMinute(19, 0), HourMinute(7, 45), kMondayToFriday},
                                         {HourMinute(8, 30), HourMinute(13, 20), kMondayToFriday}},
                HolidayRows(us, fromYear, toYear, 1, HourMinute(12, 5)));
        case Schedule::kCurrency:
        case Schedule::kCount:
            break;
    }
    return std::make_unique<TradingCalendar>(
        18, false,
        std::vector<SessionRule>{{HourMinute(17, 0), HourMinute(17, 0), kMondayToFriday}},
        HolidayRows(HolidayMarket::kCurrency, fromYear, toYear, -1, 0));
}

// The third Friday of the month of `day`, or of the next month once that has passed.
int64_t MonthlyExpiry(int64_t day, int monthsAhead) {
    CivilDate date = CivilFromDays(day);
    int64_t expiry = NthWeekdayOfMonth(date.year, date.month, 5, 3);
    if (expiry < day) ++monthsAhead;
    int month = date.month + monthsAhead;
    int year = date.year + (month - 1) / 12;
    month = (month - 1) % 12 + 1;
    return NthWeekdayOfMonth(year, month, 5, 3);
}

std::string Upper(std::string_view text) {
    std::string out(text);
    for (char& c : out) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return out;
}

}  // namespace

unsigned ClassBitOf(int assetType) {
    switch (assetType) {
        case kStock:
            return kStocksBit;
        case kIndex:
            return kIndicesBit;
        case kBond:
            return kBondsBit;
        case kFuture:
            return kFuturesBit;
        case kCurrency:
            return kCurrenciesBit;
        case kOption:
            return kOptionsBit;
        default:
            return 0;
    }
}

Universe::Universe(int64_t anchorDay, unsigned visibleClasses) {
    m_exchanges.assign(std::begin(kExchanges), std::end(kExchanges));
    const int year = CivilFromDays(anchorDay).year;
    for (size_t i = 0; i < m_calendars.size(); ++i) {
        m_calendars[i] = MakeCalendar(static_cast<Schedule>(i), year - 3, year + 2);
    }
    for (const Row& row : kRows) {
        Security s;
        s.symbol = row.symbol;
        s.name = row.name;
        s.assetType = row.assetType;
        s.exchange = row.exchange;
        s.schedule = row.schedule;
        s.basePrice = row.price;
        s.dailyVol = row.vol;
        s.tickSize = row.tick;
        s.displayStyle = row.style;
        s.decimals = row.decimals;
        s.volumeUnit = row.volumeUnit;
        s.maxTicksPerMinute = row.maxTicks;
        s.quietPercent = row.quiet;
        s.eps = row.eps;
        s.dividend = row.dividend;
        s.currency = row.currency;
        s.multiplier = row.multiplier;
        s.underlyingSymbol = row.underlying;
        if (row.assetType == kFuture) {
            // Front months roll on the third Friday; the quarterly index future on March,
            // June, September and December.
            s.expiryDay = MonthlyExpiry(anchorDay, 0);
            if (s.symbol == "@USX") {
                const CivilDate d = CivilFromDays(s.expiryDay);
                s.expiryDay = MonthlyExpiry(anchorDay, (3 - d.month % 3) % 3);
            }
            s.contractText = s.symbol.substr(1) + " front month";
        }
        s.key = HashText(s.symbol);
        m_securities.push_back(std::move(s));
    }
    AddOptions("ACME", 5.0, 0.25, anchorDay);
    AddOptions("GLXS", 10.0, 0.38, anchorDay);
    for (Security& s : m_securities) s.visible = (ClassBitOf(s.assetType) & visibleClasses) != 0;
}

void Universe::AddOptions(const std::string& underlying, double strikeStep, double impliedVol,
                          int64_t anchorDay) {
    static const char* const kMonths[] = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                          "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};
    // Copied out: the pushes below move the vector that holds the underlying.
    const Security* base = Find(underlying);
    const int baseIndex = IndexOf(*base);
    const double baseVol = base->dailyVol;
    const double center = std::round(base->basePrice / strikeStep) * strikeStep;
    for (int ahead = 0; ahead < 2; ++ahead) {
        const int64_t expiry = MonthlyExpiry(anchorDay, ahead);
        const CivilDate date = CivilFromDays(expiry);
        for (int k = -2; k <= 2; ++k) {
            const double strike = center + k * strikeStep;
            for (const char kind : {'C', 'P'}) {
                Security s;
                char text[64];
                std::snprintf(text, sizeof text, "%s%02d%02d%02d%c%d", underlying.c_str(),
                              date.year % 100, date.month, date.day, kind,
                              static_cast<int>(strike));
                s.symbol = text;
                std::snprintf(text, sizeof text, "%s %s%02d %d %c", underlying.c_str(),
                              kMonths[date.month - 1], date.year % 100, static_cast<int>(strike),
                              kind);
                s.contractText = text;
                std::snprintf(text, sizeof text, "%s %04d-%02d-%02d %d %s", underlying.c_str(),
                              date.year, date.month, date.day, static_cast<int>(strike),
                              kind == 'C' ? "Call" : "Put");
                s.name = text;
                s.assetType = kOption;
                s.exchange = 1;
                s.schedule = Schedule::kUsEquity;
                s.basePrice = 0;
                s.dailyVol = baseVol;
                s.tickSize = 0.01;
                s.displayStyle = 3;
                s.decimals = 2;
                s.volumeUnit = 1;
                s.maxTicksPerMinute = 2;
                s.quietPercent = 55;
                s.multiplier = 100;
                s.underlying = baseIndex;
                s.underlyingSymbol = underlying;
                s.optionKind = kind;
                s.strike = strike;
                s.impliedVol = impliedVol;
                s.expiryDay = expiry;
                s.key = HashText(s.symbol);
                m_securities.push_back(std::move(s));
            }
        }
    }
}

const Security* Universe::Find(std::string_view symbol) const {
    const std::string wanted = Upper(symbol);
    for (const Security& s : m_securities) {
        if (s.visible && Upper(s.symbol) == wanted) return &s;
    }
    return nullptr;
}

int Universe::IndexOf(const Security& security) const {
    return static_cast<int>(&security - m_securities.data());
}

const Exchange* Universe::FindExchange(long number) const {
    for (const Exchange& e : m_exchanges) {
        if (e.number == number) return &e;
    }
    return nullptr;
}

const Exchange& Universe::ExchangeOf(const Security& security) const {
    return *FindExchange(security.exchange);
}

const TradingCalendar& Universe::CalendarOf(const Security& security) const {
    return *m_calendars[static_cast<size_t>(security.schedule)];
}

int Universe::DelaySeconds(const Security& security) const {
    return ExchangeOf(security).delayMinutes * 60;
}

}  // namespace qvnsim
