#include "QuoteFields.h"

#include <algorithm>
#include <limits>

#include <qvnrt/driver.h>

#include "CivilDate.h"

namespace qvnsim {

namespace {

FieldValue Text(const std::string& value) {
    FieldValue v;
    v.type = RTDATA_TEXT;
    v.text = value;
    return v;
}

FieldValue Integer(int64_t value) {
    FieldValue v;
    v.type = RTDATA_INT;
    v.integer = static_cast<int32_t>(std::clamp<int64_t>(value, std::numeric_limits<int32_t>::min(),
                                                         std::numeric_limits<int32_t>::max()));
    return v;
}

// A Date value keeps all 32 bits, so it goes through unsigned and is carried as the bits.
FieldValue DateField(int64_t unixSeconds) {
    FieldValue v;
    v.type = RTDATA_INT;
    v.integer = static_cast<int32_t>(ToDateValue(unixSeconds));
    return v;
}

FieldValue Single(double value) {
    FieldValue v;
    v.type = RTDATA_FLOAT;
    v.single = static_cast<float>(value);
    return v;
}

// Noon GMT of a day, as the library stores a date without a time of day.
int64_t Noon(int64_t day) {
    return day * kSecondsPerDay + 43200;
}

}  // namespace

bool FieldValue::operator==(const FieldValue& other) const {
    if (type != other.type) return false;
    switch (type) {
        case RTDATA_TEXT:
            return text == other.text;
        case RTDATA_DOUBLE:
            return real == other.real;
        case RTDATA_FLOAT:
            return single == other.single;
        default:
            return integer == other.integer;
    }
}

void* FieldValue::Data() {
    switch (type) {
        case RTDATA_TEXT:
            return text.data();
        case RTDATA_DOUBLE:
            return &real;
        case RTDATA_FLOAT:
            return &single;
        default:
            return &integer;
    }
}

bool QuoteFields::Serves(int field) {
    if (field < 1 || field > 59) return false;
    return !((field >= 22 && field <= 25) || field == 29 || field == 30);
}

FieldValue QuoteFields::Encode(int field, const Security& security, const Exchange& exchange,
                               int sessionsPerDay, const Snapshot& snap) {
    const bool open = snap.session >= 0;
    const double change = snap.prevClose != 0 ? snap.last - snap.prevClose : 0.0;
    switch (field) {
        case 1:
            return Text(security.symbol);
        case 2:
            return Text(security.name);
        case 3:
            return Integer(security.assetType);
        case 4: {
            FieldValue v;
            v.type = RTDATA_DOUBLE;
            v.real = snap.last;
            return v;
        }
        case 5:
            return Single(snap.prevClose);
        case 6:
            return DateField(snap.lastTime);  // time of the last trade
        case 7:
            return Integer(exchange.delayMinutes > 0 ? RTFLAG_DELAYED : 0);
        case 8:
            return Integer(exchange.number);
        case 9:
            return Integer(exchange.delayMinutes);  // minutes of delay
        case 10:
            return Single(snap.high);
        case 11:
            return Single(snap.low);
        case 12:
            return Single(snap.open);
        case 13:
            return Single(snap.bid);
        case 14:
            return Single(snap.ask);
        case 15:
            return Integer(snap.volume);  // total volume today
        case 16:
            return Integer(snap.lastSize);  // size of the last trade
        case 17:
            return Integer(snap.bidSize);
        case 18:
            return Integer(snap.askSize);
        case 19:
            return Integer(security.volumeUnit ? exchange.number : 0);  // bid exchange
        case 20:
            return Integer(security.volumeUnit ? exchange.number : 0);  // ask exchange
        case 21:
            return Integer(std::max(1, security.volumeUnit));  // round lot
        case 26:
            return DateField(Noon(snap.day));  // the trading day
        case 27:
            return Single(snap.yearHigh);
        case 28:
            return Single(snap.yearLow);
        case 31:
            return Single(security.eps);
        case 32:
            return Single(security.eps > 0 ? snap.last / security.eps : 0.0);
        case 33:
            return Single(security.dividend);  // a year's dividend or coupon
        case 34:
            return Single(snap.last > 0 ? 100.0 * security.dividend / snap.last : 0.0);
        case 35:
            return Integer(open ? 1 : 0);  // trading now
        case 36:
            return Integer(security.currency);  // 1 USD, 2 GBP, 3 JPY
        case 37:
            return Single(security.strike);
        case 38:
            return Integer(security.decimals);
        case 39:
            return Integer(snap.openInterest);
        case 40:
            return Single(security.impliedVol * 100.0);  // implied volatility, percent
        case 41:
            return Text(security.underlyingSymbol);
        case 42:
            return Text(security.contractText);
        case 43:
            return Integer(security.multiplier);
        case 44:
            return Integer(security.optionKind);  // 'C', 'P' or 0
        case 45:                                  // days to expiry
            return Integer(security.expiryDay ? std::max<int64_t>(0, security.expiryDay - snap.day)
                                              : 0);
        case 46:
            return Integer(open ? snap.session : 255);  // session now trading
        case 47:
            return DateField(security.expiryDay ? Noon(security.expiryDay) : 0);
        case 48:
            return Integer(snap.prevVolume);
        case 49:
            return Integer(sessionsPerDay);
        case 50:
            return Integer(0);  // halted: never
        case 51:
            return Integer(exchange.number);  // exchange of the last trade
        case 52:
            return Integer(open ? 0 : 1);  // 1: the quote is a closing one
        case 53:
            return Single(snap.vwap);
        case 54:
            return Single(snap.prevClose);  // previous settlement
        case 55:
            return Single(change);  // net change
        case 56:
            return Integer(snap.trades);
        case 57:
            return DateField(snap.quoteTime);
        case 58:
            return Integer(security.displayStyle);
        case 59:
            return Integer(snap.tickDirection);
        default:
            return Integer(0);
    }
}

const std::string& QuoteFields::DefaultFields() {
    static const std::string fields = [] {
        std::string s;
        for (const int f : {1, 2, 3, 4, 5, 6, 7, 59, 8}) s.push_back(static_cast<char>(f));
        for (int f = 10; f <= 18; ++f) s.push_back(static_cast<char>(f));
        s.push_back(27);
        s.push_back(28);
        for (int f = 31; f <= 39; ++f) s.push_back(static_cast<char>(f));
        for (int f = 41; f <= 58; ++f) s.push_back(static_cast<char>(f));
        return s;
    }();
    return fields;
}

}  // namespace qvnsim
