/// \file
/// QvnRT: everything an application uses, in one include.
#pragma once

// Foundations: the framework replacement types, the driver contract, the host hooks.
#include <qvnrt/compat.h>
#include <qvnrt/driver.h>
#include <qvnrt/host.h>
#include <qvnrt/LibraryStartup.h>

// The server connection.
#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/EventMulticaster.h>
#include <qvnrt/RTExchange.h>
#include <qvnrt/RTServer.h>

// Securities and the local cache.
#include <qvnrt/CSessionInfo.h>
#include <qvnrt/RTSec_Base.h>
#include <qvnrt/RTSec_Option.h>
#include <qvnrt/RTSecCache.h>
#include <qvnrt/RTSecChangeDB.h>
#include <qvnrt/RTSecList.h>
#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTSessSecurity.h>
#include <qvnrt/TickCache.h>

// The calendar.
#include <qvnrt/CVString.h>
#include <qvnrt/Date.h>
#include <qvnrt/Time.h>

// News.
#include <qvnrt/RTNewsHeadline.h>
#include <qvnrt/RTNewsItem.h>

// Price display.
#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/CFractionDisplayOptions.h>
#include <qvnrt/DialogView.h>

// Configuration, symbols and research.
#include <qvnrt/CInetResearch.h>
#include <qvnrt/CPrivateProfile.h>
#include <qvnrt/CSymbolMap.h>

// Panels.
#include <qvnrt/CInetSearchInfoDlg.h>
#include <qvnrt/CInetSymbolSearchDlg.h>
#include <qvnrt/CNewsUnavailableDlg.h>
#include <qvnrt/CSymbolHomePagesDlg.h>
#include <qvnrt/CSymbolAtAGlanceDlg.h>
