#include "platform/IniFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace qvnrt::platform {
namespace {

class IniFileTest : public ::testing::Test {
protected:
    std::string Read(const std::string& section, const std::string& key,
                     const std::string& fallback = "n", size_t bufferSize = 5) {
        return GetPrivateProfileString(section, key, fallback, bufferSize, "QUORVANE.INI");
    }
    test::IsolatedHome home;
};

TEST_F(IniFileTest, MissingFileSectionOrKeyGivesTheDefault) {
    EXPECT_EQ("n", Read("INHOUSEDEVELOPMENT", "SAMEDIRINTF"));
    home.config().write("QUORVANE.INI", "[OTHER]\nSAMEDIRINTF=yes\n[INHOUSEDEVELOPMENT]\nX=1\n");
    EXPECT_EQ("n", Read("INHOUSEDEVELOPMENT", "SAMEDIRINTF"));
    EXPECT_EQ("", Read("INHOUSEDEVELOPMENT", "SAMEDIRINTF", ""));
}

TEST_F(IniFileTest, FileThatIsNoRegularFileGivesTheDefault) {
    const std::string file = home.config().file("QUORVANE.INI");
    ASSERT_EQ(0, ::mkfifo(file.c_str(), 0644));  // an open would wait for a writer for ever
    EXPECT_EQ("n", Read("INHOUSEDEVELOPMENT", "SAMEDIRINTF"));
    ASSERT_EQ(0, ::unlink(file.c_str()));
    ASSERT_EQ(0, ::symlink("/dev/zero", file.c_str()));  // a read would never end
    EXPECT_EQ("n", Read("INHOUSEDEVELOPMENT", "SAMEDIRINTF"));
}

TEST_F(IniFileTest, MalformedFileIsReadAndItsGoodValuesFound) {
    home.config().write("QUORVANE.INI",
                        std::string("garbage before any section\r\n"
                                    "[broken section\r\n"
                                    "=no key\r\n"
                                    "\x01\x02\xff binary\r\n"
                                    "; SAMEDIRINTF=commented\r\n"
                                    "[ inhouseDevelopment ]\r\n"
                                    "no equals sign here\r\n"
                                    "  samedirintf  =  Yes  \r\n"
                                    "LOGDATECALLS=\"T\"\r\n"
                                    "[InHouseDevelopment]\r\n"
                                    "Later=ignored\r\n") +
                            std::string("\0\0tail", 6));
    EXPECT_EQ("Yes", Read("INHOUSEDEVELOPMENT", "SAMEDIRINTF"));
    EXPECT_EQ("T", Read("INHOUSEDEVELOPMENT", "logdatecalls"));  // quotes removed
    EXPECT_EQ("n", Read("INHOUSEDEVELOPMENT", "Later"));  // first matching section only
}

TEST_F(IniFileTest, ValueIsCutToTheBufferLessOne) {
    home.config().write("QUORVANE.INI", "[S]\nK=abcdefgh\n");
    EXPECT_EQ("abcd", Read("S", "K", "n", 5));
    EXPECT_EQ("abcdefgh", Read("S", "K", "n", 9));
    EXPECT_EQ("", Read("S", "K", "n", 1));
    EXPECT_EQ("", Read("S", "K", "n", 0));
    EXPECT_EQ("defa", Read("S", "Missing", "default", 5));  // the default is cut too
}

TEST_F(IniFileTest, NameWithSlashIsReadWhereItSays) {
    home.host().write("other.ini", "[S]\nK=v\n");
    EXPECT_EQ("v", GetPrivateProfileString("S", "K", "", 10, home.host().file("other.ini")));
}

}  // namespace
}  // namespace qvnrt::platform
