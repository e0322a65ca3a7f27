#include <qvnrt/driver.h>

#include <gtest/gtest.h>

extern "C" size_t qvn_test_c_layout(int which);

namespace {

TEST(DriverHeader, CAndCppAgreeOnEveryRecordLayout) {
    const size_t cpp[] = {sizeof(RTPRICEREC),
                          sizeof(TICKDATA),
                          sizeof(TICKREC),
                          sizeof(RTINTRADAY_PRICEREC),
                          sizeof(TICKBARREC),
                          sizeof(SESSION_INFO),
                          sizeof(HOLIDAY_ROW),
                          sizeof(HOLIDAYS_INFO),
                          sizeof(RTSecChange),
                          sizeof(RTNetConnectResult),
                          offsetof(RTNetSecChangeBatch, changes),
                          sizeof(ServiceLimit),
                          sizeof(RTProperties),
                          sizeof(RTSecurityType),
                          sizeof(SecurityCallback)};
    const size_t expected[] = {28, 32, 13, 24, 27, 38, 10, 4, 56, 16, 12, 4, 4, 4, 8};
    for (int i = 0; i < static_cast<int>(std::size(cpp)); ++i) {
        EXPECT_EQ(expected[i], qvn_test_c_layout(i)) << "record " << i << " in C";
        EXPECT_EQ(expected[i], cpp[i]) << "record " << i << " in C++";
    }
}

}  // namespace
