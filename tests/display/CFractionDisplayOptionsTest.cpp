#include <gtest/gtest.h>

#include <qvnrt/CDoubleToFractRep.h>

#include "platform/Registry.h"
#include "support/TempDir.h"

namespace {

constexpr const char* kKey = "Software\\Quorvane\\FractRep";

void Store(const char* name, uint32_t value) {
    const auto key = qvnrt::platform::RegistryKey::Create(kKey);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->SetDword(name, value));
}

uint32_t Stored(const char* name) {
    const auto key = qvnrt::platform::RegistryKey::Open(kKey);
    uint32_t value = 0xDEADBEEF;
    if (key) key->QueryDword(name, value);
    return value;
}

TEST(CFractionDisplayOptions, EmptyStoreGivesBuiltInDefaults) {
    qvnrt::test::IsolatedHome home;
    const CFractionDisplayOptions options;
    const int expected[10] = {7, 3, 5, 3, 3, 11, 7, 5, 11, 11};
    for (int slot = 0; slot < 10; ++slot) EXPECT_EQ(options.GetDisplayStyle(slot), expected[slot]);
    EXPECT_EQ(options.GetFractRounding(), 0);
    EXPECT_EQ(options.GetDeciRounding(), 0);
    EXPECT_EQ(options.GetFractFormat(), 0);
}

TEST(CFractionDisplayOptions, ReadsStoredValuesAndDefaultsTheMissingOnes) {
    qvnrt::test::IsolatedHome home;
    Store("dispstyle5", 0);  // names compare without regard to case
    Store("DispStyle0", 9);
    Store("FractForm", 1);
    CFractionDisplayOptions options;
    EXPECT_EQ(options.GetDisplayStyle(5), 0);
    EXPECT_EQ(options.GetDisplayStyle(0), 9);
    EXPECT_EQ(options.GetDisplayStyle(1), 3);
    EXPECT_EQ(options.GetFractFormat(), 1);

    // A re-read takes the built-in default for a missing value, not the value held.
    options.SetDisplayStyle(1, DISP_64THS);
    options.ReadRegistry();
    EXPECT_EQ(options.GetDisplayStyle(1), DISP_DEC2);

    // A stored 0 falls back to automatic fractions; the slot itself still says 0.
    EXPECT_EQ(CDoubleToFractRep::displayType(DISP_DEFAULT, options, RTSecurityType(5)),
              DISP_AUTO_FRACT);
}

TEST(CFractionDisplayOptions, WriteStoresStylesAndFractRoundingButNeverTheOtherTwo) {
    qvnrt::test::IsolatedHome home;
    Store("DeciRound", 1);
    CFractionDisplayOptions options;
    options.SetDisplayStyle(9, DISP_128THS);
    options.SetFractRounding(ROUNDING_TRUNCATE);
    options.SetDeciRounding(ROUNDING_NEAREST);
    options.SetFractFormat(FRACTFORMAT_SHORT);
    EXPECT_TRUE(options.WriteRegistry());

    EXPECT_EQ(Stored("DispStyle9"), 13u);
    EXPECT_EQ(Stored("DispStyle0"), 7u);
    EXPECT_EQ(Stored("FractRound"), 1u);
    EXPECT_EQ(Stored("DeciRound"), 1u);           // left as it was
    EXPECT_EQ(Stored("FractForm"), 0xDEADBEEFu);  // never written

    const CFractionDisplayOptions reread;
    EXPECT_EQ(reread.GetDisplayStyle(9), DISP_128THS);
    EXPECT_EQ(reread.GetFractRounding(), ROUNDING_TRUNCATE);
    EXPECT_EQ(reread.GetDeciRounding(), ROUNDING_TRUNCATE);
    EXPECT_EQ(reread.GetFractFormat(), FRACTFORMAT_LONG);
}

TEST(CFractionDisplayOptions, WriteFailsWhenTheStoreCannotBeWritten) {
    qvnrt::test::TempDir dir;
    dir.write("file", "x");
    ::setenv("QVNRT_HOME", dir.file("file/below").c_str(), 1);  // no directory can be made
    CFractionDisplayOptions options;
    EXPECT_EQ(options.GetDisplayStyle(5), 11);
    EXPECT_FALSE(options.WriteRegistry());
    ::unsetenv("QVNRT_HOME");
}

TEST(CFractionDisplayOptions, StaticResolutionBySlotAndStyle) {
    qvnrt::test::IsolatedHome home;
    CFractionDisplayOptions options;
    const int styles[10] = {20, 1, 2, 3, 4, 5, 6, 8, 9, 10};  // one distinct style per slot
    for (int slot = 0; slot < 10; ++slot) options.SetDisplayStyle(slot, E_DISPTYPE(styles[slot]));
    const auto type = [](int t) { return RTSecurityType(t); };
    // Types 1-5 own their slots, 7-10 take 6-9, the rest (0, 6, 11, 98, -1) share slot 0.
    const int slotOfType[][2] = {{0, 0},  {1, 1},  {5, 5},  {6, 0},  {7, 6}, {8, 7},
                                 {10, 9}, {11, 0}, {98, 0}, {-1, 0}, {4, 4}};
    for (const auto& [t, slot] : slotOfType) {
        EXPECT_EQ(CDoubleToFractRep::displayType(DISP_DEFAULT, options, type(t)), styles[slot])
            << "type " << t;
    }
    EXPECT_EQ(CDoubleToFractRep::displayType(DISP_DEC2, options, type(7)), DISP_DEC2);

    options.SetFractFormat(FRACTFORMAT_SHORT);
    options.SetDeciRounding(ROUNDING_TRUNCATE);
    options.SetFractRounding(E_ROUNDING(2));
    options.SetDisplayStyle(3, DISP_DEFAULT);  // effective style 7
    EXPECT_EQ(CDoubleToFractRep::fractionFormat(DISP_DEFAULT, options, type(3)), 0);
    EXPECT_EQ(CDoubleToFractRep::fractionFormat(DISP_AUTO_FRACT, options, type(1)), 0);
    EXPECT_EQ(CDoubleToFractRep::fractionFormat(DISP_DEC4, options, type(3)), 1);
    EXPECT_EQ(CDoubleToFractRep::rounding(DISP_DEFAULT, options, type(3)), 2);
    EXPECT_EQ(CDoubleToFractRep::rounding(DISP_DEC5, options, type(3)), 1);
    EXPECT_EQ(CDoubleToFractRep::rounding(DISP_WHOLE, options, type(3)), 1);
    EXPECT_EQ(CDoubleToFractRep::rounding(DISP_32NDS_QTR_C, options, type(3)), 2);
    EXPECT_EQ(CDoubleToFractRep::rounding(E_DISPTYPE(19), options, type(3)), 0);
    EXPECT_EQ(CDoubleToFractRep::rounding(E_DISPTYPE(-1), options, type(3)), 0);
}

}  // namespace
