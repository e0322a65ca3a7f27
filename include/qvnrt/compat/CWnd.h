/// \file
/// Window handles. The library shows no windows of its own: a parent window is an opaque
/// handle that it passes on to the UI host.
#pragma once

#include <qvnrt/export.h>

typedef void* HWND;

/// A parent window: an opaque handle that the library passes on to the UI host.
class QVNRT_API CWnd {
public:
    explicit CWnd(HWND window = nullptr) : m_hWnd(window) {}
    virtual ~CWnd() = default;
    HWND GetSafeHwnd() const { return m_hWnd; }

    HWND m_hWnd;
};
