#include "store/SecCacheEntry.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/Directories.h"
#include "store/SecCache.h"
#include "store/SecFieldTable.h"
#include "store/StoreHooks.h"
#include "store/StoreState.h"
#include "store/TickFiles.h"

namespace RTSecCache {
namespace {

constexpr uint64_t Bit(int field) { return uint64_t{1} << field; }

void SetError(long* error, long value) {
    if (error) *error = value;
}

bool InRange(int field) { return field >= 0 && field < kFieldCount; }

int ReadInt(FieldKind kind, const unsigned char* place) {
    switch (kind) {
        case FieldKind::Byte: return *place;
        case FieldKind::U16: {
            uint16_t value;
            std::memcpy(&value, place, sizeof(value));
            return value;
        }
        case FieldKind::S16: {
            int16_t value;
            std::memcpy(&value, place, sizeof(value));
            return value;
        }
        default: {
            int32_t value;
            std::memcpy(&value, place, sizeof(value));
            return value;
        }
    }
}

}  // namespace

void SecCacheEntry::touch() { m_record->lastUse = static_cast<uint32_t>(Store().now()); }

bool SecCacheEntry::isPresent(int field) const {
    return InRange(field) && (m_record->presence & Bit(field)) != 0;
}

bool SecCacheEntry::isClosed() const { return isPresent(kClosedBit); }

unsigned char* SecCacheEntry::placeOf(int field, bool allocate) {
    const FieldSlot& slot = FieldSlotOf(field);
    switch (slot.record) {
        case FieldRecord::Sec1:
            return reinterpret_cast<unsigned char*>(m_record) + slot.offset;
        case FieldRecord::Sec2: {
            // A read never makes a record: a field without one reads as never received.
            SecData2* extended = allocate ? secData2()
                                          : Store().secCache().existingSecData2(m_record->secData2Index);
            return extended ? reinterpret_cast<unsigned char*>(extended) + slot.offset : nullptr;
        }
        default:
            return nullptr;
    }
}

// The bytes of a present field that one of `reads` answers. Otherwise null, with -4 in the
// error word; but an id of 60 or more, outside the presence bits, gives null and leaves the
// error word as it was. Kept: callers rely on the difference.
const unsigned char* SecCacheEntry::readable(int field, std::initializer_list<FieldRead> reads,
                                             long* error) {
    touch();
    if (!InRange(field)) return nullptr;
    const FieldRead read = FieldSlotOf(field).read;
    const bool answers = std::find(reads.begin(), reads.end(), read) != reads.end();
    const unsigned char* place = answers && isPresent(field) ? placeOf(field, false) : nullptr;
    SetError(error, place ? 0 : -4);
    return place;
}

int SecCacheEntry::getSecInt(int field, long* error) {
    if (!Store().enabled()) return 0;
    const unsigned char* place = readable(field, {FieldRead::Int, FieldRead::IntAsFloat}, error);
    return place ? ReadInt(FieldSlotOf(field).kind, place) : 0;
}

float SecCacheEntry::getSecFloat(int field, long* error) {
    if (!Store().enabled()) return 0.0f;
    const unsigned char* place =
        readable(field, {FieldRead::Float, FieldRead::IntAsFloat}, error);
    if (!place) return 0.0f;
    const FieldSlot& slot = FieldSlotOf(field);
    if (slot.read == FieldRead::IntAsFloat) return static_cast<float>(ReadInt(slot.kind, place));
    float value;
    std::memcpy(&value, place, sizeof(value));
    return value;
}

const char* SecCacheEntry::getSecString(int field, long* error) {
    if (!Store().enabled()) return nullptr;
    const unsigned char* place = readable(field, {FieldRead::String}, error);
    if (!place) return nullptr;
    // A text damaged in the file may fill its field without a terminator; it is cut at the
    // field's last byte, so that no reader runs on into the next field or past the mapping.
    // Written only when missing: a clean record's page stays clean.
    char* text = reinterpret_cast<char*>(const_cast<unsigned char*>(place));
    const uint8_t width = FieldSlotOf(field).capacity;
    if (width > 0 && text[width - 1] != '\0') text[width - 1] = '\0';
    return text;
}

bool SecCacheEntry::storeSecField(unsigned long, int code, int field, int, void* data) {
    if (!Store().enabled()) return false;
    if (code < 0) {
        // The service rejected the symbol: its fields drop out of view; the bytes remain.
        m_record->presence = Bit(kClosedBit);
        return false;
    }
    m_record->lastStore = static_cast<uint32_t>(Store().now());
    if (!InRange(field)) return true;
    m_record->presence |= Bit(field);
    if (field == 0) {
        m_record->presence &= ~Bit(kClosedBit);  // a rejected symbol recovers here
        return true;
    }
    const FieldSlot& slot = FieldSlotOf(field);
    // Field 1 is the key and stores nothing; a callback without data stores nothing either.
    if (field == 1 || !data) return true;
    unsigned char* place = placeOf(field, true);
    if (!place) return true;
    switch (slot.kind) {
        case FieldKind::Text: {
            char* text = reinterpret_cast<char*>(place);
            std::strncpy(text, static_cast<const char*>(data), slot.capacity - 1u);
            text[slot.capacity - 1] = '\0';
            break;
        }
        case FieldKind::Float: {
            // Field 4 arrives as a double; every other float as a float.
            const float value = field == 4 ? static_cast<float>(*static_cast<const double*>(data))
                                           : *static_cast<const float*>(data);
            std::memcpy(place, &value, sizeof(value));
            break;
        }
        case FieldKind::Byte:
            *place = static_cast<uint8_t>(*static_cast<const int32_t*>(data));
            break;
        case FieldKind::U16:
        case FieldKind::S16: {
            const uint16_t value = static_cast<uint16_t>(*static_cast<const int32_t*>(data));
            std::memcpy(place, &value, sizeof(value));
            break;
        }
        case FieldKind::I32:
            std::memcpy(place, data, sizeof(int32_t));
            break;
        case FieldKind::None:
            break;
    }
    return true;
}

bool SecCacheEntry::sessionInfo(SESSION_INFO*& session, HOLIDAYS_INFO*& holidays) {
    session = &m_record->session;
    holidays = nullptr;  // holidays are not cached
    return m_record->session.size != 0;
}

void SecCacheEntry::applySecChange(const RTSecChange* change) {
    if (!change || change->kind != 'S') return;
    m_record->presence = 0;
    destroyTickStores(*this);
}

}  // namespace RTSecCache
