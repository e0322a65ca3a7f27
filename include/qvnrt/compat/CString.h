/// \file
/// CString: counted 8-bit text with value semantics, the text type of the whole interface.
#pragma once

#include <cstdarg>
#include <string>

#include <qvnrt/export.h>

/// Counted 8-bit text with value semantics. It may hold NUL bytes; the conversion to
/// const char* shows the text up to the first one.
class QVNRT_API CString {
public:
    CString() = default;
    CString(const char* text);  ///< null gives empty
    CString(const char* text, int length);
    CString(char ch, int repeat = 1);
    CString(const std::string& text) : m_text(text) {}
    CString(std::string&& text) : m_text(std::move(text)) {}

    CString& operator=(const char* text);
    CString& operator=(char ch);
    CString& operator+=(const CString& other);
    CString& operator+=(const char* text);
    CString& operator+=(char ch);

    /// The text up to its first NUL byte; the value may hold more (see GetLength).
    operator const char*() const { return m_text.c_str(); }
    const char* GetString() const { return m_text.c_str(); }
    const std::string& str() const { return m_text; }

    /// Counts every byte, embedded NUL bytes too.
    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }

    char GetAt(int index) const { return m_text[index]; }
    void SetAt(int index, char ch) { m_text[index] = ch; }
    char operator[](int index) const { return m_text[index]; }

    /// Comparisons stop at the first NUL byte, as the C string functions do.
    int Compare(const char* text) const;
    int CompareNoCase(const char* text) const;

    CString& MakeUpper();
    CString& MakeLower();
    CString& MakeReverse();

    void Format(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void FormatV(const char* format, va_list args);
    void AppendFormat(const char* format, ...) __attribute__((format(printf, 2, 3)));

    /// Positions are byte offsets; -1 when not found. A start beyond the end finds nothing.
    int Find(char ch, int start = 0) const;
    int Find(const char* text, int start = 0) const;
    int ReverseFind(char ch) const;
    int FindOneOf(const char* characters) const;

    /// Out-of-range counts and positions are clamped, never undefined.
    CString Left(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString Right(int count) const;

    /// White space is space, tab, CR, LF, vertical tab and form feed.
    CString& TrimLeft();
    CString& TrimRight();
    CString& Trim();
    CString& TrimLeft(char ch);
    CString& TrimRight(char ch);
    CString& TrimLeft(const char* characters);
    CString& TrimRight(const char* characters);

    int Replace(const char* old, const char* replacement);
    int Replace(char old, char replacement);
    int Remove(char ch);
    int Insert(int index, const char* text);
    int Delete(int index, int count = 1);

    /// Raw access for C-style fillers. The buffer holds at least minLength bytes plus a
    /// terminator; ReleaseBuffer(-1) takes the length up to the first NUL.
    char* GetBuffer(int minLength);
    char* GetBufferSetLength(int length);
    void ReleaseBuffer(int newLength = -1);

private:
    std::string m_text;
};

QVNRT_API CString operator+(const CString& a, const CString& b);
QVNRT_API CString operator+(const CString& a, const char* b);
QVNRT_API CString operator+(const char* a, const CString& b);
QVNRT_API CString operator+(const CString& a, char b);
QVNRT_API CString operator+(char a, const CString& b);

inline bool operator==(const CString& a, const CString& b) { return a.Compare(b) == 0; }
inline bool operator==(const CString& a, const char* b) { return a.Compare(b) == 0; }
inline bool operator==(const char* a, const CString& b) { return b.Compare(a) == 0; }
inline bool operator!=(const CString& a, const CString& b) { return a.Compare(b) != 0; }
inline bool operator!=(const CString& a, const char* b) { return a.Compare(b) != 0; }
inline bool operator!=(const char* a, const CString& b) { return b.Compare(a) != 0; }
inline bool operator<(const CString& a, const CString& b) { return a.Compare(b) < 0; }
inline bool operator<(const CString& a, const char* b) { return a.Compare(b) < 0; }
inline bool operator>(const CString& a, const CString& b) { return a.Compare(b) > 0; }
inline bool operator>(const CString& a, const char* b) { return a.Compare(b) > 0; }
inline bool operator<=(const CString& a, const CString& b) { return a.Compare(b) <= 0; }
inline bool operator>=(const CString& a, const CString& b) { return a.Compare(b) >= 0; }
