// CRegistry: the small registry reader used for the driver's name.
#pragma once

#include <qvnrt/compat/CString.h>

class CRegistry {
public:
    // The registry store keeps one hive; the root is kept for the reader's shape.
    enum Root { HKEY_CURRENT_USER = 1 };

    explicit CRegistry(const char* baseKey = "Software\\Quorvane", Root root = HKEY_CURRENT_USER);

    // Reads value `valueName` of key "<base>\<section>" into `result`, which takes
    // `defaultValue` (empty for null) when the key or the value is missing, or the value
    // does not fit the reader's 260 bytes. Returns the result's length; the reader has no
    // failure of its own.
    int ReadString(const char* section, const char* valueName, const char* defaultValue,
                   CString& result) const;

    CString m_baseKey;  // without a trailing separator
    Root m_root;
};
