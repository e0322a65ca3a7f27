#include "store/SecFieldTable.h"

#include <array>

#include "store/SecData.h"

namespace RTSecCache {
namespace {

using K = FieldKind;
using R = FieldRead;

constexpr FieldSlot None() { return {FieldRecord::None, K::None, 0, 0, R::None}; }
constexpr FieldSlot S1(K kind, uint16_t offset, R read, uint8_t capacity = 0) {
    return {FieldRecord::Sec1, kind, offset, capacity, read};
}
constexpr FieldSlot S2(K kind, uint16_t offset, R read, uint8_t capacity = 0) {
    return {FieldRecord::Sec2, kind, offset, capacity, read};
}

constexpr std::array<FieldSlot, kFieldCount> MakeTable() {
    std::array<FieldSlot, kFieldCount> t{};
    for (auto& slot : t) slot = None();
    t[1] = {FieldRecord::Sec1, K::Text, 0, 20, R::String};  // the key; stores nothing
    t[2] = S1(K::Text, 20, R::String, 32);
    t[3] = S1(K::Byte, 52, R::Int);
    t[4] = S1(K::Float, 132, R::Float);
    t[5] = S1(K::Float, 112, R::Float);
    t[6] = S1(K::I32, 152, R::Int);
    t[7] = S1(K::Byte, 53, R::Int);
    t[8] = S1(K::Byte, 54, R::Int);
    t[9] = S1(K::Byte, 144, R::Int);
    t[10] = S1(K::Float, 96, R::Float);
    t[11] = S1(K::Float, 100, R::Float);
    t[12] = S1(K::Float, 104, R::Float);
    t[13] = S1(K::Float, 156, R::Float);
    t[14] = S1(K::Float, 160, R::Float);
    t[15] = S1(K::I32, 116, R::IntAsFloat);  // the integer, and as a float
    t[16] = S1(K::I32, 136, R::Int);
    t[17] = S1(K::U16, 166, R::Int);
    t[18] = S1(K::U16, 168, R::Int);
    t[19] = S1(K::Byte, 164, R::Int);
    t[20] = S1(K::Byte, 165, R::Int);
    t[21] = S1(K::U16, 146, R::Int);
    t[26] = S1(K::I32, 148, R::Int);
    t[27] = S1(K::Float, 120, R::Float);
    t[28] = S1(K::Float, 124, R::Float);
    t[31] = S1(K::Float, 180, R::Float);
    t[32] = S1(K::Float, 188, R::Float);
    t[33] = S1(K::Float, 176, R::Float);
    t[34] = S1(K::Float, 196, R::Float);
    t[35] = S1(K::Byte, 200, R::Int);
    t[36] = S1(K::Byte, 201, R::Int);
    t[37] = S2(K::Float, 48, R::Float);
    t[38] = S1(K::Byte, 202, R::Int);
    t[39] = S2(K::I32, 56, R::Int);
    t[40] = S2(K::Float, 52, R::Float);
    t[41] = S2(K::Text, 4, R::String, 20);
    t[42] = S2(K::Text, 24, R::String, 20);
    t[43] = S2(K::I32, 60, R::Int);
    t[44] = S2(K::Byte, 64, R::Int);
    t[45] = S2(K::U16, 66, R::Int);
    t[46] = S1(K::Byte, 212, R::Int);
    t[47] = S2(K::I32, 44, R::Int);
    t[48] = S2(K::I32, 68, R::Int);
    t[49] = S1(K::Byte, 128, R::Int);
    t[50] = S1(K::Byte, 129, R::Int);
    t[51] = S1(K::Byte, 130, R::Int);
    t[52] = S1(K::Byte, 131, R::Int);
    t[53] = S1(K::Float, 184, R::Float);
    t[54] = S1(K::Float, 204, R::Float);
    t[55] = S1(K::Float, 192, R::Float);
    t[56] = S1(K::I32, 208, R::Int);
    t[57] = S1(K::I32, 140, R::Int);
    t[58] = S1(K::Byte, 55, R::Int);
    t[59] = S1(K::S16, 170, R::Int);
    return t;
}

constexpr std::array<FieldSlot, kFieldCount> kTable = MakeTable();
constexpr FieldSlot kNoSlot = None();

}  // namespace

const FieldSlot& FieldSlotOf(int field) {
    return (field >= 0 && field < kFieldCount) ? kTable[static_cast<size_t>(field)] : kNoSlot;
}

uint64_t Sec2FieldBits() {
    static const uint64_t bits = [] {
        uint64_t mask = 0;
        for (int field = 0; field < kFieldCount; ++field) {
            if (FieldSlotOf(field).record == FieldRecord::Sec2) mask |= uint64_t{1} << field;
        }
        return mask;
    }();
    return bits;
}

}  // namespace RTSecCache
