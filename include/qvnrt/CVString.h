/// \file
/// CVString: the text that Date::format hands back.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/export.h>

/// One CString behind a virtual destructor, the only entry of its table of virtual
/// operations; applications that received it through a base pointer could delete it.
class QVNRT_API CVString {
public:
    CVString() = default;
    explicit CVString(const CString& text) : m_str(text) {}
    virtual ~CVString();

    operator const char*() const { return m_str; }
    const CString& GetString() const { return m_str; }

    CString m_str;
};
