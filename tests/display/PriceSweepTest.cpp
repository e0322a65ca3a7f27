// Every price from -99999.99 to 99999.99 in steps of 0.01, in every style, both searches and
// both layouts, must render without a crash and within its buffer. One ctest case per
// style, so that ctest -j spreads them. A case takes about 5 to 9 seconds in the plain
// build and 11 to 15 under the sanitizers, so the full sweep runs in both.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <qvnrt/CDoubleToFractRep.h>

namespace {

constexpr long kLastCent = 9999999;  // 99999.99
constexpr int kToStringSize = 64;    // ToString's shared buffer
constexpr unsigned char kCanary = 0xA5;
constexpr uint64_t kCanaryWord = 0xA5A5A5A5A5A5A5A5u;
constexpr int kCanaryBytes = 16;

class PriceSweep : public testing::TestWithParam<int> {};

TEST_P(PriceSweep, EveryCentRendersWithinItsBuffer) {
    const auto style = static_cast<E_DISPTYPE>(GetParam());
    CDoubleToFractRep rep;
    rep.m_displayType = style;
    unsigned char buffer[kToStringSize - 1 + kCanaryBytes];
    char* const text = reinterpret_cast<char*>(buffer);

    long checked = 0;
    long failures = 0;
    std::string firstFailure;
    const auto fail = [&](double value, const char* what) {
        if (failures++ == 0) firstFailure = std::to_string(value) + ": " + what;
    };

    for (long cents = -kLastCent; cents <= kLastCent; ++cents) {
        const double value = static_cast<double>(cents) / 100.0;
        for (const E_ROUNDING rounding : {ROUNDING_NEAREST, ROUNDING_TRUNCATE}) {
            // Long layout through ToString: the text must end inside the shared buffer and
            // leave its last byte, which ToString clears first, untouched.
            rep.m_rounding = rounding;
            rep.m_fractionFormat = FRACTFORMAT_LONG;
            const char* shown = rep.ToString(value);
            if (shown[kToStringSize - 1] != '\0' || shown[0] == '\0' ||
                strnlen(shown, kToStringSize) >= kToStringSize - 1) {
                fail(value, "long layout");
            }
            // Short layout through Format, on the record the search just left, into a
            // buffer whose size cycles through 1 to 63 so that every price also meets the
            // size limits; the canary right after it catches a write past the end.
            const int size = 1 + static_cast<int>((cents + kLastCent) % (kToStringSize - 1));
            std::memset(buffer + size, kCanary, kCanaryBytes);
            const int written = rep.Format("%S", text, size);
            uint64_t canary[kCanaryBytes / sizeof(uint64_t)];
            std::memcpy(canary, buffer + size, sizeof(canary));
            if (written < 0 || written >= size || (written > 0 && text[written] != '\0') ||
                canary[0] != kCanaryWord || canary[1] != kCanaryWord) {
                fail(value, "short layout");
            }
            ++checked;
        }
    }
    EXPECT_EQ(failures, 0) << "first: " << firstFailure;
    EXPECT_EQ(checked, 2 * (2 * kLastCent + 1));
}

INSTANTIATE_TEST_SUITE_P(AllStyles, PriceSweep, testing::Range(0, 19),
                         [](const testing::TestParamInfo<int>& info) {
                             return "Style" + std::to_string(info.param);
                         });

}  // namespace
