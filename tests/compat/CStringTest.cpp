#include <qvnrt/compat/CString.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

TEST(CString, NullAndEmptyConstruction) {
    CString fromNull(static_cast<const char*>(nullptr));
    EXPECT_TRUE(fromNull.IsEmpty());
    EXPECT_STREQ("", static_cast<const char*>(fromNull));
    CString text("abc");
    text = static_cast<const char*>(nullptr);
    EXPECT_EQ(0, text.GetLength());
}

TEST(CString, EmbeddedNulBytesAreCountedAndKept) {
    // A symbol list: NUL-terminated symbols ended by an empty one.
    const char list[] = "IBM\0T\0";
    CString text(list, sizeof(list));  // with the final terminator: 7 bytes
    EXPECT_EQ(7, text.GetLength());
    EXPECT_EQ(3u, std::strlen(text));
    EXPECT_EQ('T', text[4]);
    EXPECT_EQ(4, text.Find('T'));
    EXPECT_EQ(CString("T", 1), text.Mid(4, 1));
    // A copy keeps the bytes behind the first NUL.
    CString copy = text;
    EXPECT_EQ(0, std::memcmp(copy.GetString(), list, sizeof(list)));
    // Appending goes behind the stored bytes, not behind the first NUL.
    copy += "X";
    EXPECT_EQ(8, copy.GetLength());
    EXPECT_EQ('X', copy[7]);
    // Comparison stops at the first NUL, as the C string functions do.
    EXPECT_TRUE(text == "IBM");
}

TEST(CString, Format) {
    CString text;
    text.Format("%d of %s, %.2f%%", 3, "five", 12.345);
    EXPECT_STREQ("3 of five, 12.35%", text);
    const std::string longText(5000, 'x');
    text.Format("[%s]", longText.c_str());
    EXPECT_EQ(5002, text.GetLength());
    EXPECT_EQ(']', text[5001]);
    text.AppendFormat("%c", 'z');
    EXPECT_EQ('z', text[5002]);
    text.Format("%s", "");
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, MakeUpperTouchesAsciiLettersOnly) {
    CString text("aBz09-\xe9\xff");
    text.MakeUpper();
    EXPECT_STREQ("ABZ09-\xe9\xff", text);
    text.MakeLower();
    EXPECT_STREQ("abz09-\xe9\xff", text);
}

TEST(CString, FindAtEdgePositions) {
    const CString text("abcabc");
    EXPECT_EQ(0, text.Find('a'));
    EXPECT_EQ(3, text.Find('a', 1));
    EXPECT_EQ(5, text.Find('c', 5));
    EXPECT_EQ(-1, text.Find('c', 6));
    EXPECT_EQ(-1, text.Find('a', 100));
    EXPECT_EQ(0, text.Find('a', -4));
    EXPECT_EQ(3, text.Find("abc", 1));
    EXPECT_EQ(-1, text.Find("abcd"));
    EXPECT_EQ(6, text.Find("", 6));
    EXPECT_EQ(-1, text.Find("", 7));
    EXPECT_EQ(-1, text.Find(static_cast<const char*>(nullptr)));
    EXPECT_EQ(5, text.ReverseFind('c'));
    EXPECT_EQ(-1, CString().Find('a'));
}

TEST(CString, MidLeftRightClampOutOfRangeArguments) {
    const CString text("abcdef");
    EXPECT_STREQ("def", text.Mid(3));
    EXPECT_STREQ("", text.Mid(6));
    EXPECT_STREQ("", text.Mid(60));
    EXPECT_STREQ("ab", text.Mid(-1, 2));
    EXPECT_STREQ("f", text.Mid(5, 99));
    EXPECT_STREQ("", text.Mid(2, -1));
    EXPECT_STREQ("", text.Left(-1));
    EXPECT_STREQ("abcdef", text.Left(99));
    EXPECT_STREQ("ef", text.Right(2));
    EXPECT_STREQ("abcdef", text.Right(99));
    EXPECT_STREQ("", text.Right(-3));
}

TEST(CString, Trimming) {
    CString text(" \t a b \r\n");
    EXPECT_STREQ("a b", text.Trim());
    CString blanks("   ");
    EXPECT_TRUE(blanks.Trim().IsEmpty());
    CString marks("xxaxx");
    EXPECT_STREQ("axx", marks.TrimLeft('x'));
    EXPECT_STREQ("a", marks.TrimRight('x'));
}

TEST(CString, EditingOperations) {
    CString text("a-b-c");
    EXPECT_EQ(2, text.Replace("-", "--"));
    EXPECT_STREQ("a--b--c", text);
    EXPECT_EQ(4, text.Remove('-'));
    EXPECT_STREQ("abc", text);
    text.Insert(1, "XY");
    EXPECT_STREQ("aXYbc", text);
    text.Delete(1, 2);
    EXPECT_STREQ("abc", text);
    char* buffer = text.GetBuffer(10);
    std::strcpy(buffer, "hello");
    text.ReleaseBuffer();
    EXPECT_EQ(5, text.GetLength());
    EXPECT_EQ(0, CString("abc").CompareNoCase("ABC"));
    EXPECT_LT(CString("abc"), CString("abd"));
}
