#include <qvnrt/CPrivateProfile.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "platform/Registry.h"
#include "support/TempDir.h"

namespace {

constexpr char kDefault[] = "<!!!! - Default - !!!!>";
constexpr char kRealTime[] = "Software\\Quorvane\\RealTime";
constexpr char kLastPath[] = "Last Private Profile";

// Every key of every section, for comparisons that must not depend on the hash order.
std::map<std::string, std::map<std::string, std::string>> Contents(CPrivateProfile& profile) {
    std::map<std::string, std::map<std::string, std::string>> all;
    CString name;
    CMapStringToString* keys = nullptr;
    for (POSITION p = profile.m_sections.GetStartPosition(); p;) {
        profile.m_sections.GetNextAssoc(p, name, keys);
        auto& section = all[name.str()];
        CString key;
        CString value;
        for (POSITION q = keys->GetStartPosition(); q;) {
            keys->GetNextAssoc(q, key, value);
            section[key.str()] = value.str();
        }
    }
    return all;
}

std::string Value(CPrivateProfile& profile, const char* section, const char* key) {
    CString out;
    profile.GetValue(section, key, "<missing>", out);
    return out.str();
}

class PrivateProfileTest : public ::testing::Test {
protected:
    const qvnrt::test::TempDir& dir() const { return home.host(); }
    std::string Path(const char* name) const { return dir().file(name); }

    qvnrt::test::IsolatedHome home;
};

// Exposes the parser, so that text with NUL bytes can be given without a file.
class ParsingProfile : public CPrivateProfile {
public:
    using CPrivateProfile::ParseFileData;
    using CPrivateProfile::ParseLine;
};

TEST_F(PrivateProfileTest, ParsesSectionsKeysAndComments) {
    dir().write("p.txt",
                "a = 1\n"
                "[S]\r\n"
                "b = 2 // note\n"
                "url = http://host/x//y\n"
                "cut = a// b\n"
                "  spaced   =   v w  \n"
                "split=x=y\n"
                "k =\n= v\nnothing\n// only a comment\n"
                "[ a ]\n"
                "c=3\n"
                "[]\n"
                "d=4\n");
    CPrivateProfile profile(Path("p.txt").c_str());
    const auto all = Contents(profile);
    using Keys = std::map<std::string, std::string>;
    EXPECT_EQ((Keys{{"a", "1"}}), all.at(kDefault));
    EXPECT_EQ((Keys{{"b", "2"},
                    {"url", "http://host/x//y"},
                    {"cut", "a"},
                    {"spaced", "v w"},
                    {"split", "x=y"}}),
              all.at("S"));
    EXPECT_EQ((Keys{{"c", "3"}}), all.at(" a "));  // the name stands unstripped
    EXPECT_EQ((Keys{{"d", "4"}}), all.at(""));
    EXPECT_EQ(4u, all.size());
}

TEST_F(PrivateProfileTest, RepeatedLabelStartsTheSectionAfreshAndLaterKeysWin) {
    dir().write("p.txt", "[S]\na=1\nb=1\nb=2\n[T]\nt=1\n[S]\nb=3\n");
    CPrivateProfile profile(Path("p.txt").c_str());
    EXPECT_EQ("<missing>", Value(profile, "S", "a"));
    EXPECT_EQ("3", Value(profile, "S", "b"));
    EXPECT_EQ("1", Value(profile, "T", "t"));
}

TEST_F(PrivateProfileTest, ParseLineRefusesLinesWithoutBothHalves) {
    ParsingProfile profile;
    CString key = "unchanged";
    CString value;
    EXPECT_EQ(0, profile.ParseLine("", key, value));
    EXPECT_EQ(0, profile.ParseLine("no equals", key, value));
    EXPECT_EQ(0, profile.ParseLine("k =", key, value) + profile.ParseLine("k=", key, value));
    EXPECT_EQ("unchanged", key);
    EXPECT_EQ(1, profile.ParseLine(" k = v ", key, value));
    EXPECT_EQ("k", key);
    EXPECT_EQ("v", value);
    EXPECT_EQ(0, profile.ParseFileData(nullptr));
}

TEST_F(PrivateProfileTest, WritesDefaultKeysUnlabelledAndABlankLineBeforeEachLabel) {
    dir().write("p.txt", "old = content\n");
    CPrivateProfile profile(Path("p.txt").c_str());
    ASSERT_EQ(1, profile.RemoveKey(kDefault, "old"));
    ASSERT_EQ(1, profile.SetValue(kDefault, "a", 1));
    ASSERT_EQ(1, profile.CreateSection("S"));
    profile.Write();
    EXPECT_EQ("a = 1\n\n[S]\n", dir().read("p.txt"));
    EXPECT_FALSE(std::filesystem::exists(Path("p.txt.tmp")));
}

TEST_F(PrivateProfileTest, WriteAndReadAgainKeepEverythingButOrderCommentsAndBlanks) {
    dir().write("p.txt", "");
    CPrivateProfile profile(Path("p.txt").c_str());
    for (int i = 0; i < 40; ++i) {
        const std::string n = std::to_string(i);
        profile.SetValue(("S" + std::to_string(i % 7)).c_str(), ("k" + n).c_str(), i);
    }
    profile.SetValue("T", "url", "http://h/a//b");
    profile.SetValue("T", "padded", "  v  ");
    profile.SetValue("T", "cut", "a // b");
    profile.SetValue("T", "ends in //", "kept");  // must not be written as a comment
    profile.Write();

    CPrivateProfile reread(Path("p.txt").c_str());
    auto expected = Contents(profile);
    expected["T"]["padded"] = "v";  // white space comes back trimmed
    expected["T"]["cut"] = "a";     // "// " comes back as a comment
    EXPECT_EQ(expected, Contents(reread));
    EXPECT_EQ(17, reread.GetValue("S3", "k17", -1));
}

TEST_F(PrivateProfileTest, FirstWriteOfANewProfileLeavesOnlyTheTemporaryFile) {
    CPrivateProfile profile(Path("new.txt").c_str());
    profile.SetValue("S", "k", "v");
    profile.Write();
    EXPECT_FALSE(std::filesystem::exists(Path("new.txt")));
    EXPECT_EQ("\n[S]\nk = v\n", dir().read("new.txt.tmp"));
    // Kept: the profile comes into being only once a file stands at its name.
    dir().write("new.txt", "");
    profile.Write();
    EXPECT_EQ("\n[S]\nk = v\n", dir().read("new.txt"));
    EXPECT_FALSE(std::filesystem::exists(Path("new.txt.tmp")));
}

TEST_F(PrivateProfileTest, FailedWritesLeaveTheFileAsItWas) {
    const std::string original = "keep = this\n[S]\nk = v\n";
    dir().write("p.txt", original);
    CPrivateProfile profile(Path("p.txt").c_str());
    for (int i = 0; i < 2000; ++i) profile.SetValue("Big", ("key" + std::to_string(i)).c_str(), i);

    // The temporary file cannot be made: a directory stands at its name.
    std::filesystem::create_directory(Path("p.txt.tmp"));
    profile.Write();
    EXPECT_EQ(original, dir().read("p.txt"));
    std::filesystem::remove(Path("p.txt.tmp"));

    // The temporary file cannot be written in full.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit;
    ASSERT_EQ(0, getrlimit(RLIMIT_FSIZE, &limit));
    const rlimit small{1024, limit.rlim_max};
    ASSERT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    profile.Write();
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(original, dir().read("p.txt"));
    EXPECT_FALSE(std::filesystem::exists(Path("p.txt.tmp")));
}

TEST_F(PrivateProfileTest, FormatKeyDecidesWhetherReadSucceeds) {
    dir().write("typed.txt", "[Type]\n[S]\nk=v\n");
    dir().write("other.txt", "[S]\nk=v\n");
    CPrivateProfile profile;
    profile.SetFileFormatKey("Type");
    EXPECT_EQ(1, profile.Read(Path("typed.txt").c_str()));
    EXPECT_EQ(0, profile.Read(Path("other.txt").c_str()));
    EXPECT_EQ("v", Value(profile, "S", "k"));  // parsed all the same
    EXPECT_EQ(0, profile.IsFileFormatCorrect());

    profile.SetFileFormatKey("Other");
    EXPECT_EQ(1, profile.IsFileFormatCorrect());
    profile.SetFileFormatKey(nullptr);
    EXPECT_EQ(0, profile.RemoveSection("Other"));  // removed with the old key
    EXPECT_EQ(1, profile.IsFileFormatCorrect());
}

TEST_F(PrivateProfileTest, ValueAccessorsRefuseWhatTheyCannotStore) {
    CPrivateProfile profile(nullptr);
    EXPECT_EQ(0, profile.SetValue("S", "k", ""));
    EXPECT_EQ(0, profile.SetValue("S", nullptr, "v") + profile.SetValue("", "k", "v"));
    EXPECT_EQ(0, profile.RemoveSection("S"));  // nothing was created

    EXPECT_EQ(7, profile.GetValue("S", "k", 7));
    EXPECT_EQ(7, profile.GetValue(nullptr, "k", 7));
    profile.SetValue("S", "k", "abc");
    profile.SetValue("S", "n", " -42x");
    profile.SetValue("S", "huge", "99999999999");
    EXPECT_EQ(0, profile.GetValue("S", "k", 7));
    EXPECT_EQ(-42, profile.GetValue("S", "n", 7));
    EXPECT_EQ(2147483647, profile.GetValue("S", "huge", 7));

    CString out = "stale";
    profile.GetValue("Unknown", "k", nullptr, out);
    EXPECT_EQ("", out);

    EXPECT_EQ(1, profile.RemoveKey("S", "k"));
    EXPECT_EQ(0, profile.RemoveKey("S", "k"));
    EXPECT_EQ(0, profile.RemoveKey("Unknown", "k"));
}

TEST_F(PrivateProfileTest, EnumeratesASectionsKeys) {
    CPrivateProfile profile(nullptr);
    profile.SetValue("S", "a", "1");
    profile.SetValue("S", "b", "2");
    profile.CreateSection("Empty");

    CStringArray lines;
    ASSERT_EQ(2, profile.EnumSection("S", lines));
    std::set<std::string> seen{lines[0].str(), lines[1].str()};
    EXPECT_EQ((std::set<std::string>{"a = 1", "b = 2"}), seen);
    EXPECT_EQ(0, profile.EnumSection("Unknown", lines));
    EXPECT_EQ(0, lines.GetSize());

    std::set<std::string> walked;
    CString key;
    CString value;
    for (POSITION p = profile.GetStartKeyPos("S"); p;) {
        profile.GetNextKeyPos("S", p, key, value);
        walked.insert(key.str() + "=" + value.str());
    }
    EXPECT_EQ((std::set<std::string>{"a=1", "b=2"}), walked);
    EXPECT_EQ(nullptr, profile.GetStartKeyPos("Empty"));
    EXPECT_EQ(nullptr, profile.GetStartKeyPos(""));

    POSITION p = profile.GetStartKeyPos("S");
    profile.GetNextKeyPos("Unknown", p, key, value);
    EXPECT_EQ(nullptr, p);  // cleared before anything else
}

TEST_F(PrivateProfileTest, BareNamesLieInTheHostDirectory) {
    dir().write("name.txt", "k = v\n");
    CPrivateProfile profile("name.txt");
    EXPECT_EQ(Path("name.txt"), profile.m_path.str());
    EXPECT_EQ("v", Value(profile, kDefault, "k"));

    // A missing file reads as nothing, but its path stays for a later Write.
    EXPECT_EQ(0, profile.Read("absent.txt"));
    EXPECT_EQ(Path("absent.txt"), profile.m_path.str());
    EXPECT_EQ("<missing>", Value(profile, kDefault, "k"));
}

TEST_F(PrivateProfileTest, LastPathIsSavedByEveryObjectAndLoadedByTheDefaultOne) {
    // The key is opened, never created: without it nothing is saved.
    { CPrivateProfile profile("first.txt"); }
    EXPECT_FALSE(qvnrt::platform::RegistryKey::Open(kRealTime));

    ASSERT_TRUE(qvnrt::platform::RegistryKey::Create(kRealTime));
    { CPrivateProfile profile("second.txt"); }
    CPrivateProfile loaded;
    EXPECT_EQ(Path("second.txt"), loaded.m_path.str());
    EXPECT_EQ(1, loaded.LoadLastPath(kLastPath));

    // A value longer than the 260-byte buffer is not read.
    const std::string longPath(300, 'x');
    ASSERT_TRUE(qvnrt::platform::RegistryKey::Open(kRealTime)->SetString(kLastPath, longPath));
    CPrivateProfile refused;
    EXPECT_TRUE(refused.m_path.IsEmpty());
    EXPECT_EQ(0, refused.LoadLastPath(kLastPath));
}

TEST_F(PrivateProfileTest, ReadOnlyUseLeavesTheRegistryStoreAsItWas) {
    dir().write("p.txt", "k = v\n");
    const std::string store = "REGEDIT4\n; a note of the user's\n\n"
                              "[HKEY_CURRENT_USER\\Software\\Quorvane\\RealTime]\n"
                              "\"Last Private Profile\"=\"" + Path("p.txt") + "\"\n";
    home.config().write("user.reg", store);
    { CPrivateProfile profile(Path("p.txt").c_str()); }
    EXPECT_EQ(store, home.config().read("user.reg"));

    // A store made read-only keeps its bytes and its mode when another path is saved.
    const std::string file = home.config().file("user.reg");
    ASSERT_EQ(0, ::chmod(file.c_str(), 0444));
    { CPrivateProfile other(Path("other.txt").c_str()); }
    EXPECT_EQ(store, home.config().read("user.reg"));
    struct stat status;
    ASSERT_EQ(0, ::stat(file.c_str(), &status));
    EXPECT_EQ(0444u, status.st_mode & 07777);
}

TEST_F(PrivateProfileTest, OnlyRegularFilesAreRead) {
    ASSERT_EQ(0, ::mkfifo(Path("fifo.txt").c_str(), 0644));  // would block an open for ever
    ASSERT_EQ(0, ::symlink("/dev/zero", Path("zero.txt").c_str()));  // would never end
    for (const char* name : {"fifo.txt", "zero.txt"}) {
        CPrivateProfile profile;
        EXPECT_EQ(0, profile.Read(Path(name).c_str())) << name;
    }
}

TEST_F(PrivateProfileTest, DamagedFilesReadWithoutHarm) {
    // NUL bytes end a line; what follows them is still read.
    constexpr char kWithNuls[] = "a = 1\0junk\0b = 2\n[S\0]\nc = 3\n";
    dir().write("nul.txt", std::string(kWithNuls, sizeof(kWithNuls) - 1));
    CPrivateProfile nul(Path("nul.txt").c_str());
    EXPECT_EQ("1", Value(nul, kDefault, "a"));
    EXPECT_EQ("2", Value(nul, kDefault, "b"));
    EXPECT_EQ("3", Value(nul, kDefault, "c"));

    // Lone carriage returns end no line: the file is one key whose value holds them.
    dir().write("cr.txt", "a = 1\rb = 2\r[S]\r");
    CPrivateProfile cr(Path("cr.txt").c_str());
    EXPECT_EQ("1\rb = 2\r[S]", Value(cr, kDefault, "a"));

    // One line of 10 MB.
    std::string big = "[S]\nk = " + std::string(10 << 20, 'v') + "\n";
    dir().write("big.txt", big);
    CPrivateProfile large(Path("big.txt").c_str());
    EXPECT_EQ(size_t{10 << 20}, Value(large, "S", "k").size());

    // A directory where the file should be.
    std::filesystem::create_directory(Path("dir.txt"));
    CPrivateProfile directory;
    EXPECT_EQ(0, directory.Read(Path("dir.txt").c_str()));
}

}  // namespace
