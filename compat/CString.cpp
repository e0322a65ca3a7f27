#include <qvnrt/compat/CString.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <strings.h>

namespace {

const char kWhiteSpace[] = " \t\r\n\v\f";

int Clamp(int value, int low, int high) { return std::min(std::max(value, low), high); }

}  // namespace

CString::CString(const char* text) : m_text(text ? text : "") {}

CString::CString(const char* text, int length)
    : m_text(text && length > 0 ? std::string(text, static_cast<size_t>(length)) : std::string()) {}

CString::CString(char ch, int repeat) : m_text(static_cast<size_t>(std::max(repeat, 0)), ch) {}

CString& CString::operator=(const char* text) {
    m_text = text ? text : "";
    return *this;
}

CString& CString::operator=(char ch) {
    m_text.assign(1, ch);
    return *this;
}

CString& CString::operator+=(const CString& other) {
    m_text += other.m_text;
    return *this;
}

CString& CString::operator+=(const char* text) {
    if (text) m_text += text;
    return *this;
}

CString& CString::operator+=(char ch) {
    m_text += ch;
    return *this;
}

int CString::Compare(const char* text) const { return std::strcmp(m_text.c_str(), text ? text : ""); }

int CString::CompareNoCase(const char* text) const {
    return strcasecmp(m_text.c_str(), text ? text : "");
}

CString& CString::MakeUpper() {
    for (char& c : m_text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return *this;
}

CString& CString::MakeLower() {
    for (char& c : m_text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return *this;
}

CString& CString::MakeReverse() {
    std::reverse(m_text.begin(), m_text.end());
    return *this;
}

void CString::FormatV(const char* format, va_list args) {
    m_text.clear();
    if (!format) return;
    va_list copy;
    va_copy(copy, args);
    const int needed = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (needed <= 0) return;
    m_text.resize(static_cast<size_t>(needed) + 1);
    std::vsnprintf(m_text.data(), m_text.size(), format, args);
    m_text.resize(static_cast<size_t>(needed));
}

void CString::Format(const char* format, ...) {
    va_list args;
    va_start(args, format);
    FormatV(format, args);
    va_end(args);
}

void CString::AppendFormat(const char* format, ...) {
    CString tail;
    va_list args;
    va_start(args, format);
    tail.FormatV(format, args);
    va_end(args);
    m_text += tail.m_text;
}

int CString::Find(char ch, int start) const {
    if (start < 0) start = 0;
    if (start >= GetLength()) return -1;
    const size_t at = m_text.find(ch, static_cast<size_t>(start));
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::Find(const char* text, int start) const {
    if (!text) return -1;
    if (start < 0) start = 0;
    if (start > GetLength()) return -1;
    const size_t at = m_text.find(text, static_cast<size_t>(start));
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(char ch) const {
    const size_t at = m_text.rfind(ch);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

int CString::FindOneOf(const char* characters) const {
    if (!characters) return -1;
    const size_t at = m_text.find_first_of(characters);
    return at == std::string::npos ? -1 : static_cast<int>(at);
}

CString CString::Left(int count) const {
    return CString(m_text.substr(0, static_cast<size_t>(Clamp(count, 0, GetLength()))));
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
    first = Clamp(first, 0, GetLength());
    count = Clamp(count, 0, GetLength() - first);
    return CString(m_text.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString CString::Right(int count) const {
    count = Clamp(count, 0, GetLength());
    return CString(m_text.substr(m_text.size() - static_cast<size_t>(count)));
}

CString& CString::TrimLeft() { return TrimLeft(kWhiteSpace); }
CString& CString::TrimRight() { return TrimRight(kWhiteSpace); }
CString& CString::Trim() { return TrimRight().TrimLeft(); }

CString& CString::TrimLeft(char ch) {
    const char set[2] = {ch, '\0'};
    return ch ? TrimLeft(set) : *this;
}

CString& CString::TrimRight(char ch) {
    const char set[2] = {ch, '\0'};
    return ch ? TrimRight(set) : *this;
}

CString& CString::TrimLeft(const char* characters) {
    if (!characters) return *this;
    const size_t first = m_text.find_first_not_of(characters);
    m_text.erase(0, first == std::string::npos ? m_text.size() : first);
    return *this;
}

CString& CString::TrimRight(const char* characters) {
    if (!characters) return *this;
    const size_t last = m_text.find_last_not_of(characters);
    m_text.erase(last == std::string::npos ? 0 : last + 1);
    return *this;
}

int CString::Replace(const char* old, const char* replacement) {
    if (!old || !*old) return 0;
    const std::string with = replacement ? replacement : "";
    const size_t oldLength = std::strlen(old);
    int count = 0;
    for (size_t at = m_text.find(old); at != std::string::npos;
         at = m_text.find(old, at + with.size())) {
        m_text.replace(at, oldLength, with);
        ++count;
    }
    return count;
}

int CString::Replace(char old, char replacement) {
    int count = 0;
    for (char& c : m_text) {
        if (c == old) {
            c = replacement;
            ++count;
        }
    }
    return count;
}

int CString::Remove(char ch) {
    const size_t before = m_text.size();
    m_text.erase(std::remove(m_text.begin(), m_text.end(), ch), m_text.end());
    return static_cast<int>(before - m_text.size());
}

int CString::Insert(int index, const char* text) {
    if (text) m_text.insert(static_cast<size_t>(Clamp(index, 0, GetLength())), text);
    return GetLength();
}

int CString::Delete(int index, int count) {
    index = Clamp(index, 0, GetLength());
    count = Clamp(count, 0, GetLength() - index);
    m_text.erase(static_cast<size_t>(index), static_cast<size_t>(count));
    return GetLength();
}

char* CString::GetBuffer(int minLength) {
    if (minLength > GetLength()) m_text.resize(static_cast<size_t>(minLength));
    return m_text.data();
}

char* CString::GetBufferSetLength(int length) {
    m_text.resize(static_cast<size_t>(std::max(length, 0)));
    return m_text.data();
}

void CString::ReleaseBuffer(int newLength) {
    if (newLength < 0) newLength = static_cast<int>(std::strlen(m_text.c_str()));
    m_text.resize(static_cast<size_t>(std::min(newLength, GetLength())));
}

CString operator+(const CString& a, const CString& b) {
    CString result(a);
    result += b;
    return result;
}

CString operator+(const CString& a, const char* b) {
    CString result(a);
    result += b;
    return result;
}

CString operator+(const char* a, const CString& b) {
    CString result(a);
    result += b;
    return result;
}

CString operator+(const CString& a, char b) {
    CString result(a);
    result += b;
    return result;
}

CString operator+(char a, const CString& b) {
    CString result(a);
    result += b;
    return result;
}
