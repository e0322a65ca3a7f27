/// \file
/// CFractionDisplayOptions: the user's choice of a price style for each asset type, with the
/// rounding and layout of the result, kept in the registry store under
/// `Software\Quorvane\FractRep`.
#pragma once

#include <qvnrt/export.h>

/// The display styles. The values are stored and compared as numbers, so 14, 15 and 18 stay
/// distinct, as do 16 and 17, although each group renders the same.
enum E_DISPTYPE : int {
    DISP_DEFAULT = 0,  ///< nothing requested: take the style from the options
    DISP_WHOLE = 1,
    DISP_DEC1 = 2,
    DISP_DEC2 = 3,
    DISP_DEC3 = 4,
    DISP_DEC4 = 5,
    DISP_DEC5 = 6,
    DISP_AUTO_FRACT = 7,  ///< fraction chosen by the value's size, in lowest terms
    DISP_4THS = 8,
    DISP_8THS = 9,
    DISP_16THS = 10,
    DISP_32NDS = 11,
    DISP_64THS = 12,
    DISP_128THS = 13,
    DISP_32NDS_QTR_A = 14,  ///< thirty-seconds with quarters of a thirty-second
    DISP_32NDS_QTR_B = 15,
    DISP_64THS_HALF_A = 16,  ///< sixty-fourths with halves of a sixty-fourth
    DISP_64THS_HALF_B = 17,
    DISP_32NDS_QTR_C = 18,
};

/// 0 rounds to the nearest; any other value truncates.
enum E_ROUNDING : int { ROUNDING_NEAREST = 0, ROUNDING_TRUNCATE = 1 };

/// 0 is the long layout ("12 3/8"); any other value the short one ("12^3").
enum E_FRACTFORMAT : int { FRACTFORMAT_LONG = 0, FRACTFORMAT_SHORT = 1 };

/// The price style, rounding and layout chosen for each asset type, read from and written
/// to the registry store.
class QVNRT_API CFractionDisplayOptions {
public:
    /// Built-in styles, zero rounding and layout, then whatever the registry store holds.
    CFractionDisplayOptions();
    CFractionDisplayOptions(const CFractionDisplayOptions&) = default;
    CFractionDisplayOptions& operator=(const CFractionDisplayOptions&) = default;

    /// The slot is not checked: 0 to 9 are the valid ones.
    E_DISPTYPE GetDisplayStyle(int slot) const { return m_style[slot]; }
    void SetDisplayStyle(int slot, E_DISPTYPE style) { m_style[slot] = style; }
    E_ROUNDING GetFractRounding() const { return m_fractRounding; }
    void SetFractRounding(E_ROUNDING rounding) { m_fractRounding = rounding; }
    E_ROUNDING GetDeciRounding() const { return m_deciRounding; }
    void SetDeciRounding(E_ROUNDING rounding) { m_deciRounding = rounding; }
    E_FRACTFORMAT GetFractFormat() const { return m_fractFormat; }
    void SetFractFormat(E_FRACTFORMAT format) { m_fractFormat = format; }

    /// Reads every value; a missing one takes its built-in default, never the value held.
    void ReadRegistry();
    /// Stores the ten styles and "FractRound". "DeciRound" and "FractForm" are only read
    /// back, never stored (kept: applications rely on WriteRegistry leaving them alone).
    /// False when any store failed; the others are still attempted.
    bool WriteRegistry() const;

protected:
    /// The value under `Software\Quorvane\<subKey>`; defaultValue when the key or the value is
    /// missing.
    unsigned long GetRegistryDword(const char* subKey, const char* valueName,
                                   unsigned long defaultValue) const;
    /// Creates the key if needed and stores the value; 0, or -1 when the store failed.
    int SetRegistryDword(const char* subKey, const char* valueName, unsigned long value) const;

public:
    E_DISPTYPE m_style[10];      ///< by style slot
    E_ROUNDING m_fractRounding;  ///< of fraction styles
    E_ROUNDING m_deciRounding;   ///< of whole and decimal styles
    E_FRACTFORMAT m_fractFormat;
};
