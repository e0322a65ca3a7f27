// The records of the security cache files. All integers little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

#include <qvnrt/driver.h>

namespace RTSecCache {

#pragma pack(push, 4)
// One symbol, in Sec1.dat: 260 bytes. A slot is free when its first byte is 0. The fields
// are reached through the field table (SecFieldTable.h) by their offsets; the members name
// the places that the cache itself uses.
struct SecData1 {
    char symbol[20];         //   0: NUL-terminated, at most 19 characters; the map's key
    char name[32];           //  20: field 2
    uint8_t bytes52[4];      //  52: fields 3, 7, 8, 58
    SESSION_INFO session;    //  56: empty when its first 16-bit word is 0
    uint8_t fields94[122];   //  94: the quote fields, by offset
    uint64_t presence;       // 216: bit n set when field n is present; bit 0: closed
    int32_t secData2Index;   // 224: -1 when the symbol has no SecData2
    int32_t reserved228;     // 228: -1 when the record is made
    uint32_t lastStore;      // 232: seconds; written, never read
    uint32_t lastUse;        // 236: seconds; written, never read
    uint8_t reserved240[12];
    uint32_t tikTime;        // 252: when the symbol's .tik file was last committed
    uint32_t tikSize;        // 256: size of the .tik file; a free slot's link
};
#pragma pack(pop)

// One symbol's option and extended fields, in Sec2.dat: 72 bytes.
struct SecData2 {
    int32_t first;        //  0: -1 when the record is made
    char field41[20];     //  4
    char field42[20];     // 24
    uint8_t fields44[28]; // 44: the other fields, by offset; 68 is a free slot's link
};

static_assert(sizeof(SecData1) == 260);
static_assert(offsetof(SecData1, name) == 20);
static_assert(offsetof(SecData1, session) == 56);
static_assert(offsetof(SecData1, presence) == 216);
static_assert(offsetof(SecData1, secData2Index) == 224);
static_assert(offsetof(SecData1, lastStore) == 232);
static_assert(offsetof(SecData1, tikTime) == 252);
static_assert(offsetof(SecData1, tikSize) == 256);
static_assert(sizeof(SecData2) == 72);

constexpr uint32_t kSec1Signature = 0x9432e105;
constexpr uint32_t kSec2Signature = 0x9432e204;
constexpr int kFieldCount = 60;  // presence bits 0 to 59
constexpr int kClosedBit = 0;

}  // namespace RTSecCache
