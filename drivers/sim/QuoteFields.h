// The simulation's field vocabulary: what each field identifier of a quote means and in
// which data type it travels.
//
// Text fields go as RTDATA_TEXT, field 4 as a double, the library's float fields as floats,
// and every integer field, bytes and 16-bit values included, as a 32-bit integer. Times
// (fields 6, 26, 47, 57) are Date values.
#pragma once

#include <cstdint>
#include <string>

#include "Market.h"

namespace qvnsim {

struct FieldValue {
    int type = 0;  // RTDATA_*
    int32_t integer = 0;
    float single = 0;
    double real = 0;
    std::string text;

    bool operator==(const FieldValue& other) const;
    // The address to hand to a callback; valid while this value lives.
    void* Data();
};

class QuoteFields {
public:
    // False for identifiers that have no storage in the library (22 to 25, 29, 30) or
    // lie outside 1 to 59: those are not sent.
    static bool Serves(int field);
    static FieldValue Encode(int field, const Security& security, const Exchange& exchange,
                             int sessionsPerDay, const Snapshot& snapshot);
    // The library's own default field string.
    static const std::string& DefaultFields();
};

}  // namespace qvnsim
