// The text half of CDoubleToFractRep: the format codes that turn the last search result into
// a price text.
#include <algorithm>
#include <cstring>

#include <qvnrt/CDoubleToFractRep.h>

namespace {

// Shared by every object, as the interface promises: ToString's text stays valid until the
// next call, and neither is reentrant.
char g_toStringBuffer[64];
// Set while the code being expanded carried a '#'.
bool g_plusFlag = false;

bool StartsWithZero(const char* whole) {
    return whole[0] == '0';
}
bool StartsWithMinusZero(const char* whole) {
    return whole[0] == '-' && whole[1] == '0';
}

// The digits after the point of the sub-fraction: in full ("%O") or cut to one digit
// ("%o"), which cuts and does not round (a quarter is "25" or "2").
const char* SubFractionDigits(unsigned subNumerator, unsigned subDenominator, bool full) {
    if (subDenominator == 2) return subNumerator == 0 ? "0" : "5";
    if (subDenominator == 4) {
        switch (subNumerator) {
            case 1:
                return full ? "25" : "2";
            case 2:
                return "5";
            case 3:
                return full ? "75" : "7";
            default:
                return "0";
        }
    }
    return "0";
}

}  // namespace

const char* CDoubleToFractRep::ToString(double value) {
    constexpr int kLast = sizeof(g_toStringBuffer) - 1;
    g_toStringBuffer[kLast] = '\0';
    if (m_rounding == ROUNDING_NEAREST) {
        FindNumeralRepRound(value, m_displayType);
    } else {
        FindNumeralRepTrunc(value, m_displayType);
    }
    Format(m_fractionFormat == FRACTFORMAT_LONG ? "%L" : "%S", g_toStringBuffer, kLast);
    return g_toStringBuffer;
}

int CDoubleToFractRep::Format(const char* format, char* buffer, int size) {
    // A buffer with no room at all gets nothing, not even a terminator.
    if (buffer == nullptr || size <= 0) return 0;
    if (format == nullptr) format = "";

    unsigned int remaining = static_cast<unsigned int>(size);
    char* position = buffer;
    while (remaining > 0 && *format != '\0') {
        if (*format != '%') {
            // Text is 8-bit and taken byte by byte: the library's texts are single-byte, as
            // under the Western code pages, so no character spans two bytes.
            *position++ = *format++;
            --remaining;
            continue;
        }
        g_plusFlag = false;
        ++format;
        if (*format == '#') {
            g_plusFlag = true;
            ++format;
        }
        // A format may not end in a bare "%" or "%#"; stop rather than read past its end.
        if (*format == '\0') break;
        expandFractRep(*format, &position, &remaining);
        ++format;
    }
    if (remaining == 0) return 0;
    *position = '\0';
    return size - static_cast<int>(remaining);
}

void CDoubleToFractRep::expandFractRep(char code, char** position, unsigned int* remaining) {
    const NUMERAL_REPRESENTATION& rep = m_numeralRep;
    // The record is public and may be filled by hand: take at most the field's width.
    char whole[sizeof(rep.szWhole) + 1];
    std::memcpy(whole, rep.szWhole, sizeof(rep.szWhole));
    whole[sizeof(rep.szWhole)] = '\0';

    // An inner format runs at the current position with what remains, and the position
    // moves by what it reports. One that ran out of room reports 0: the position stays,
    // although its partial text stands in the buffer.
    const auto expandInner = [&](const char* inner) {
        const int written = Format(inner, *position, static_cast<int>(*remaining));
        *position += written;
        *remaining -= static_cast<unsigned int>(written);
    };

    switch (code) {
        case '%':
            store_str("%", position, remaining);
            break;
        case 'w':
            store_str(whole, position, remaining);
            break;
        case 't':
            store_number(rep.nNumerator, position, remaining);
            break;
        case 'b':
            store_number(rep.nDenominator, position, remaining);
            break;
        case 'T':
            store_number(rep.nSubNumerator, position, remaining);
            break;
        case 'B':
            store_number(rep.nSubDenominator, position, remaining);
            break;
        case 'O':
        case 'o':
            store_str(SubFractionDigits(rep.nSubNumerator, rep.nSubDenominator, code == 'O'),
                      position, remaining);
            break;
        case 'L':
            if (g_plusFlag && whole[0] != '-') store_str("+", position, remaining);
            if (rep.nKind == REP_FRACTION) {
                // Reduction belongs to the long layout alone, and changes the record.
                if (m_bReduce) SimplifyFraction();
                if (rep.nNumerator == 0) {
                    store_str(whole, position, remaining);
                } else if (StartsWithZero(whole)) {
                    expandInner("%t/%b");
                } else if (StartsWithMinusZero(whole)) {
                    expandInner("-%t/%b");
                } else {
                    expandInner("%w %t/%b");
                }
            } else if (rep.nKind == REP_COMPOUND) {
                // No test for a zero numerator: a compound price keeps its fraction at zero.
                if (StartsWithZero(whole)) {
                    expandInner("%t.%O/%b");
                } else if (StartsWithMinusZero(whole)) {
                    expandInner("-%t.%O/%b");
                } else {
                    expandInner("%w %t.%O/%b");
                }
            } else {
                store_str(whole, position, remaining);
            }
            break;
        case 'S':
            if (g_plusFlag && whole[0] != '-') store_str("+", position, remaining);
            if (rep.nKind == REP_DECIMAL) {
                store_str(whole, position, remaining);
            } else if (rep.nKind == REP_FRACTION) {
                expandInner("%w^%t");  // a zero numerator shows as "^0"
            } else if (rep.nKind == REP_COMPOUND) {
                expandInner("%w^%t%o");
            } else {
                expandInner("%w^0");
            }
            break;
        default:
            break;  // an unknown code writes nothing
    }
}

void CDoubleToFractRep::store_str(const char* text, char** position, unsigned int* remaining) {
    if (text == nullptr) return;
    while (*remaining > 0 && *text != '\0') {
        *(*position)++ = *text++;
        --*remaining;
    }
}

void CDoubleToFractRep::store_number(int number, char** position, unsigned int* remaining) {
    char* const first = *position;
    unsigned int magnitude =
        number < 0 ? 0u - static_cast<unsigned int>(number) : static_cast<unsigned int>(number);
    // Least significant digit first, always keeping one place for the terminator, so a
    // number that does not fit loses its leading digits.
    while (*remaining > 1) {
        *(*position)++ = static_cast<char>('0' + magnitude % 10);
        --*remaining;
        magnitude /= 10;
        if (magnitude == 0) break;
    }
    // Only the search's unsigned fields reach here; a sign is written when room is left.
    if (number < 0 && magnitude == 0 && *remaining > 1) {
        *(*position)++ = '-';
        --*remaining;
    }
    // With no digit written there is nothing to reverse, and the buffer stays as it was.
    std::reverse(first, *position);
}
