// DATE.LOG: switched on by QUORVANE.INI, written in the config directory, held open for a
// run of lines.
#include <qvnrt/Date.h>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "calendar/DateLog.h"
#include "support/TempDir.h"

using qvnrt::test::IsolatedHome;

namespace {

void WriteIni(const IsolatedHome& home, const std::string& value) {
    home.config().write(
        "QUORVANE.INI",
        "[Other]\r\nLOGDATECALLS=T\r\n[InHouseDevelopment]\r\nlogdatecalls=" + value + "\r\n");
}

// Whether another open file description could take the log's lock now.
bool LogIsLocked(const IsolatedHome& home) {
    const int fd = ::open(home.config().file("DATE.LOG").c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return false;
    const bool locked = ::flock(fd, LOCK_EX | LOCK_NB) != 0;
    ::close(fd);
    return locked;
}

}  // namespace

TEST(DateLog, StartsASessionWhenTheIniSaysTrue) {
    IsolatedHome home;
    WriteIni(home, "true");
    Date date(DATE_SECONDS_BASE);  // the first Date reads the INI
    EXPECT_TRUE(qvnrt::calendar::dateLogEnabled());
    EXPECT_EQ("\r\nStarting a new session\r\n", home.config().read("DATE.LOG"));
    Date another(date);  // once per process
    EXPECT_EQ("\r\nStarting a new session\r\n", home.config().read("DATE.LOG"));
}

TEST(DateLog, StaysOffForAnyOtherValue) {
    IsolatedHome home;
    WriteIni(home, "Yes");
    Date::dayNumberFromName("Mon");
    EXPECT_FALSE(qvnrt::calendar::dateLogEnabled());
    EXPECT_EQ("", home.config().read("DATE.LOG"));
}

TEST(DateLog, AppendsAndHoldsTheFileOnlyWhenAsked) {
    IsolatedHome home;
    home.config().write("DATE.LOG", "earlier\r\n");
    qvnrt::calendar::writeDateLog("one\r\n");
    EXPECT_FALSE(LogIsLocked(home));  // closed after each write
    {
        qvnrt::calendar::DateLogHold hold;
        qvnrt::calendar::writeDateLogFormat("SESSION_INFO[%d] bSession = %s", 2, "false");
        EXPECT_TRUE(LogIsLocked(home));
        qvnrt::calendar::writeDateLog("\r\n", 2);
    }
    EXPECT_FALSE(LogIsLocked(home));
    EXPECT_EQ("earlier\r\none\r\nSESSION_INFO[2] bSession = false\r\n",
              home.config().read("DATE.LOG"));
}

TEST(DateLog, FifoInPlaceOfTheLogIsPassedOverWithoutWaiting) {
    IsolatedHome home;
    ASSERT_EQ(0, ::mkfifo(home.config().file("DATE.LOG").c_str(), 0644));
    testing::internal::CaptureStderr();
    qvnrt::calendar::writeDateLog("lost\r\n");  // an open for writing would wait for a reader
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStderr().find("DATE.LOG: not a regular file"));
}

TEST(DateLog, DropsTheTextWhenAnotherHolderHasTheFile) {
    IsolatedHome home;
    home.config().write("DATE.LOG", "");
    const int fd = ::open(home.config().file("DATE.LOG").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(0, ::flock(fd, LOCK_EX | LOCK_NB));
    qvnrt::calendar::writeDateLog("lost\r\n");
    ::close(fd);
    qvnrt::calendar::writeDateLog("kept\r\n");
    EXPECT_EQ("kept\r\n", home.config().read("DATE.LOG"));
}
