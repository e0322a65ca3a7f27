// QvnRT: everything an application uses, in one include.
#pragma once

#include <qvnrt/compat.h>
#include <qvnrt/driver.h>
#include <qvnrt/host.h>
#include <qvnrt/LibraryStartup.h>
#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/CSessionInfo.h>
#include <qvnrt/CSymbolMap.h>
#include <qvnrt/EventMulticaster.h>
#include <qvnrt/RTExchange.h>
#include <qvnrt/RTSec_Base.h>
#include <qvnrt/RTSec_Option.h>
#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTSessSecurity.h>
#include <qvnrt/RTServer.h>
#include <qvnrt/CInetResearch.h>
#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/CSymbolHomePagesDlg.h>
