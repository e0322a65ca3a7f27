#include <qvnrt/compat/CStdioFile.h>

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace {

class CStdioFileTest : public ::testing::Test {
protected:
    std::vector<std::string> ReadLines(const std::string& text) {
        dir.write("in.txt", text);
        CStdioFile file;
        EXPECT_TRUE(file.Open(dir.file("in.txt").c_str(), CFile::modeRead | CFile::typeText));
        std::vector<std::string> lines;
        CString line;
        while (file.ReadString(line)) lines.emplace_back(line.str());
        return lines;
    }

    qvnrt::test::TempDir dir;
};

TEST_F(CStdioFileTest, LinesEndAtLfOrCrLfOnly) {
    using Lines = std::vector<std::string>;
    const struct {
        std::string text;
        Lines lines;
    } rows[] = {
        {"lf\ncrlf\r\nlone\rcr\n\nlast", {"lf", "crlf", "lone\rcr", "", "last"}},
        {"one\r\ntwo\r\n", {"one", "two"}},  // a final line end makes no empty line
        {"", {}},
        {"a\rb\r", {"a\rb\r"}},
        {std::string("a\0b\nc", 5), {std::string("a\0b", 3), "c"}},  // NUL bytes are kept
    };
    for (const auto& row : rows) EXPECT_EQ(row.lines, ReadLines(row.text)) << row.text;
}

TEST_F(CStdioFileTest, WritesTextAsGiven) {
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

TEST_F(CStdioFileTest, OpenFailureReportsTheCause) {
    CStdioFile file;
    CFileException error;
    EXPECT_FALSE(file.Open(dir.file("missing.txt").c_str(), CFile::modeRead, &error));
    EXPECT_EQ(CFileException::fileNotFound, error.m_cause);
    CString line;
    EXPECT_FALSE(file.ReadString(line));
}

TEST_F(CStdioFileTest, RemoveAndRenameThrowOnFailure) {
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

}  // namespace
