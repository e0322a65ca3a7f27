/// \file
/// CDoubleToFractRep: turns a price into display text, as a whole number, a decimal or a
/// fraction, in the style that the display options give its asset type.
///
/// A price that is really 3/8 may arrive a little off, so the search snaps the value to the
/// style's grid and accepts a fraction within a tolerance, the looseness, before the format
/// codes turn the result into text.
#pragma once

#include <cstddef>
#include <cstdint>

#include <qvnrt/CFractionDisplayOptions.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

class RTSec_Base;

/// What NUMERAL_REPRESENTATION::nKind holds.
enum E_NUMERALKIND : uint16_t {
    REP_WHOLE = 0,     ///< szWhole is the complete number
    REP_DECIMAL = 1,   ///< szWhole is the complete number
    REP_FRACTION = 2,  ///< szWhole, then nNumerator / nDenominator
    REP_COMPOUND = 3,  ///< as a fraction, with a fraction of the last unit
};

/// Renders a price in one of the display styles. An object holds the result of its latest
/// search; ToString's text lies in storage shared by all objects and stays valid until the
/// next call (not reentrant).
class QVNRT_API CDoubleToFractRep {
public:
    using enum E_NUMERALKIND;

    /// The parts of a rendered price; copied out whole by GetNumeralRepresentation.
    struct NUMERAL_REPRESENTATION {
        char szWhole[26];  ///< signed whole part, or the complete number; NUL-terminated
        uint16_t nKind;    ///< an E_NUMERALKIND
        uint16_t nNumerator;
        uint16_t nDenominator;
        uint16_t nSubNumerator;    ///< REP_COMPOUND: numerator of the fraction of a fraction
        uint16_t nSubDenominator;  ///< REP_COMPOUND: 2 or 4
    };

    /// Without a security: three decimals, long layout, rounding to the nearest. With one:
    /// the style, layout and rounding that the default options give its own style (field 58)
    /// and asset type (field 3).
    CDoubleToFractRep(RTSec_Base* security = nullptr);
    CDoubleToFractRep(const CDoubleToFractRep&) = default;
    CDoubleToFractRep& operator=(const CDoubleToFractRep&) = default;

    // ---- The search ----

    /// Snap to the style's grid by rounding (ties away from zero) or by truncation, then
    /// record the result. Both always return true.
    bool FindNumeralRepRound(double value, E_DISPTYPE style);
    bool FindNumeralRepTrunc(double value, E_DISPTYPE style);
    /// Styles 8 to 13 only; any other style returns false and stores nothing.
    bool SetLooseness(double looseness, E_DISPTYPE style);
    void GetNumeralRepresentation(NUMERAL_REPRESENTATION* out);
    void SetFractionReduction(bool reduce) { m_bReduce = reduce; }
    bool WillFractionReduce() const { return m_bReduce; }

    /// The grid point nearest to value, ties away from zero.
    static double RoundFract(double value, double step);
    /// The grid point at or toward zero from value.
    static double TruncFract(double value, double step);
    /// A value within looseness of a grid point, above or below, is that point; any other is
    /// cut toward zero.
    static double SafeTruncFract(double value, double step, double looseness);

    // ---- The text ----

    /// Searches as the object is set up and formats with "%L" or "%S". The text lies in a
    /// buffer of 64 characters shared by every object: it is valid until the next call on
    /// any object, and not reentrant.
    const char* ToString(double value);
    /// Expands the format codes (`%w %t %b %T %B %O %o %L %S %%` and `%#L %#S`) into buffer.
    /// Returns the characters written without the terminator, or 0 when no room was left
    /// for the terminator (and then none is written).
    int Format(const char* format, char* buffer, int size);

    // ---- The options ----

    static CFractionDisplayOptions* GetPtrToDefault() { return &s_default; }
    /// The style to use: the requested one, else the asset type's slot, else automatic
    /// fractions.
    static E_DISPTYPE displayType(E_DISPTYPE requested, const CFractionDisplayOptions& options,
                                  RTSecurityType type);
    /// Automatic fractions are always in the long layout; others follow the options.
    static E_FRACTFORMAT fractionFormat(E_DISPTYPE requested,
                                        const CFractionDisplayOptions& options,
                                        RTSecurityType type);
    /// Decimal rounding for styles 1 to 6, fraction rounding for 7 to 18, else nearest.
    static E_ROUNDING rounding(E_DISPTYPE requested, const CFractionDisplayOptions& options,
                               RTSecurityType type);

    /// Read from the registry store once, when the library is loaded; applications change
    /// it through GetPtrToDefault.
    static CFractionDisplayOptions s_default;

protected:
    /// Finds the numerator within looseness of value's fraction part, searching upward from
    /// one step below it. True when one was found; otherwise nNumerator keeps its old value.
    bool BuildFraction(double value, double denominator, double looseness);
    /// Lowest terms, for REP_FRACTION with a non-zero numerator.
    void SimplifyFraction();

    void expandFractRep(char code, char** position, unsigned int* remaining);
    /// Copies text without a terminator while room remains.
    static void store_str(const char* text, char** position, unsigned int* remaining);
    /// Decimal digits, always leaving one place for a terminator; a number that does not fit
    /// loses its leading digits.
    static void store_number(int number, char** position, unsigned int* remaining);

private:
    bool FindNumeralRep(double value, E_DISPTYPE style, bool truncate);

public:
    NUMERAL_REPRESENTATION m_numeralRep;  ///< the last result
    E_DISPTYPE m_displayType;             ///< style of ToString; also overwritten by each search
    E_FRACTFORMAT m_fractionFormat;       ///< layout of ToString
    E_ROUNDING m_rounding;                ///< search of ToString
    double m_looseness[6];                ///< of the grids of 4ths, 8ths, 16ths, 32nds, 64ths, 128ths
    bool m_bReduce;                       ///< reduce plain fractions in the long layout
};

/// The record is copied out whole, so its layout is part of the interface.
static_assert(sizeof(CDoubleToFractRep::NUMERAL_REPRESENTATION) == 36);
static_assert(offsetof(CDoubleToFractRep::NUMERAL_REPRESENTATION, nKind) == 26);
static_assert(offsetof(CDoubleToFractRep::NUMERAL_REPRESENTATION, nNumerator) == 28);
static_assert(offsetof(CDoubleToFractRep::NUMERAL_REPRESENTATION, nDenominator) == 30);
static_assert(offsetof(CDoubleToFractRep::NUMERAL_REPRESENTATION, nSubNumerator) == 32);
static_assert(offsetof(CDoubleToFractRep::NUMERAL_REPRESENTATION, nSubDenominator) == 34);
