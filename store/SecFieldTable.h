// Where each field of a security is kept in the cache records, and how it is read.
#pragma once

#include <cstdint>

namespace RTSecCache {

enum class FieldKind : uint8_t { None, Text, Byte, U16, S16, I32, Float };
enum class FieldRecord : uint8_t { None, Sec1, Sec2 };
// Which of the three reads answers a field.
enum class FieldRead : uint8_t { None, Int, Float, IntAsFloat, String };

struct FieldSlot {
    FieldRecord record;
    FieldKind kind;
    uint16_t offset;    // within the record
    uint8_t capacity;   // for text: bytes with the terminator
    FieldRead read;
};

// The slot of a field id; ids outside 0 to 59 have none. Ids 0, 1 (the key), 22 to 25,
// 29 and 30 have no storage.
const FieldSlot& FieldSlotOf(int field);

// The presence bits of the fields kept in a SecData2 record.
uint64_t Sec2FieldBits();

}  // namespace RTSecCache
