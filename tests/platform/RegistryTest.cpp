#include "platform/Registry.h"

#include <optional>
#include <string>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace qvnrt::platform {
namespace {

constexpr char kRealTime[] = "Software\\Quorvane\\RealTime";

// A value as read back, or nothing when the read fails.
std::optional<std::string> StringOf(const RegistryKey& key, const std::string& name) {
    std::string text;
    if (!key.QueryString(name, text)) return std::nullopt;
    return text;
}

std::optional<uint32_t> DwordOf(const RegistryKey& key, const std::string& name) {
    uint32_t number = 0;
    if (!key.QueryDword(name, number)) return std::nullopt;
    return number;
}

class RegistryTest : public ::testing::Test {
protected:
    std::string File() const { return home.config().read("user.reg"); }
    void WriteFile(const std::string& text) const { home.config().write("user.reg", text); }

    test::IsolatedHome home;
};

TEST_F(RegistryTest, WritesRegeditSyntaxAndReadsItBack) {
    auto key = RegistryKey::Create(kRealTime);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->SetString("RealTime DLL", "Client.DLL"));
    ASSERT_TRUE(key->SetDword("DispStyle0", 7));
    EXPECT_EQ(
        "REGEDIT4\n\n"
        "[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n"
        "\"RealTime DLL\"=\"Client.DLL\"\n"
        "\"DispStyle0\"=dword:00000007\n\n",
        File());

    auto reopened = RegistryKey::Open(kRealTime);
    ASSERT_TRUE(reopened);
    EXPECT_EQ("Client.DLL", StringOf(*reopened, "RealTime DLL"));
    EXPECT_EQ(7u, DwordOf(*reopened, "DispStyle0"));

    // Each type is read only as itself, and a missing value is a failure.
    EXPECT_FALSE(DwordOf(*reopened, "RealTime DLL"));
    EXPECT_FALSE(StringOf(*reopened, "DispStyle0"));
    EXPECT_FALSE(StringOf(*reopened, "Absent"));

    // Setting again replaces in place; a full 32-bit value survives.
    ASSERT_TRUE(reopened->SetDword("DispStyle0", 0xFFFFFFFFu));
    EXPECT_EQ(0xFFFFFFFFu, DwordOf(*reopened, "DispStyle0"));
    EXPECT_NE(std::string::npos, File().find("\"DispStyle0\"=dword:ffffffff\n"));
}

TEST_F(RegistryTest, EscapesBackslashesAndQuotes) {
    auto key = RegistryKey::Create(kRealTime);
    ASSERT_TRUE(key);
    const std::string tricky = "C:\\Program Files\\\"Quorvane\"\\";
    ASSERT_TRUE(key->SetString("Path \"quoted\"", tricky));
    const std::string line = R"("Path \"quoted\""="C:\\Program Files\\\"Quorvane\"\\")";
    EXPECT_NE(std::string::npos, File().find(line + "\n")) << File();
    EXPECT_EQ(tricky, StringOf(*key, "Path \"quoted\""));

    // A text that the format cannot hold on one line is refused, and nothing changes.
    EXPECT_FALSE(key->SetString("Two lines", "a\nb"));
    EXPECT_FALSE(StringOf(*key, "Two lines"));
}

TEST_F(RegistryTest, NamesCompareWithoutCaseAndKeepTheirFirstSpelling) {
    ASSERT_TRUE(RegistryKey::Create(kRealTime));
    auto key = RegistryKey::Open("SOFTWARE\\quorvane\\realtime");
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->SetString("RealTime DLL", "first.so"));
    ASSERT_TRUE(key->SetString("REALTIME dll", "second.so"));
    EXPECT_EQ("second.so", StringOf(*RegistryKey::Open(kRealTime), "realtime DLL"));

    const std::string file = File();
    EXPECT_NE(std::string::npos, file.find("[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]"));
    EXPECT_NE(std::string::npos, file.find("\"RealTime DLL\"=\"second.so\""));
    EXPECT_EQ(std::string::npos, file.find("REALTIME dll"));
}

TEST_F(RegistryTest, OpeningAKeyWithoutSectionFailsUntilCreated) {
    EXPECT_FALSE(RegistryKey::Open(kRealTime));  // no file at all
    ASSERT_TRUE(RegistryKey::Create("Software\\Quorvane\\FractRep"));
    EXPECT_FALSE(RegistryKey::Open(kRealTime));
    // A parent exists through the key below it, as in the registry.
    EXPECT_TRUE(RegistryKey::Open("Software\\Quorvane"));
    EXPECT_FALSE(RegistryKey::Open("Software\\Quor"));
    // Creating an existing key writes nothing new.
    const std::string before = File();
    ASSERT_TRUE(RegistryKey::Create("software\\quorvane\\fractrep"));
    EXPECT_EQ(before, File());
    // A path no section line can name is refused.
    EXPECT_FALSE(RegistryKey::Create("Software\\\\Quorvane"));
    EXPECT_FALSE(RegistryKey::Create("Software\nQuorvane"));
}

TEST_F(RegistryTest, QueryStringFailsWhenTheValueAndTerminatorExceedTheBuffer) {
    auto key = RegistryKey::Create(kRealTime);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->SetString("Fits", std::string(259, 'x')));
    ASSERT_TRUE(key->SetString("TooLong", std::string(260, 'y')));
    std::string text = "untouched";
    EXPECT_TRUE(key->QueryString("Fits", text, 260));
    EXPECT_EQ(259u, text.size());
    text = "untouched";
    EXPECT_FALSE(key->QueryString("TooLong", text, 260));
    EXPECT_EQ("untouched", text);
    EXPECT_TRUE(key->QueryString("TooLong", text, 261));
    EXPECT_FALSE(key->QueryString("Fits", text, 0));
}

TEST_F(RegistryTest, MalformedFileKeepsItsGoodValuesThroughTheNextWrite) {
    WriteFile(
        "REGEDIT4\r\n"
        "\"Orphan\"=\"no section yet\"\r\n"
        "[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\r\n"
        "\"RealTime DLL\"=\"Client.DLL\"\r\n"
        "this line is garbage\r\n"
        "\"Unterminated\"=\"oops\r\n"
        "\"BadDword\"=dword:xyz\r\n"
        "\"TooWide\"=dword:123456789\r\n"
        "\"Binary\"=hex:01,02,\\\r\n"
        "  03,04\r\n"
        "@=\"default value\"\r\n"
        "[HKEY_CURRENT_USER\\Broken\r\n"
        "\"UnderBroken\"=\"kept with its section\"\r\n"
        "[HKEY_LOCAL_MACHINE\\Software\\Other]\r\n"
        "\"Kept\"=dword:00000001\r\n"
        "[hkey_current_user\\software\\quorvane\\realtime]\r\n"
        "\"DispStyle0\"=dword:00000007\r\n");

    auto key = RegistryKey::Open(kRealTime);
    ASSERT_TRUE(key);
    EXPECT_EQ("Client.DLL", StringOf(*key, "RealTime DLL"));
    EXPECT_EQ(7u, DwordOf(*key, "DispStyle0"));  // a repeated section joins the first
    EXPECT_EQ("default value", StringOf(*key, ""));
    EXPECT_FALSE(StringOf(*key, "Unterminated"));
    EXPECT_FALSE(DwordOf(*key, "BadDword"));
    EXPECT_FALSE(DwordOf(*key, "TooWide"));
    EXPECT_FALSE(RegistryKey::Open("Broken"));

    // What could not be read stays in the file as it stands, carriage returns included; a
    // repeated section joins the first.
    ASSERT_TRUE(key->SetString("Added", "new"));
    EXPECT_EQ(
        "REGEDIT4\n"
        "\"Orphan\"=\"no section yet\"\r\n\n"
        "[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n"
        "\"RealTime DLL\"=\"Client.DLL\"\r\n"
        "this line is garbage\r\n"
        "\"Unterminated\"=\"oops\r\n"
        "\"BadDword\"=dword:xyz\r\n"
        "\"TooWide\"=dword:123456789\r\n"
        "\"Binary\"=hex:01,02,\\\r\n"
        "  03,04\r\n"
        "@=\"default value\"\r\n"
        "\"DispStyle0\"=dword:00000007\r\n"
        "\"Added\"=\"new\"\n\n"
        "[HKEY_CURRENT_USER\\Broken\r\n"
        "\"UnderBroken\"=\"kept with its section\"\r\n\n"
        "[HKEY_LOCAL_MACHINE\\Software\\Other]\n"
        "\"Kept\"=dword:00000001\r\n\n",
        File());
}

TEST_F(RegistryTest, DeleteValueRemovesOnlyThatValue) {
    auto key = RegistryKey::Create(kRealTime);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->SetString("A", "1"));
    ASSERT_TRUE(key->SetString("B", "2"));
    EXPECT_TRUE(key->DeleteValue("a"));
    EXPECT_FALSE(key->DeleteValue("A"));
    EXPECT_FALSE(StringOf(*key, "A"));
    EXPECT_EQ("2", StringOf(*key, "B"));
    EXPECT_TRUE(RegistryKey::Open(kRealTime));  // the key stays, empty or not
}

TEST_F(RegistryTest, ValueSetThroughAKeyWhoseSectionVanishedIsKept) {
    auto key = RegistryKey::Create(kRealTime);
    ASSERT_TRUE(key);
    WriteFile("REGEDIT4\n");  // edited away by hand while the key was open
    ASSERT_TRUE(key->SetString("RealTime DLL", "Client.DLL"));
    EXPECT_EQ("Client.DLL", StringOf(*RegistryKey::Open(kRealTime), "RealTime DLL"));
}

TEST_F(RegistryTest, StoreThatCannotBeReadIsNeverReplaced) {
    // A link to itself: present, but no open(2) can read it.
    ASSERT_EQ(0, ::symlink("user.reg", home.config().file("user.reg").c_str()));
    EXPECT_FALSE(RegistryKey::Create(kRealTime));
    char target[16] = {};
    EXPECT_EQ(8, ::readlink(home.config().file("user.reg").c_str(), target, sizeof(target)));
}

TEST_F(RegistryTest, SettingAValueItAlreadyHasLeavesTheFileAlone) {
    const std::string original =
        "REGEDIT4\n; kept by hand\n\n[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n"
        "\"Last Private Profile\"=\"/p/list.txt\"\n\"n\"=dword:00000003\n";
    WriteFile(original);
    struct stat before;
    ASSERT_EQ(0, ::stat(home.config().file("user.reg").c_str(), &before));
    auto key = RegistryKey::Open(kRealTime);
    ASSERT_TRUE(key);
    EXPECT_TRUE(key->SetString("last private profile", "/p/list.txt"));
    EXPECT_TRUE(key->SetDword("N", 3));
    struct stat after;
    ASSERT_EQ(0, ::stat(home.config().file("user.reg").c_str(), &after));
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(original, File());
}

TEST_F(RegistryTest, ReadOnlyStoreIsNeitherReplacedNorChanged) {
    const std::string original = "REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n";
    WriteFile(original);
    ASSERT_EQ(0, ::chmod(home.config().file("user.reg").c_str(), 0444));
    auto key = RegistryKey::Open(kRealTime);
    ASSERT_TRUE(key);
    EXPECT_FALSE(key->SetString("A", "1"));
    EXPECT_EQ(original, File());
}

TEST_F(RegistryTest, ContinuationBackslashAtTheEndOfTheFileTakesInNothing) {
    WriteFile("REGEDIT4\n[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n"
              "\"Binary\"=hex:01,02,\\");
    auto key = RegistryKey::Open(kRealTime);
    ASSERT_TRUE(key);
    ASSERT_TRUE(key->SetString("Next", "value"));
    std::string text;
    EXPECT_TRUE(RegistryKey::Open(kRealTime)->QueryString("Next", text));
    EXPECT_EQ("value", text);
}

// A FIFO would block the open for ever and /dev/zero would read without end; neither may
// be taken for the store, nor replaced by a write.
class RegistryInPlaceOfTheStore : public RegistryTest,
                                  public ::testing::WithParamInterface<const char*> {};

TEST_P(RegistryInPlaceOfTheStore, IsRefusedWithoutBlocking) {
    const std::string file = home.config().file("user.reg");
    const std::string kind = GetParam();
    if (kind == "fifo") ASSERT_EQ(0, ::mkfifo(file.c_str(), 0644));
    if (kind == "zero") ASSERT_EQ(0, ::symlink("/dev/zero", file.c_str()));
    if (kind == "directory") ASSERT_EQ(0, ::mkdir(file.c_str(), 0755));
    EXPECT_FALSE(RegistryKey::Open(kRealTime));
    EXPECT_FALSE(RegistryKey::Create(kRealTime));
    struct stat status;
    ASSERT_EQ(0, ::lstat(file.c_str(), &status));
    EXPECT_FALSE(S_ISREG(status.st_mode));
}

INSTANTIATE_TEST_SUITE_P(Kinds, RegistryInPlaceOfTheStore,
                         ::testing::Values("fifo", "zero", "directory"));

TEST_F(RegistryTest, TwoProcessesWritingAtOnceLoseNothing) {
    ASSERT_TRUE(RegistryKey::Create(kRealTime));
    constexpr int kWrites = 60;
    pid_t children[2];
    for (int child = 0; child < 2; ++child) {
        children[child] = ::fork();
        ASSERT_GE(children[child], 0);
        if (children[child] == 0) {
            auto key = RegistryKey::Open(kRealTime);
            bool ok = key.has_value();
            for (int i = 0; ok && i < kWrites; ++i) {
                ok = key->SetDword("P" + std::to_string(child) + "_" + std::to_string(i),
                                   static_cast<uint32_t>(i));
            }
            ::_exit(ok ? 0 : 1);
        }
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(child, ::waitpid(child, &status, 0));
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    auto key = RegistryKey::Open(kRealTime);
    ASSERT_TRUE(key);
    for (int child = 0; child < 2; ++child) {
        for (int i = 0; i < kWrites; ++i) {
            const std::string name = "P" + std::to_string(child) + "_" + std::to_string(i);
            EXPECT_EQ(static_cast<uint32_t>(i), DwordOf(*key, name)) << name;
        }
    }
}

TEST(RegistryWithoutHome, FailsWhenThereIsNoConfigDirectory) {
    ::unsetenv("QVNRT_HOME");
    ::unsetenv("XDG_CONFIG_HOME");
    ::unsetenv("HOME");
    EXPECT_EQ("", RegistryFilePath());
    EXPECT_FALSE(RegistryKey::Create(kRealTime));
    EXPECT_FALSE(RegistryKey::Open(kRealTime));
}

}  // namespace
}  // namespace qvnrt::platform
