// CInetResearch: sends the user's browser to information about one symbol.
//
// Two profiles in the host directory hold what it knows:
//   "inetres.txt"    section "Internet Background Page": service name = URL template
//                    section "Last Internet Search Service": Name = the last service chosen
//   "HomePages.txt"  section "HomePages": symbol = home page address
// A URL template holds "<SYMBOL>" or "<EXTRA>" (or both), filled with the symbol and the
// extra search text (a company name, say). Messages, panels and the browser all go
// through the UI host (qvnrt/host.h). Only http addresses are opened.
#pragma once

#include <qvnrt/compat/CArray.h>
#include <qvnrt/compat/CMap.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/compat/CWnd.h>
#include <qvnrt/export.h>

class QVNRT_API CInetResearch {
public:
    CInetResearch();
    // The symbol is kept in upper case; either argument may be null.
    CInetResearch(const char* symbol, const char* extraText);
    virtual ~CInetResearch();

    // Drops the extra text as well.
    void UpdateSymbolName(const char* symbol);
    void UpdateExtraSearchText(const char* extraText);

    // The services whose templates carry the tags that `flags` asks for: bit 1 takes a
    // template with any of the tags 4 (<SYMBOL>) and 8 (<EXTRA>) that are set, bit 2 one
    // whose tags are exactly those set; 0 takes every service. Returns out's size.
    int EnumInetServiceNames(CStringArray& out, int flags);
    // The raw template of `service` in `url` (empty when unknown); 1 when found. With
    // `edit`, an unknown service opens the service editor and is looked up again.
    int GetInetSearchURL(const char* service, CString& url, int edit, CWnd* parent);
    int IsServiceAvailable(const char* service);
    const char* GetLastService();
    // Records the service in "inetres.txt"; a null or empty name removes the record.
    void SetLastService(const char* service);

    int GetHomePage(CString& out, int edit, CWnd* parent);
    void GotoHomePage(int edit, CWnd* parent);
    void GotoInetSearchPage(const char* service, int interactive, CWnd* parent);
    // Shows the research panel (CInetSearchInfoDlg); 2 always.
    int DoInetSearch(CWnd* parent);
    // Shows the home page editor (CSymbolHomePagesDlg).
    void EditHomePage(CWnd* parent);
    // Shows the service editor (CInetSymbolSearchDlg); on 1 the services are read anew.
    // Returns the panel's result.
    int EditInetSearchURLs(CWnd* parent);

protected:
    void CommonConstructor(const char* symbol, const char* extraText);
    void ResolveHomePage(int edit, CWnd* parent);
    // Fills the first "<SYMBOL>" and the first "<EXTRA>" in place.
    void SetInetSearchURL(CString& url);
    // Asks the UI host to open an http address; 1 when it was asked, 0 for any other
    // scheme or an address that does not parse.
    int OpenURL(const char* url);

public:
    CString m_extraText;
    CString m_lastService;
    CString m_homePage;  // empty: not resolved yet
    CString m_symbol;
    CMapStringToString m_services{10};
};
