// The symbol map: its file rules, messages and translations.
#include <string>
#include <vector>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <qvnrt/CSymbolMap.h>
#include <qvnrt/LibraryStartup.h>

#include "config/CQvnRTApp.h"
#include "config/Strings.h"
#include "support/RecordingUiHost.h"
#include "support/TempDir.h"

namespace {

class SymbolMap : public ::testing::Test {
protected:
    // Writes "<dir>/A_B.smd" and loads it afresh.
    int Load(const std::string& content) {
        dir.write("A_B.smd", content);
        map.Clear();
        return LoadFile(map);
    }
    // Loads whatever stands at "<dir>/A_B.smd" for providers "A" and "B".
    int LoadFile(CSymbolMap& into, int merge = 0) {
        char a[] = "A", b[] = "B";
        std::string directory = dir.path();
        return into.LoadMap(directory.data(), a, b, merge);
    }
    std::vector<std::string> Messages() const {
        std::vector<std::string> texts;
        for (const auto& message : ui.messages) texts.push_back(message.text);
        return texts;
    }
    std::string Text(unsigned id) { return qvnrt::LoadString(id); }

    qvnrt::test::TempDir dir;
    qvnrt::test::RecordingUiHost ui;
    CSymbolMap map;
};

TEST_F(SymbolMap, TranslatesBothWaysAndLeavesUnknownSymbolsAlone) {
    ASSERT_EQ(1, Load("1.0\nA,B\n ibm , intl \n"));
    int found = -1;
    char ibm[] = "ibm", intl[] = "intl", xyz[] = "xyz";
    EXPECT_STREQ("INTL", map.RT2DL(ibm, &found));
    EXPECT_EQ(1, found);
    EXPECT_STREQ("IBM", map.DL2RT(intl, &found));
    EXPECT_EQ(1, found);
    EXPECT_STREQ("xyz", map.RT2DL(xyz, &found));  // unchanged, in the caller's case
    EXPECT_EQ(0, found);
    EXPECT_STREQ("INTL", map.RT2DL(CString("Ibm"), nullptr));
    EXPECT_TRUE(ui.messages.empty());
}

TEST_F(SymbolMap, VersionLine) {
    for (const char* bad : {"2.0", "0.9", "1", ".1", ""}) {
        EXPECT_EQ(0, Load(std::string(bad) + "\nA,B\n")) << bad;
    }
    EXPECT_EQ(std::vector<std::string>(5, Text(121)), Messages());
    EXPECT_EQ(1, Load("1.7\nA,B\n"));  // the minor number is ignored
}

TEST_F(SymbolMap, MapFileThatIsNoRegularFileIsNotFound) {
    // A FIFO would block the open for ever and /dev/zero would fill memory with one line.
    char a[] = "A", b[] = "B";
    for (const bool fifo : {true, false}) {
        const std::string file = dir.file("A_B.smd");
        ::unlink(file.c_str());
        ASSERT_EQ(0, fifo ? ::mkfifo(file.c_str(), 0644) : ::symlink("/dev/zero", file.c_str()));
        map.Clear();
        std::string directory = dir.path();
        EXPECT_EQ(0, map.LoadMap(directory.data(), a, b, 0)) << fifo;
    }
    ASSERT_EQ(2u, ui.messages.size());
    for (const auto& message : ui.messages) EXPECT_EQ(Text(123), message.text);
}

TEST_F(SymbolMap, ProviderLine) {
    EXPECT_EQ(1, Load("1.0\n A , B \nx,y\n"));  // halves are trimmed
    EXPECT_EQ(0, Load("1.0\nA,C\n"));
    EXPECT_EQ(0, Load("1.0\na,b\n"));  // case counts
    EXPECT_EQ(0, Load("1.0\n,B\n"));   // no comma above position 0
    EXPECT_EQ((std::vector<std::string>{Text(122), Text(122), Text(121)}), Messages());
    EXPECT_EQ(1, Load("1.0"));  // the file ends before the provider line: passed over
}

TEST_F(SymbolMap, PairLines) {
    ASSERT_EQ(1, Load("1.0\nA,B\nA,B,C\nnocomma\n,lead\nempty,\n  ,x\nq , r\n"));
    char a[] = "A", q[] = "q";
    EXPECT_STREQ("B,C", map.RT2DL(a, nullptr));  // split at the first comma
    EXPECT_STREQ("R", map.RT2DL(q, nullptr));
    EXPECT_EQ(2, map.m_RT2DL.GetCount());
    EXPECT_EQ(2, map.m_DL2RT.GetCount());
}

TEST_F(SymbolMap, MergeKeepsOldPairsAndABadHeaderKeepsEverything) {
    ASSERT_EQ(1, Load("1.0\nA,B\nold,one\n"));
    dir.write("A_B.smd", "1.0\nA,B\nnew,two\n");
    ASSERT_EQ(1, LoadFile(map, 1));
    EXPECT_EQ(2, map.m_RT2DL.GetCount());

    dir.write("A_B.smd", "9.0\nA,B\n");
    EXPECT_EQ(0, LoadFile(map));
    EXPECT_EQ(2, map.m_RT2DL.GetCount());  // the header failed before anything was dropped

    dir.write("A_B.smd", "1.0\nA,B\n");  // two header lines only: an empty map
    EXPECT_EQ(1, LoadFile(map));
    EXPECT_EQ(0, map.m_RT2DL.GetCount());
}

TEST_F(SymbolMap, MissingFileAndMissingArguments) {
    EXPECT_EQ(0, LoadFile(map));
    char a[] = "A", none[] = "";
    std::string directory = dir.path();
    EXPECT_EQ(0, map.LoadMap(directory.data(), a, none, 0));
    // The second is refused before any file is looked at.
    EXPECT_EQ(std::vector<std::string>{Text(123)}, Messages());
}

TEST_F(SymbolMap, FileNameFromTheFirstWordsOfTheProviders) {
    char directory[] = "/d";
    char one[] = "Data One", other[] = "Other", lead[] = " Lead Blank";
    map.LoadMap(directory, one, other, 0);
    EXPECT_STREQ("/d/Data_Other.smd", map.m_path);
    EXPECT_STREQ("/d/Data_Other.smd", map.GetFilePath());
    map.Clear();
    map.LoadMap(directory, lead, other, 0);  // a blank at position 0 counts as none
    EXPECT_STREQ("/d/ Lead Blank_Other.smd", map.m_path);
    // An empty directory keeps what m_path holds and appends to it. Kept.
    char empty[] = "";
    map.LoadMap(empty, one, other, 0);
    EXPECT_STREQ("/d/ Lead Blank_Other.smd/Data_Other.smd", map.m_path);
}

TEST_F(SymbolMap, EmptyDirectoryTakesTheApplicationModulesDirectory) {
    qvnrt::test::IsolatedHome home;  // the executable is taken to lie in the host directory
    home.host().write("A_B.smd", "1.0\nA,B\nK,V\n");
    qvnrtSetAppName("no-such-module");
    char empty[] = "", a[] = "A", b[] = "B";
    EXPECT_EQ(1, map.LoadMap(empty, a, b, 0));
    // The module's directory keeps its separator, and MakePath adds one more. Kept.
    EXPECT_EQ(home.host().path() + "//A_B.smd", map.m_path.str());
}

TEST_F(SymbolMap, WriteAndReadBack) {
    LoadFile(map);  // no file yet: message 123, but the path is set
    map.SetAt(" IBM ", "INTL");
    map.SetAt("low", "case");  // kept and written, never found
    map.SetMode(CFile::modeCreate | CFile::modeWrite);
    ASSERT_EQ(1, map.WriteMap());
    const std::string written = dir.read("A_B.smd");
    EXPECT_EQ(0u, written.find("1.0\nA,B\n"));
    EXPECT_NE(std::string::npos, written.find("IBM,INTL\n"));
    EXPECT_NE(std::string::npos, written.find("low,case\n"));

    CSymbolMap reader;
    ASSERT_EQ(1, LoadFile(reader));
    char low[] = "low";
    int found = 0;
    reader.RT2DL(low, &found);
    EXPECT_EQ(1, found);  // upper-cased on reading, so now found
    char ibm[] = "ibm";
    EXPECT_STREQ("INTL", reader.RT2DL(ibm, nullptr));
}

TEST_F(SymbolMap, AppNameBufferIsClearedBeforeEachCopy) {
    qvnrtSetAppName("a-much-longer-application-name");
    qvnrtSetAppName("short");
    EXPECT_STREQ("short", qvnrt::AppNameBuffer());
    EXPECT_EQ('\0', qvnrt::AppNameBuffer()[6]);  // no tail of the former
    qvnrtSetAppName(std::string(400, 'x').c_str());  // bounded
    EXPECT_EQ(259u, std::string(qvnrt::AppNameBuffer()).size());
}

}  // namespace
