#include <qvnrt/CInetResearch.h>

#include <qvnrt/CPrivateProfile.h>

#include "config/Strings.h"
#include "platform/UiHost.h"
#include "research/ParsedUrl.h"
#include "research/ResearchPanels.h"

namespace {

constexpr const char* kServicesFile = "inetres.txt";
constexpr const char* kServicesSection = "Internet Background Page";
constexpr const char* kLastServiceSection = "Last Internet Search Service";
constexpr const char* kLastServiceKey = "Name";
constexpr const char* kHomePagesFile = "HomePages.txt";
constexpr const char* kHomePagesSection = "HomePages";

constexpr unsigned kSymbolTagString = 337;  // "<SYMBOL>"
constexpr unsigned kExtraTagString = 649;   // "<EXTRA>"
constexpr unsigned kAskForHomePageString = 126;

constexpr const char* kHomePageCaption = "Quorvane Internet Trader";
constexpr const char* kNoServiceGiven =
    "No Internet research information specified. Cannot perform Internet research.";
constexpr const char* kNoServices =
    "There is no Internet research information available. Cannot perform Internet research.";
constexpr const char* kNoUrlForService =
    "No URL information available for %s. Would you like to edit the Internet research page "
    "at this time?";
constexpr const char* kNoHomePage = "No home page specified for %s";

constexpr int kMatchAnyTag = 1;
constexpr int kMatchExactTags = 2;
constexpr int kSymbolTag = 4;
constexpr int kExtraTag = 8;

// Replaces the first occurrence only; a second one stays as it stands.
void ReplaceFirst(CString& text, const char* tag, const CString& replacement) {
    const int at = text.Find(tag);
    if (at < 0) return;
    const int tagLength = CString(tag).GetLength();
    text = text.Left(at) + replacement + text.Mid(at + tagLength);
}

CString HomePageOf(const CString& symbol) {
    CPrivateProfile homePages(kHomePagesFile);
    CString page;
    homePages.GetValue(kHomePagesSection, symbol, nullptr, page);
    return page;
}

int RunHomePageEditor(const CString& symbol, CWnd* parent) {
    const auto& run = qvnrt::research::InstalledResearchPanels().editHomePages;
    return run ? run(symbol, parent) : qvnrt::IDCANCEL;
}

}  // namespace

CInetResearch::CInetResearch() { CommonConstructor(nullptr, nullptr); }

CInetResearch::CInetResearch(const char* symbol, const char* extraText) {
    CommonConstructor(symbol, extraText);
}

CInetResearch::~CInetResearch() = default;

void CInetResearch::CommonConstructor(const char* symbol, const char* extraText) {
    // Copies first: the arguments may be this object's own texts.
    CString newSymbol(symbol);
    const CString newExtraText(extraText);
    m_symbol = newSymbol.MakeUpper();
    m_extraText = newExtraText;

    CPrivateProfile services(kServicesFile);
    services.GetValue(kLastServiceSection, kLastServiceKey, nullptr, m_lastService);
    // Added to, never emptied: a service deleted from the file lives on in this object.
    CString name;
    CString url;
    for (POSITION position = services.GetStartKeyPos(kServicesSection); position;) {
        services.GetNextKeyPos(kServicesSection, position, name, url);
        m_services[name] = url;
    }
}

void CInetResearch::UpdateSymbolName(const char* symbol) { CommonConstructor(symbol, nullptr); }

void CInetResearch::UpdateExtraSearchText(const char* extraText) {
    CommonConstructor(m_symbol, extraText);
}

int CInetResearch::EnumInetServiceNames(CStringArray& out, int flags) {
    out.RemoveAll();
    if (flags != 0 && !(flags & (kMatchAnyTag | kMatchExactTags))) return 0;

    const char* symbolTag = qvnrt::LoadString(kSymbolTagString);
    const char* extraTag = qvnrt::LoadString(kExtraTagString);
    CString name;
    CString url;
    for (POSITION position = m_services.GetStartPosition(); position;) {
        m_services.GetNextAssoc(position, name, url);
        if (name.IsEmpty()) continue;
        if (flags == 0) {
            out.Add(name);
            continue;
        }
        int tags = 0;
        if (url.Find(symbolTag) >= 0) tags |= kSymbolTag;
        if (url.Find(extraTag) >= 0) tags |= kExtraTag;
        const bool taken = (flags & kMatchAnyTag) ? (tags & flags) != 0
                                                  : (flags & ~kMatchExactTags) == tags;
        if (taken) out.Add(name);
    }
    return out.GetSize();
}

int CInetResearch::GetInetSearchURL(const char* service, CString& url, int edit, CWnd* parent) {
    // A copy: the editor reloads this object, and `service` may be GetLastService().
    const CString name(service);
    url.Empty();
    bool found = service && m_services.Lookup(name, url);
    if (!found && edit) {
        EditInetSearchURLs(parent);
        found = service && m_services.Lookup(name, url);
    }
    return found ? 1 : 0;
}

int CInetResearch::IsServiceAvailable(const char* service) {
    return service && m_services.PLookup(service) ? 1 : 0;
}

const char* CInetResearch::GetLastService() { return m_lastService; }

void CInetResearch::SetLastService(const char* service) {
    CPrivateProfile services(kServicesFile);
    if (!service || !*service) {
        m_lastService.Empty();
        services.RemoveKey(kLastServiceSection, kLastServiceKey);
    } else {
        m_lastService = service;
        services.SetValue(kLastServiceSection, kLastServiceKey, service);
    }
    services.Write();
}

void CInetResearch::SetInetSearchURL(CString& url) {
    ReplaceFirst(url, qvnrt::LoadString(kSymbolTagString), m_symbol);
    ReplaceFirst(url, qvnrt::LoadString(kExtraTagString),
                 m_extraText.IsEmpty() ? m_symbol : m_extraText);
}

void CInetResearch::GotoInetSearchPage(const char* serviceName, int interactive, CWnd* parent) {
    using qvnrt::platform::ShowMessageBox;
    // A copy: the editor reloads this object, and the name may be GetLastService().
    const CString service(serviceName);
    if (service.IsEmpty()) {
        // Kept: yes/no buttons on a plain statement, and the answer is not looked at.
        if (interactive) {
            ShowMessageBox(kNoServiceGiven, qvnrt::MB_YESNO | qvnrt::MB_ICONINFORMATION);
        }
        return;
    }
    if (m_services.IsEmpty()) {
        if (interactive) {
            ShowMessageBox(kNoServices, qvnrt::MB_OK | qvnrt::MB_ICONINFORMATION);
            EditInetSearchURLs(parent);
        }
        return;
    }
    CString url;
    if (m_services.Lookup(service, url)) SetInetSearchURL(url);
    if (!url.IsEmpty()) {
        OpenURL(url);
        return;
    }
    if (interactive) {
        CString text;
        text.Format(kNoUrlForService, service.GetString());
        if (ShowMessageBox(text, qvnrt::MB_YESNO | qvnrt::MB_ICONQUESTION) == qvnrt::IDYES) {
            EditInetSearchURLs(parent);
        }
    }
}

void CInetResearch::ResolveHomePage(int edit, CWnd* parent) {
    if (!m_homePage.IsEmpty() || m_symbol.IsEmpty()) return;
    m_homePage = HomePageOf(m_symbol);
    if (m_homePage.IsEmpty() && edit) EditHomePage(parent);
}

void CInetResearch::EditHomePage(CWnd* parent) {
    if (RunHomePageEditor(m_symbol, parent) == qvnrt::IDOK) {
        m_homePage.Empty();
        ResolveHomePage(0, nullptr);
    }
}

int CInetResearch::GetHomePage(CString& out, int edit, CWnd* /*parent*/) {
    if (m_symbol.IsEmpty()) {
        out.Empty();
        return 0;
    }
    // Kept: the caller's parent window is not passed on to the editor.
    if (m_homePage.IsEmpty()) ResolveHomePage(edit, nullptr);
    out = m_homePage;
    return out.IsEmpty() ? 0 : 1;
}

void CInetResearch::GotoHomePage(int edit, CWnd* parent) {
    using qvnrt::platform::ShowMessageBox;
    // The file is read anew, whatever m_homePage held.
    if (!m_symbol.IsEmpty()) m_homePage = HomePageOf(m_symbol);

    while (!m_symbol.IsEmpty() && m_homePage.IsEmpty() && edit) {
        // No owner window: the question stands on its own.
        if (ShowMessageBox(qvnrt::LoadString(kAskForHomePageString),
                           qvnrt::MB_YESNO | qvnrt::MB_ICONQUESTION, 0,
                           kHomePageCaption) != qvnrt::IDYES) {
            break;
        }
        if (RunHomePageEditor(m_symbol, parent) != qvnrt::IDOK) return;
        m_homePage = HomePageOf(m_symbol);
    }

    if (!m_homePage.IsEmpty()) {
        OpenURL(m_homePage);
    } else if (!m_symbol.IsEmpty()) {
        CString text;
        text.Format(kNoHomePage, m_symbol.GetString());
        ShowMessageBox(text, qvnrt::MB_OK | qvnrt::MB_ICONINFORMATION, 0, kHomePageCaption);
    }
}

int CInetResearch::DoInetSearch(CWnd* parent) {
    const auto& run = qvnrt::research::InstalledResearchPanels().search;
    if (run) run(*this, parent);
    return 2;
}

int CInetResearch::EditInetSearchURLs(CWnd* parent) {
    const auto& run = qvnrt::research::InstalledResearchPanels().editServices;
    const int result = run ? run(parent) : qvnrt::IDCANCEL;
    if (result == qvnrt::IDOK) CommonConstructor(m_symbol, m_extraText);
    return result;
}

int CInetResearch::OpenURL(const char* url) {
    if (!url) return 0;
    // Every scheme but http is refused. The address is only taken apart; nothing is sent:
    // the request that the Windows build made from it was never sent either.
    const auto parsed = qvnrt::research::ParseUrl(url);
    if (!parsed || !parsed->IsHttp()) return 0;
    // The host's answer is not looked at: the browser is the user's business from here.
    qvnrt::GetUiHost().OpenUrl(url);
    return 1;
}
