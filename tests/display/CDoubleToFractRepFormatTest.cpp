#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <qvnrt/CDoubleToFractRep.h>

namespace {

std::string Text(double value, E_DISPTYPE style, E_FRACTFORMAT layout, bool reduce = false) {
    CDoubleToFractRep rep;
    rep.m_displayType = style;
    rep.m_fractionFormat = layout;
    rep.SetFractionReduction(reduce);
    return rep.ToString(value);
}

// Searches, then formats into a buffer guarded by a canary.
struct Formatted {
    std::string text;
    int result;
    bool canaryIntact;
};

Formatted FormatOf(double value, E_DISPTYPE style, const char* format, int size) {
    CDoubleToFractRep rep;
    rep.FindNumeralRepRound(value, style);
    char buffer[80];
    std::memset(buffer, '#', sizeof(buffer));
    const int result = rep.Format(format, buffer, size);
    bool intact = true;
    for (size_t i = size > 0 ? size : 0; i < sizeof(buffer); ++i) intact &= buffer[i] == '#';
    return {std::string(buffer, strnlen(buffer, size > 0 ? size : 0)), result, intact};
}

TEST(FractionFormat, LongAndShortLayouts) {
    struct Case {
        double value;
        E_DISPTYPE style;
        const char* longText;
        const char* shortText;
    };
    const Case cases[] = {
        {12.375, DISP_8THS, "12 3/8", "12^3"},
        {12.0, DISP_8THS, "12", "12^0"},
        {0.375, DISP_8THS, "3/8", "0^3"},
        {-0.375, DISP_8THS, "-3/8", "-0^3"},
        {-12.375, DISP_8THS, "-12 3/8", "-12^3"},
        {0.5, DISP_4THS, "2/4", "0^2"},
        {0.5, DISP_AUTO_FRACT, "1/2", "0^1"},
        {100.265625, DISP_32NDS_QTR_A, "100 8.5/32", "100^85"},
        {100.2578125, DISP_32NDS_QTR_A, "100 8.25/32", "100^82"},
        {100.2734375, DISP_32NDS_QTR_B, "100 8.75/32", "100^87"},
        {100.265625, DISP_64THS_HALF_A, "100 17.0/64", "100^170"},
        {100.2734375, DISP_64THS_HALF_B, "100 17.5/64", "100^175"},
        {100.0, DISP_32NDS_QTR_A, "100 0.0/32", "100^00"},
        {0.0078125, DISP_32NDS_QTR_C, "0.25/32", "0^02"},
        {-0.0078125, DISP_32NDS_QTR_A, "-0.25/32", "-0^02"},
        {123456.0, DISP_8THS, "123456", "123456^0"},
        {7.4, DISP_WHOLE, "7", "7^0"},
        {12.5, DISP_DEC2, "12.50", "12.50"},
        {-0.001, DISP_DEC2, "-0.00", "-0.00"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Text(c.value, c.style, FRACTFORMAT_LONG), c.longText) << c.value;
        EXPECT_EQ(Text(c.value, c.style, FRACTFORMAT_SHORT), c.shortText) << c.value;
    }
}

TEST(FractionFormat, ReductionBelongsToTheLongLayoutAndChangesTheRecord) {
    EXPECT_EQ(Text(0.5, DISP_4THS, FRACTFORMAT_LONG, true), "1/2");
    EXPECT_EQ(Text(0.5, DISP_4THS, FRACTFORMAT_SHORT, true), "0^2");

    CDoubleToFractRep rep;
    rep.SetFractionReduction(true);
    rep.FindNumeralRepRound(0.5, DISP_4THS);
    char buffer[16];
    ASSERT_EQ(rep.Format("%S %L %S", buffer, sizeof(buffer)), 11);
    EXPECT_STREQ(buffer, "0^2 1/2 0^1");
}

// One search and format: the text written, Format's result, and never a byte past the size.
struct FormatRow {
    double value;
    E_DISPTYPE style;
    const char* format;
    int size;
    std::string text;
    int result;
};

void ExpectFormats(const FormatRow& row) {
    const Formatted out = FormatOf(row.value, row.style, row.format, row.size);
    EXPECT_EQ(row.text, out.text) << row.format << " in " << row.size;
    EXPECT_EQ(row.result, out.result) << row.format << " in " << row.size;
    EXPECT_TRUE(out.canaryIntact) << row.format << " in " << row.size;
}

TEST(FractionFormat, PlusFlagAndSingleCodes) {
    const FormatRow rows[] = {
        {12.5, DISP_DEC2, "%#L", 64, "+12.50", 6},
        {12.5, DISP_DEC2, "%#S", 64, "+12.50", 6},
        {-12.5, DISP_DEC2, "%#L", 64, "-12.50", 6},
        {-0.375, DISP_8THS, "%#L", 64, "-3/8", 4},
        {12.5, DISP_DEC2, "%#w %L", 64, "12.50 12.50", 11},
        {100.2578125, DISP_32NDS_QTR_A, "%w|%t|%b|%T|%B|%O|%o|%%", 64, "100|8|32|1|4|25|2|%", 19},
        {12.0, DISP_8THS, "%w%%", 64, "12%", 3},
        {12.0, DISP_8THS, "%q", 64, "", 0},
    };
    for (const FormatRow& row : rows) ExpectFormats(row);
}

TEST(FractionFormat, SizeLimitsAreKept) {
    const FormatRow rows[] = {
        // Exactly the text's length: no room for the terminator, so 0 and none written.
        {12.375, DISP_8THS, "abcdef", 6, "abcdef", 0},
        {12.375, DISP_8THS, "%L", 7, "12 3/8", 6},
        // An inner layout that runs out reports 0: the position stays and later text
        // overwrites its partial output.
        {12.375, DISP_8THS, "%Lxy", 5, "xy", 2},
        // Numbers keep a place for the terminator and lose their leading digits: here the
        // inner layout ends with room left, and the outer text follows.
        {12.375, DISP_8THS, "%Lxy", 6, "12 3/x", 0},
        {1.0078125, DISP_128THS, "%b", 3, "28", 2},
        {1.0078125, DISP_128THS, "%b", 1, "", 0},
        {1.0, DISP_8THS, "%L", 0, "", 0},
        {1.0, DISP_8THS, "%L", -5, "", 0},
    };
    for (const FormatRow& row : rows) ExpectFormats(row);
}

TEST(FractionFormat, ToStringSearchesAsSetUpIntoOneSharedBuffer) {
    CDoubleToFractRep a;
    CDoubleToFractRep b;
    a.m_displayType = DISP_DEC2;
    b.m_displayType = DISP_DEC2;
    b.m_rounding = ROUNDING_TRUNCATE;
    const char* first = a.ToString(12.349);
    EXPECT_STREQ(first, "12.35");
    const char* second = b.ToString(12.349);
    EXPECT_EQ(first, second);
    EXPECT_STREQ(first, "12.34");
    EXPECT_STREQ(CDoubleToFractRep().ToString(2.0), "2.000");
}

}  // namespace
