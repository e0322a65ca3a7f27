// Every price from -99999.99 to 99999.99 in steps of 0.01, in every style and both layouts,
// must render without a crash and within its buffer. The rounding alternates with the cent,
// and the alternation flips with each whole number, so every cent of a unit meets both
// searches within two units. Styles whose search is another style's, branch for branch
// (0 is automatic fractions; 15 and 18 are 14; 17 is 16), take every eleventh cent: a
// sample to catch them drifting apart. Builds without optimisation or with instrumentation
// sweep every QVNRT_SWEEP_STRIDE-th cent of every style (see CMakeLists.txt).
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <qvnrt/CDoubleToFractRep.h>

#ifndef QVNRT_SWEEP_STRIDE
#define QVNRT_SWEEP_STRIDE 1
#endif

namespace {

constexpr long kLastCent = 9999999;  // 99999.99
constexpr int kStyleCount = 19;
constexpr int kToStringSize = 64;  // ToString's shared buffer
constexpr int kCanaryBytes = 16;
constexpr unsigned char kCanary = 0xA5;
constexpr long kTwinStride = 11;  // prime to the 63 buffer sizes, odd for the rounding

long StrideOf(int style) {
    const bool twin = style == DISP_DEFAULT || style == DISP_32NDS_QTR_B || style == DISP_32NDS_QTR_C ||
                      style == DISP_64THS_HALF_B;
    return twin ? kTwinStride * QVNRT_SWEEP_STRIDE : QVNRT_SWEEP_STRIDE;
}

TEST(PriceSweep, EveryCentInEveryStyleRendersWithinItsBuffer) {
    CDoubleToFractRep rep;
    rep.m_fractionFormat = FRACTFORMAT_LONG;
    // One buffer for the whole sweep; only the canary after the current size is reset.
    unsigned char buffer[kToStringSize - 1 + kCanaryBytes];
    char* const text = reinterpret_cast<char*>(buffer);
    unsigned char canary[kCanaryBytes];
    std::memset(canary, kCanary, sizeof(canary));

    long checked = 0;
    long expected = 0;
    long failures = 0;
    std::string firstFailure;
    const auto fail = [&](int style, double value, const char* what) {
        if (failures++ == 0) {
            firstFailure = "style " + std::to_string(style) + ", " + std::to_string(value) + ": " + what;
        }
    };

    for (int style = 0; style < kStyleCount; ++style) {
        rep.m_displayType = static_cast<E_DISPTYPE>(style);
        const long stride = StrideOf(style);
        expected += 2 * kLastCent / stride + 1;
        for (long cents = -kLastCent; cents <= kLastCent; cents += stride) {
            const double value = static_cast<double>(cents) / 100.0;
            rep.m_rounding = ((cents + cents / 100) & 1) != 0 ? ROUNDING_TRUNCATE : ROUNDING_NEAREST;
            // Long layout through ToString: the text must end inside the shared buffer and
            // leave its last byte, which ToString clears first, untouched.
            const char* shown = rep.ToString(value);
            if (shown[kToStringSize - 1] != '\0' || shown[0] == '\0' ||
                strnlen(shown, kToStringSize) >= kToStringSize - 1) {
                fail(style, value, "long layout");
            }
            // Short layout through Format, on the record the search just left, into a
            // buffer whose size cycles through 1 to 63 so that every price also meets the
            // size limits; the canary right after it catches a write past the end.
            const int size = 1 + static_cast<int>((cents + kLastCent) % (kToStringSize - 1));
            std::memcpy(buffer + size, canary, kCanaryBytes);
            const int written = rep.Format("%S", text, size);
            if (written < 0 || written >= size || (written > 0 && text[written] != '\0') ||
                std::memcmp(buffer + size, canary, kCanaryBytes) != 0) {
                fail(style, value, "short layout");
            }
            ++checked;
        }
    }
    EXPECT_EQ(failures, 0) << "first: " << firstFailure;
    EXPECT_EQ(checked, expected);
}

}  // namespace
