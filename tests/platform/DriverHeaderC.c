/* The driver contract compiled as C11: its static asserts check the record layouts in C as
 * well, and the sizes found here are compared with C++'s by DriverHeaderTest.cpp. */
#include <qvnrt/driver.h>

size_t qvn_test_c_layout(int which);

size_t qvn_test_c_layout(int which) {
    static const size_t layouts[] = {
        sizeof(RTPRICEREC),
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
        sizeof(SecurityCallback),
    };
    const int count = (int)(sizeof(layouts) / sizeof(layouts[0]));
    return which >= 0 && which < count ? layouts[which] : 0;
}
