// QvnRT: everything an application uses, in one include.
#pragma once

#include <qvnrt/compat.h>
#include <qvnrt/driver.h>
#include <qvnrt/host.h>
#include <qvnrt/LibraryStartup.h>
#include <qvnrt/CInetResearch.h>
#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/CSymbolHomePagesDlg.h>
