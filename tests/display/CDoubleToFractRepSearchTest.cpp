#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <string>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/RTSec_Base.h>

namespace {

using Rep = CDoubleToFractRep::NUMERAL_REPRESENTATION;

struct Searched {
    std::string whole;
    int kind, numerator, denominator, subNumerator, subDenominator;
    bool operator==(const Searched&) const = default;
};

void PrintTo(const Searched& s, std::ostream* os) {
    *os << s.whole << " kind " << s.kind << " " << s.numerator << "/" << s.denominator << " "
        << s.subNumerator << "/" << s.subDenominator;
}

Searched Take(CDoubleToFractRep& rep) {
    Rep r;
    rep.GetNumeralRepresentation(&r);
    return {r.szWhole, r.nKind, r.nNumerator, r.nDenominator, r.nSubNumerator, r.nSubDenominator};
}

Searched Round(double value, E_DISPTYPE style) {
    CDoubleToFractRep rep;
    EXPECT_TRUE(rep.FindNumeralRepRound(value, style));
    EXPECT_EQ(rep.m_displayType, style);
    return Take(rep);
}

Searched Trunc(double value, E_DISPTYPE style) {
    CDoubleToFractRep rep;
    EXPECT_TRUE(rep.FindNumeralRepTrunc(value, style));
    return Take(rep);
}

#define EXPECT_FRACTION(searched, w, n, d) \
    do {                                   \
        const Searched s_ = (searched);    \
        EXPECT_EQ(s_.kind, REP_FRACTION);  \
        EXPECT_EQ(s_.whole, w);            \
        EXPECT_EQ(s_.numerator, n);        \
        EXPECT_EQ(s_.denominator, d);      \
    } while (0)

TEST(FractionSearch, RoundingTiesGoAwayFromZero) {
    EXPECT_FRACTION(Round(3.875, DISP_4THS), "4", 0, 4);
    EXPECT_FRACTION(Round(-3.875, DISP_4THS), "-4", 0, 4);
    EXPECT_FRACTION(Round(3.8749, DISP_4THS), "3", 3, 4);
    EXPECT_DOUBLE_EQ(CDoubleToFractRep::RoundFract(-0.125, 0.25), -0.25);
}

TEST(FractionSearch, TruncationTakesValuesWithinTheLoosenessAsTheGridPoint) {
    EXPECT_FRACTION(Trunc(3.3749, DISP_8THS), "3", 3, 8);
    EXPECT_FRACTION(Trunc(3.36, DISP_8THS), "3", 2, 8);
    EXPECT_FRACTION(Trunc(-3.3749, DISP_8THS), "-3", 3, 8);

    CDoubleToFractRep tight;
    EXPECT_TRUE(tight.SetLooseness(0.0, DISP_8THS));
    tight.FindNumeralRepTrunc(3.3749, DISP_8THS);
    EXPECT_FRACTION(Take(tight), "3", 2, 8);
    EXPECT_FALSE(tight.SetLooseness(0.001, DISP_DEC2));
    EXPECT_FALSE(tight.SetLooseness(0.001, DISP_32NDS_QTR_A));  // although 14 reads 128ths'
    EXPECT_EQ(tight.m_looseness[5], 0.00039);
}

TEST(FractionSearch, TheNudgeKeepsDecimalsOffTheGridPointBelow) {
    // 0.3 and 12.34 are stored a hair under their decimal values.
    EXPECT_NEAR(CDoubleToFractRep::TruncFract(0.3, 0.1), 0.3, 1e-12);
    EXPECT_EQ(Trunc(12.34, DISP_DEC2).whole, "12.34");
    EXPECT_EQ(Trunc(12.349, DISP_DEC2).whole, "12.34");
    EXPECT_EQ(Trunc(-12.349, DISP_DEC2).whole, "-12.34");
    EXPECT_EQ(Round(12.345678, DISP_DEC3).whole, "12.346");
    EXPECT_EQ(Round(12.345678, DISP_DEC3).kind, REP_DECIMAL);
}

TEST(FractionSearch, ReductionOnlyForAutomaticFractionsWhoseGridDependsOnSize) {
    EXPECT_FRACTION(Round(0.5, DISP_4THS), "0", 2, 4);
    EXPECT_FRACTION(Round(0.5, DISP_AUTO_FRACT), "0", 1, 2);
    EXPECT_FRACTION(Round(150.5, DISP_AUTO_FRACT), "150", 1, 2);
    // One 128th: kept below 100, a tie rounded up to one 64th at 100 and above.
    EXPECT_FRACTION(Round(99.0078125, DISP_AUTO_FRACT), "99", 1, 128);
    EXPECT_FRACTION(Round(150.0078125, DISP_AUTO_FRACT), "150", 1, 64);
    EXPECT_FRACTION(Round(-99.0078125, DISP_DEFAULT), "-99", 1, 128);
    EXPECT_FRACTION(Round(2.0, E_DISPTYPE(42)), "2", 0, 128);
}

TEST(FractionSearch, SignOfValuesBetweenMinusOneAndZeroSurvives) {
    EXPECT_FRACTION(Round(-0.5, DISP_4THS), "-0", 2, 4);
    EXPECT_FRACTION(Round(-0.001, DISP_4THS), "0", 0, 4);
    EXPECT_FRACTION(Trunc(-0.25, DISP_4THS), "-0", 1, 4);
}

TEST(FractionSearch, CompoundStylesSplitTheLast128th) {
    EXPECT_EQ((Searched{"100", REP_COMPOUND, 8, 32, 2, 4}), Round(100.265625, DISP_32NDS_QTR_A));
    EXPECT_EQ((Searched{"100", REP_COMPOUND, 17, 64, 0, 2}),
              Round(100.265625, DISP_64THS_HALF_B));
    EXPECT_EQ(Round(100.2734375, DISP_32NDS_QTR_C).subNumerator, 3);
}

TEST(FractionSearch, LargeValuesAreWholeNumbersWithinTheField) {
    for (double big : {100000.0, -100000.0}) {
        EXPECT_EQ(Round(big, DISP_8THS).kind, REP_WHOLE);
        EXPECT_EQ(Trunc(big, DISP_DEC2).kind, REP_WHOLE);
    }
    EXPECT_EQ(Round(99999.9, DISP_8THS).kind, REP_FRACTION);
    EXPECT_EQ(Round(123456.7, DISP_8THS).whole, "123457");
    EXPECT_EQ(Trunc(123456.7, DISP_8THS).whole, "123456");
    EXPECT_EQ(Round(2.5, DISP_WHOLE).whole, "2");  // printf's half to even
    EXPECT_EQ(Trunc(-3.9, DISP_WHOLE).whole, "-3");
    // Beyond 32 bits the truncated value is written in full; beyond 1e15 in exponent form.
    EXPECT_EQ(Trunc(3e9 + 0.5, DISP_WHOLE).whole, "3000000000");
    EXPECT_EQ(Trunc(-98765432109876.5, DISP_WHOLE).whole, "-98765432109876");
    EXPECT_EQ(Round(-98765432109876.5, DISP_WHOLE).whole, "-98765432109876");
    EXPECT_EQ(Round(999999999999999.0, DISP_WHOLE).whole, "999999999999999");
    EXPECT_EQ(Round(1e15, DISP_WHOLE).whole, "1e+15");
    EXPECT_EQ(Trunc(-1.7976931348623157e308, DISP_8THS).whole, "-1.79769313486232e+308");
    EXPECT_EQ(Round(INFINITY, DISP_8THS).whole, "inf");
}

TEST(FractionSearch, NothingFoundKeepsThePreviousNumerator) {
    CDoubleToFractRep rep;
    rep.FindNumeralRepRound(0.375, DISP_8THS);
    ASSERT_TRUE(rep.SetLooseness(-1.0, DISP_8THS));  // no candidate can be close enough
    EXPECT_TRUE(rep.FindNumeralRepRound(5.625, DISP_8THS));
    EXPECT_FRACTION(Take(rep), "5", 3, 8);
}

TEST(FractionSearch, ConstructionDefaultsAndFromASecurity) {
    // The default style and rounding show in ToString's tests; the layout and reduction not.
    const CDoubleToFractRep plain;
    EXPECT_EQ(plain.m_fractionFormat, FRACTFORMAT_LONG);
    EXPECT_FALSE(plain.WillFractionReduce());

    CFractionDisplayOptions& options = *CDoubleToFractRep::GetPtrToDefault();
    options.SetDisplayStyle(6, DISP_32NDS_QTR_A);
    options.SetFractFormat(FRACTFORMAT_SHORT);
    options.SetFractRounding(ROUNDING_TRUNCATE);

    // Without a cache record the security's own fields stand in for fields 58 and 3.
    RTSec_Base security;
    security.m_assetType = RTSecurityType(7);
    const CDoubleToFractRep bySlot(&security);
    EXPECT_EQ(bySlot.m_displayType, DISP_32NDS_QTR_A);
    EXPECT_EQ(bySlot.m_fractionFormat, FRACTFORMAT_SHORT);
    EXPECT_EQ(bySlot.m_rounding, ROUNDING_TRUNCATE);

    security.m_field58 = DISP_DEC1;
    const CDoubleToFractRep byOwnStyle(&security);
    EXPECT_EQ(byOwnStyle.m_displayType, DISP_DEC1);
    EXPECT_EQ(byOwnStyle.m_rounding, options.GetDeciRounding());
}

}  // namespace
