#include <qvnrt/CFractionDisplayOptions.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "display/DisplayStyleSlots.h"
#include "platform/Registry.h"

namespace {

constexpr const char* kCompanyKey = "Software\\Quorvane";
constexpr const char* kSubKey = "FractRep";

std::string KeyPath(const char* subKey) {
    std::string path = kCompanyKey;
    path += '\\';
    path += subKey ? subKey : "";
    return path;
}

std::string StyleValueName(int slot) {
    char name[32];
    std::snprintf(name, sizeof(name), "DispStyle%d", slot);
    return name;
}

// The result test of WriteRegistry compares every result with -1. A double word read back
// is 32 bits wide, so it is -1 when all 32 bits are set, as with the 32-bit unsigned long of
// the Windows build.
bool IsMinusOne(unsigned long value) {
    return static_cast<uint32_t>(value) == UINT32_MAX;
}

}  // namespace

CFractionDisplayOptions::CFractionDisplayOptions()
    : m_fractRounding(ROUNDING_NEAREST),
      m_deciRounding(ROUNDING_NEAREST),
      m_fractFormat(FRACTFORMAT_LONG) {
    for (int slot = 0; slot < qvnrt::display::kStyleSlotCount; ++slot) {
        m_style[slot] = qvnrt::display::kBuiltInStyles[slot];
    }
    ReadRegistry();
}

void CFractionDisplayOptions::ReadRegistry() {
    for (int slot = 0; slot < qvnrt::display::kStyleSlotCount; ++slot) {
        m_style[slot] = static_cast<E_DISPTYPE>(GetRegistryDword(
            kSubKey, StyleValueName(slot).c_str(), qvnrt::display::kBuiltInStyles[slot]));
    }
    m_fractRounding =
        static_cast<E_ROUNDING>(GetRegistryDword(kSubKey, "FractRound", ROUNDING_NEAREST));
    m_deciRounding =
        static_cast<E_ROUNDING>(GetRegistryDword(kSubKey, "DeciRound", ROUNDING_NEAREST));
    m_fractFormat =
        static_cast<E_FRACTFORMAT>(GetRegistryDword(kSubKey, "FractForm", FRACTFORMAT_LONG));
}

bool CFractionDisplayOptions::WriteRegistry() const {
    bool result = true;
    for (int slot = 0; slot < qvnrt::display::kStyleSlotCount; ++slot) {
        if (SetRegistryDword(kSubKey, StyleValueName(slot).c_str(),
                             static_cast<uint32_t>(m_style[slot])) == -1) {
            result = false;
        }
    }
    if (SetRegistryDword(kSubKey, "FractRound", static_cast<uint32_t>(m_fractRounding)) == -1) {
        result = false;
    }
    // Kept: these two are read back with the field as default, never stored, so
    // WriteRegistry leaves the stored "DeciRound" and "FractForm" as they were.
    if (IsMinusOne(GetRegistryDword(kSubKey, "DeciRound", static_cast<uint32_t>(m_deciRounding)))) {
        result = false;
    }
    if (IsMinusOne(GetRegistryDword(kSubKey, "FractForm", static_cast<uint32_t>(m_fractFormat)))) {
        result = false;
    }
    return result;
}

unsigned long CFractionDisplayOptions::GetRegistryDword(const char* subKey, const char* valueName,
                                                        unsigned long defaultValue) const {
    const auto key = qvnrt::platform::RegistryKey::Open(KeyPath(subKey));
    if (!key) return defaultValue;
    uint32_t value = 0;
    if (!key->QueryDword(valueName ? valueName : "", value)) return defaultValue;
    return value;
}

int CFractionDisplayOptions::SetRegistryDword(const char* subKey, const char* valueName,
                                              unsigned long value) const {
    const auto key = qvnrt::platform::RegistryKey::Create(KeyPath(subKey));
    if (!key) return -1;
    // A double word holds 32 bits, as the registry's REG_DWORD did.
    return key->SetDword(valueName ? valueName : "", static_cast<uint32_t>(value)) ? 0 : -1;
}
