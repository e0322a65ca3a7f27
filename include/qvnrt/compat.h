/// \file
/// The framework replacement types of the public interface.
#pragma once

#include <qvnrt/compat/CArray.h>
#include <qvnrt/compat/CMap.h>
#include <qvnrt/compat/CStdioFile.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
