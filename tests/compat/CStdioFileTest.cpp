#include <qvnrt/compat/CStdioFile.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace {

std::vector<std::string> ReadLines(const std::string& path) {
    CStdioFile file;
    EXPECT_TRUE(file.Open(path.c_str(), CFile::modeRead | CFile::typeText));
    std::vector<std::string> lines;
    CString line;
    while (file.ReadString(line)) lines.emplace_back(line.str());
    return lines;
}

}  // namespace

TEST(CStdioFile, ReadsLinesEndedByLfOrCrLfAndKeepsALoneCr) {
    qvnrt::test::TempDir dir;
    dir.write("mixed.txt", "lf\ncrlf\r\nlone\rcr\n\nlast");
    EXPECT_EQ((std::vector<std::string>{"lf", "crlf", "lone\rcr", "", "last"}),
              ReadLines(dir.file("mixed.txt")));
}

TEST(CStdioFile, FinalLineEndDoesNotMakeAnEmptyLine) {
    qvnrt::test::TempDir dir;
    dir.write("a.txt", "one\r\ntwo\r\n");
    EXPECT_EQ((std::vector<std::string>{"one", "two"}), ReadLines(dir.file("a.txt")));
    dir.write("empty.txt", "");
    EXPECT_TRUE(ReadLines(dir.file("empty.txt")).empty());
    dir.write("cr.txt", "a\rb\r");
    EXPECT_EQ((std::vector<std::string>{"a\rb\r"}), ReadLines(dir.file("cr.txt")));
}

TEST(CStdioFile, KeepsNulBytesInsideALine) {
    qvnrt::test::TempDir dir;
    dir.write("nul.txt", std::string("a\0b\nc", 5));
    const auto lines = ReadLines(dir.file("nul.txt"));
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ(std::string("a\0b", 3), lines[0]);
}

TEST(CStdioFile, WritesTextAsGiven) {
    qvnrt::test::TempDir dir;
    CStdioFile file;
    ASSERT_TRUE(file.Open(dir.file("out.txt").c_str(), CFile::modeCreate | CFile::modeWrite));
    file.WriteString("1.0\n");
    file.WriteString("A,B\n");
    file.Close();
    EXPECT_FALSE(file.IsOpen());
    EXPECT_EQ("1.0\nA,B\n", dir.read("out.txt"));
    // modeCreate truncates, modeNoTruncate keeps.
    ASSERT_TRUE(file.Open(dir.file("out.txt").c_str(),
                          CFile::modeCreate | CFile::modeNoTruncate | CFile::modeReadWrite));
    EXPECT_EQ(8u, file.GetLength());
}

TEST(CStdioFile, OpenFailureReportsTheCause) {
    qvnrt::test::TempDir dir;
    CStdioFile file;
    CFileException error;
    EXPECT_FALSE(file.Open(dir.file("missing.txt").c_str(), CFile::modeRead, &error));
    EXPECT_EQ(CFileException::fileNotFound, error.m_cause);
    CString line;
    EXPECT_FALSE(file.ReadString(line));
}

TEST(CFile, RemoveAndRenameThrowOnFailure) {
    qvnrt::test::TempDir dir;
    try {
        CFile::Remove(dir.file("missing").c_str());
        FAIL() << "no exception";
    } catch (const CFileException& e) {
        EXPECT_EQ(CFileException::fileNotFound, e.m_cause);
    }
    dir.write("from", "x");
    CFile::Rename(dir.file("from").c_str(), dir.file("to").c_str());
    EXPECT_EQ("x", dir.read("to"));
    EXPECT_THROW(CFile::Rename(dir.file("from").c_str(), dir.file("to").c_str()), CFileException);
    CFile::Remove(dir.file("to").c_str());
}
