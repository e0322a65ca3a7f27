// The search half of CDoubleToFractRep: which whole number and which fraction a double
// stands for. The text half is in CDoubleToFractRepFormat.cpp.
#include <qvnrt/CDoubleToFractRep.h>

#include <cfloat>
#include <cmath>
#include <cstdio>
#include <cstring>

#include <qvnrt/RTSec_Base.h>

#include "display/DisplayStyleSlots.h"

namespace {

// The six fraction grids, by m_looseness index: 4ths, 8ths, 16ths, 32nds, 64ths, 128ths.
constexpr int kGridCount = 6;
constexpr double kGridDenominators[kGridCount] = {4.0, 8.0, 16.0, 32.0, 64.0, 128.0};
// Uneven on purpose: the sixteenths are looser than the eighths.
constexpr double kDefaultLooseness[kGridCount] = {0.00625, 0.00625, 0.007525,
                                                  0.00076, 0.00088, 0.00039};
constexpr int kGrid64ths = 4;
constexpr int kGrid128ths = 5;

// At or beyond this magnitude every style shows a whole number.
constexpr double kWholeOnlyLimit = 100000.0;
// Automatic fractions use 128ths strictly inside this magnitude, 64ths outside it.
constexpr double kAutoFract128thsLimit = 100.0;

// The field holds 25 characters. Whole numbers below 1e15 in magnitude are written digit for
// digit (every integer there is exact in a double, and the text takes at most 16
// characters); larger ones, infinities and NaN in exponent form with 15 significant digits,
// which takes at most 22.
constexpr double kLargestDigitForDigit = 1e15;
// The Windows build converted to a 32-bit int; beyond its range the conversion was undefined.
constexpr double kInt32Limit = 2147483648.0;

const char* const kDecimalFormats[] = {"%.1f", "%.2f", "%.3f", "%.4f", "%.5f"};
constexpr double kDecimalTruncSteps[] = {0.1, 0.01, 0.001, 0.0001, 0.00001};

using Whole = char[sizeof(CDoubleToFractRep::NUMERAL_REPRESENTATION::szWhole)];

void WriteInt(Whole& out, int value) {
    char digits[12];
    int count = 0;
    unsigned magnitude = value < 0 ? 0u - static_cast<unsigned>(value) : value;
    do {
        digits[count++] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    char* position = out;
    if (value < 0) *position++ = '-';
    while (count > 0) *position++ = digits[--count];
    *position = '\0';
}

// "%.0f" of the value (round half to even, as printf does), bounded as above.
void WriteRounded(Whole& out, double value) {
    if (std::fabs(value) < kLargestDigitForDigit) {
        std::snprintf(out, sizeof(out), "%.0f", value);
    } else {
        std::snprintf(out, sizeof(out), "%.15g", value);
    }
}

// The integer conversion, truncated toward zero. Within the 32-bit range this is the
// conversion of the Windows build (so -0.5 gives "0", not "-0"); beyond it the truncated
// value is written in full, bounded as above.
void WriteTruncated(Whole& out, double value) {
    if (std::fabs(value) < kInt32Limit) {
        WriteInt(out, static_cast<int>(value));
    } else {
        WriteRounded(out, std::trunc(value));
    }
}

// The stored record fields are 16 bits; only BuildFraction's own callers know the
// denominators fit, so a derived class passing others gets a clamped value.
uint16_t ToUnsigned16(double value) {
    if (!(value > 0.0)) return 0;
    if (value >= 65535.0) return 65535;
    return static_cast<uint16_t>(value);
}

E_DISPTYPE EffectiveStyle(E_DISPTYPE requested, const CFractionDisplayOptions& options,
                          RTSecurityType type) {
    if (requested != DISP_DEFAULT) return requested;
    const E_DISPTYPE style = options.m_style[qvnrt::display::SlotOfAssetType(type)];
    return style != DISP_DEFAULT ? style : DISP_AUTO_FRACT;
}

}  // namespace

CFractionDisplayOptions CDoubleToFractRep::s_default;

CDoubleToFractRep::CDoubleToFractRep(RTSec_Base* security)
    : m_numeralRep{},
      m_displayType(DISP_DEC3),
      m_fractionFormat(FRACTFORMAT_LONG),
      m_rounding(ROUNDING_NEAREST),
      m_bReduce(false) {
    std::memcpy(m_looseness, kDefaultLooseness, sizeof(m_looseness));
    if (security == nullptr) return;

    // -2 means no live record: the object's own copy of the field stands in. Any other
    // error leaves the defaults. The accessor may leave the error untouched, hence the 0.
    long error = 0;
    int style = security->GetSecInt(58, &error);
    if (error == -2) {
        style = security->m_field58;
    } else if (error != 0) {
        return;
    }
    error = 0;
    int assetType = security->GetSecInt(3, &error);
    if (error == -2) {
        assetType = security->m_assetType;
    } else if (error != 0) {
        return;
    }
    const auto requested = static_cast<E_DISPTYPE>(style);
    const auto type = static_cast<RTSecurityType>(assetType);
    m_displayType = displayType(requested, s_default, type);
    m_fractionFormat = fractionFormat(requested, s_default, type);
    m_rounding = rounding(requested, s_default, type);
}

// ---- Options ------------------------------------------------------------------------------

E_DISPTYPE CDoubleToFractRep::displayType(E_DISPTYPE requested,
                                          const CFractionDisplayOptions& options,
                                          RTSecurityType type) {
    return EffectiveStyle(requested, options, type);
}

E_FRACTFORMAT CDoubleToFractRep::fractionFormat(E_DISPTYPE requested,
                                                const CFractionDisplayOptions& options,
                                                RTSecurityType type) {
    // Automatic fractions may reduce to any denominator, which the short layout cannot show.
    if (EffectiveStyle(requested, options, type) == DISP_AUTO_FRACT) return FRACTFORMAT_LONG;
    return options.m_fractFormat;
}

E_ROUNDING CDoubleToFractRep::rounding(E_DISPTYPE requested, const CFractionDisplayOptions& options,
                                       RTSecurityType type) {
    const int style = EffectiveStyle(requested, options, type);
    if (style >= DISP_WHOLE && style <= DISP_DEC5) return options.m_deciRounding;
    if (style >= DISP_AUTO_FRACT && style <= DISP_32NDS_QTR_C) return options.m_fractRounding;
    return ROUNDING_NEAREST;
}

// ---- Grid arithmetic ----------------------------------------------------------------------

double CDoubleToFractRep::RoundFract(double value, double step) {
    const bool negative = value < 0.0;
    const double limit = negative ? -DBL_MAX : DBL_MAX;
    const double sign = negative ? -1.0 : 1.0;
    // One unit in the last place away from zero, so that a value stored a hair under a grid
    // point or a half step (a decimal fraction, typically) is not taken for the one below.
    double v = std::nextafter(value, limit);
    v += step / 2.0 * sign;
    return v - std::fmod(v, step);
}

double CDoubleToFractRep::TruncFract(double value, double step) {
    const double limit = value < 0.0 ? -DBL_MAX : DBL_MAX;
    const double v = std::nextafter(value, limit);
    return v - std::fmod(v, step);
}

double CDoubleToFractRep::SafeTruncFract(double value, double step, double looseness) {
    const double rounded = RoundFract(value, step);
    if (std::fabs(value - rounded) > looseness) return TruncFract(value, step);
    return rounded;
}

// ---- The search ---------------------------------------------------------------------------

bool CDoubleToFractRep::SetLooseness(double looseness, E_DISPTYPE style) {
    if (style < DISP_4THS || style > DISP_128THS) return false;
    m_looseness[style - DISP_4THS] = looseness;
    return true;
}

void CDoubleToFractRep::GetNumeralRepresentation(NUMERAL_REPRESENTATION* out) {
    if (out != nullptr) *out = m_numeralRep;
}

bool CDoubleToFractRep::BuildFraction(double value, double denominator, double looseness) {
    NUMERAL_REPRESENTATION& rep = m_numeralRep;
    rep.nKind = REP_FRACTION;
    double integerPart = 0.0;
    const double frac = std::fabs(std::modf(value, &integerPart));
    const double upper = frac + looseness;
    const double limit = denominator - 0.1;

    double numerator = 0.0;
    // A fraction within looseness of 1 is not carried into the whole part: the whole comes
    // from value itself, so it keeps its old whole number and shows a zero numerator
    // (kept: it is how prices have always been shown).
    if (upper < 1.0) {
        // From one step below the value upward; the first candidate within the looseness
        // wins, so the lower one takes a tie.
        numerator = std::ceil(frac * denominator) - 1.0;
        if (numerator < 0.0) numerator = 0.0;
        while (numerator < limit) {
            const double candidate = numerator / denominator;
            if (std::fabs(frac - candidate) <= looseness) break;
            if (upper < candidate) {
                numerator = denominator;  // passed the value: nothing found
                break;
            }
            numerator += 1.0;
        }
    }

    bool found = false;
    // Nothing found leaves the numerator of the previous search (kept: callers see the same
    // record as before).
    if (limit > numerator) {
        rep.nNumerator = ToUnsigned16(numerator);
        found = true;
    }
    rep.nDenominator = ToUnsigned16(denominator);
    WriteTruncated(rep.szWhole, value);
    // The integer conversion loses the sign of a value between -1 and 0.
    if (rep.szWhole[0] == '0' && rep.nNumerator > 0 && value < 0.0) {
        std::strcpy(rep.szWhole, "-0");
    }
    return found;
}

void CDoubleToFractRep::SimplifyFraction() {
    NUMERAL_REPRESENTATION& rep = m_numeralRep;
    if (rep.nKind != REP_FRACTION || rep.nNumerator == 0) return;
    // Every denominator is a power of two, so halving while even gives lowest terms.
    while (rep.nNumerator % 2 == 0) {
        rep.nNumerator /= 2;
        rep.nDenominator /= 2;
    }
}

bool CDoubleToFractRep::FindNumeralRepRound(double value, E_DISPTYPE style) {
    return FindNumeralRep(value, style, false);
}

bool CDoubleToFractRep::FindNumeralRepTrunc(double value, E_DISPTYPE style) {
    return FindNumeralRep(value, style, true);
}

bool CDoubleToFractRep::FindNumeralRep(double value, E_DISPTYPE style, bool truncate) {
    NUMERAL_REPRESENTATION& rep = m_numeralRep;
    rep.szWhole[0] = '\0';
    m_displayType = style;

    if (value >= kWholeOnlyLimit || value <= -kWholeOnlyLimit || style == DISP_WHOLE) {
        rep.nKind = REP_WHOLE;
        if (truncate) {
            WriteTruncated(rep.szWhole, value);
        } else {
            WriteRounded(rep.szWhole, value);
        }
        return true;
    }

    if (style >= DISP_DEC1 && style <= DISP_DEC5) {
        rep.nKind = REP_DECIMAL;
        const int decimals = style - DISP_DEC1;
        if (truncate) value = TruncFract(value, kDecimalTruncSteps[decimals]);
        std::snprintf(rep.szWhole, sizeof(rep.szWhole), kDecimalFormats[decimals], value);
        return true;
    }

    const auto snap = [&](int grid) {
        const double step = 1.0 / kGridDenominators[grid];
        const double snapped =
            truncate ? SafeTruncFract(value, step, m_looseness[grid]) : RoundFract(value, step);
        // Whether a numerator was found is deliberately not looked at.
        BuildFraction(snapped, kGridDenominators[grid], m_looseness[grid]);
    };

    if (style >= DISP_4THS && style <= DISP_128THS) {
        snap(style - DISP_4THS);  // not reduced: 2/4 stays 2/4
        return true;
    }

    if (style >= DISP_32NDS_QTR_A && style <= DISP_32NDS_QTR_C) {
        snap(kGrid128ths);
        rep.nKind = REP_COMPOUND;
        // 14, 15 and 18 show quarters of a 32nd; 16 and 17 halves of a 64th.
        const uint16_t parts = (style == DISP_64THS_HALF_A || style == DISP_64THS_HALF_B) ? 2 : 4;
        rep.nDenominator = 128 / parts;
        rep.nSubDenominator = parts;
        rep.nSubNumerator = rep.nNumerator % parts;
        rep.nNumerator /= parts;
        return true;
    }

    // Automatic fractions, and every style without a meaning of its own (0, negatives,
    // above 18).
    const bool small = value > -kAutoFract128thsLimit && value < kAutoFract128thsLimit;
    snap(small ? kGrid128ths : kGrid64ths);
    SimplifyFraction();
    return true;
}
