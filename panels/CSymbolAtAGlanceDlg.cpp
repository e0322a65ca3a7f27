#include <qvnrt/CSymbolAtAGlanceDlg.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include <qvnrt/CDoubleToFractRep.h>
#include <qvnrt/Date.h>
#include <qvnrt/RTServer.h>
#include <qvnrt/driver.h>

namespace {

// The fields the panel asks for, in this order. 3 and 58 have no handler here: the price
// renderer reads them from the cache record.
constexpr char kFields[CSymbolAtAGlanceDlg::kSubscribedFieldCount + 1] = {
    8, 7, 59, 3, 13, 14, 27, 28, 18, 19, 20, 17, 31, 4, 10, 11, 32, 5, 57, 15, 16, 1, 2, 58, 0};

constexpr RTSecurityType kTypeNotKnown = static_cast<RTSecurityType>(98);
constexpr int kStreaming = 1;
constexpr int kDelayedBit = 0x20;
constexpr uint8_t kNoExchange = 0xFF;
constexpr int kExchangeTextSize = 40;
constexpr long kFallbackZone = ZONE_FALLBACK;
constexpr unsigned long kUnlistedZone = 99;  // an exchange whose zone the table lacks
constexpr int kFlagsSymbolOnly = 6;          // services with <SYMBOL> and without <EXTRA>

constexpr const char* kLabels[CSymbolAtAGlanceDlg::kTextCount] = {
    "Description:",  "Exchange:",       "Last:",
    "Change:",       "% Change:",       "Bid:",
    "Ask:",          "Bid Size:",       "Ask Size:",
    "Bid Exchange:", "Ask Exchange:",   "High:",
    "Low:",          "Previous Close:", "52 Week High:",
    "52 Week Low:",  "Volume:",         "Total Volume:",
    "EPS:",          "P/E Ratio:",      "Time:"};

int32_t AsInt(const void* data) {
    return *static_cast<const int32_t*>(data);
}
float AsFloat(const void* data) {
    return *static_cast<const float*>(data);
}

CString ExchangeText(uint8_t exchange) {
    char defaultText[] = "Unknown";
    // Filled with the default first: without a driver (a quote replayed from the cache)
    // the forwarder writes nothing.
    char buffer[kExchangeTextSize + 1] = {};
    std::copy(std::begin(defaultText), std::end(defaultText), buffer);
    RTSecurity::GetExchangeString(exchange, RTEXPROP_NAME, buffer, kExchangeTextSize, defaultText);
    return CString(buffer);
}

CString Formatted(const char* format, double value) {
    CString text;
    text.Format(format, value);
    return text;
}

CString Counted(int32_t value) {
    CString text;
    text.Format("%d", value);
    return text;
}

}  // namespace

CSymbolAtAGlanceDlg::View::~View() = default;

const char* CSymbolAtAGlanceDlg::Label(Text text) {
    return text >= 0 && text < kTextCount ? kLabels[text] : "";
}

const char* CSymbolAtAGlanceDlg::Caption(Button button) {
    switch (button) {
        case kRefreshButton:
            return "Refresh";
        case kCloseButton:
            return "Close";
        case kHomePageButton:
            return "Visit corporate homepage...";
        case kGotoButton:
            return "Goto...";
        case kEditButton:
            return "Edit...";
    }
    return "";
}

CSymbolAtAGlanceDlg::CSymbolAtAGlanceDlg(const char* symbol, CWnd* parent)
    : m_research(symbol, nullptr), m_pView(nullptr), m_pParentWnd(parent) {
    ResetValues();
    m_strSymbolBox = symbol;
}

CSymbolAtAGlanceDlg::~CSymbolAtAGlanceDlg() {
    CloseSecurity();
}

int CSymbolAtAGlanceDlg::DoModal() {
    const int result = qvnrt::GetUiHost().RunModal(*this);
    // The host's window is gone: no more quotes for it.
    if (m_pView) {
        m_pView = nullptr;
        CloseSecurity();
    }
    return result;
}

void CSymbolAtAGlanceDlg::ResetValues() {
    m_strRawSymbol.Empty();
    m_bDelayed = 0;
    m_fLast = m_fPrevious = m_fHigh = m_fLow = m_fBid = m_fAsk = 0.0f;
    m_f52WeekHigh = m_f52WeekLow = m_fEPS = m_fPERatio = 0.0f;
    m_lTime = m_lBidSize = m_lAskSize = m_lVolume = m_lTotalVolume = 0;
    m_byExchange = kNoExchange;
    m_nTickArrow = 0;
    for (CString& text : m_texts) text = kNoValue;
}

void CSymbolAtAGlanceDlg::RebuildSymbolBox() {
    m_strSymbolBox = m_strRawSymbol;
    if (m_bDelayed) m_strSymbolBox += kDelayedMark;
    if (m_pView) m_pView->SetSymbolText(m_strSymbolBox);
}

void CSymbolAtAGlanceDlg::ShowTickArrow(Arrow shown, Arrow hidden) {
    if (!m_pView || m_pView->IsArrowVisible(shown)) return;
    m_pView->ShowArrow(hidden, false);
    m_pView->ShowArrow(shown, true);
}

int CSymbolAtAGlanceDlg::ReqSecCallback(unsigned long, int, int field, int, void* data) {
    if (!data) return 1;  // field 0 ends a batch and carries nothing
    switch (field) {
        case RTFIELD_SYMBOL:
            m_strRawSymbol = static_cast<const char*>(data);
            RebuildSymbolBox();
            break;
        case RTFIELD_NAME:
            m_texts[kDescription] = static_cast<const char*>(data);
            break;
        case RTFIELD_LAST:
            m_fLast = static_cast<float>(*static_cast<const double*>(data));
            break;
        case RTFIELD_PREV_CLOSE:
            m_fPrevious = AsFloat(data);
            break;
        case RTFIELD_BIT_FLAGS:
            m_bDelayed = (AsInt(data) & kDelayedBit) ? 1 : 0;
            RebuildSymbolBox();
            break;
        case RTFIELD_EXCHANGE:
            m_byExchange = static_cast<uint8_t>(AsInt(data));
            m_texts[kExchange] = ExchangeText(m_byExchange);
            break;
        case RTFIELD_HIGH:
            m_fHigh = AsFloat(data);
            break;
        case RTFIELD_LOW:
            m_fLow = AsFloat(data);
            break;
        case RTFIELD_BID:
            m_fBid = AsFloat(data);
            break;
        case RTFIELD_ASK:
            m_fAsk = AsFloat(data);
            break;
        case RTFIELD_TOTAL_VOLUME:
            m_lTotalVolume = AsInt(data);
            break;
        case RTFIELD_VOLUME:
            m_lVolume = AsInt(data);
            break;
        case RTFIELD_BID_SIZE:
            m_lBidSize = static_cast<uint16_t>(AsInt(data));
            break;
        case RTFIELD_ASK_SIZE:
            m_lAskSize = static_cast<uint16_t>(AsInt(data));
            break;
        case RTFIELD_BID_EXCHANGE:
            m_texts[kBidExchange] = ExchangeText(static_cast<uint8_t>(AsInt(data)));
            break;
        case RTFIELD_ASK_EXCHANGE:
            m_texts[kAskExchange] = ExchangeText(static_cast<uint8_t>(AsInt(data)));
            break;
        case RTFIELD_YEAR_HIGH:
            m_f52WeekHigh = AsFloat(data);
            break;
        case RTFIELD_YEAR_LOW:
            m_f52WeekLow = AsFloat(data);
            break;
        case RTFIELD_EPS:
            // A zero is no value: the text stays as it was.
            m_fEPS = AsFloat(data);
            if (m_fEPS != 0.0f) m_texts[kEPS] = Formatted("%0.3f", m_fEPS);
            break;
        case RTFIELD_PE_RATIO:
            m_fPERatio = AsFloat(data);
            if (m_fPERatio != 0.0f) m_texts[kPERatio] = Formatted("%0.3f", m_fPERatio);
            break;
        case RTFIELD_QUOTE_TIME:
            m_lTime = AsInt(data);
            break;
        case RTFIELD_TICK:
            if (static_cast<int16_t>(AsInt(data)) < 0) {
                m_nTickArrow = 2;
                ShowTickArrow(kDownArrow, kUpArrow);
            } else {
                m_nTickArrow = 1;
                ShowTickArrow(kUpArrow, kDownArrow);
            }
            break;
        default:
            break;
    }
    return 1;
}

void CSymbolAtAGlanceDlg::OnSecChanged() {
    // In the security's own display style. ToString's text lies in a shared buffer, so each
    // result is copied at once.
    CDoubleToFractRep price(this);
    const double change = static_cast<double>(m_fLast) - static_cast<double>(m_fPrevious);
    const char* sign = change >= 0.0 ? "+" : "";
    double percent = 0.0;
    if (m_fPrevious != 0.0f) percent = change / std::fabs(m_fPrevious) * 100.0;

    const struct {
        float value;
        Text text;
    } prices[] = {{m_fLast, kLast},
                  {m_fBid, kBid},
                  {m_f52WeekHigh, k52WeekHigh},
                  {m_f52WeekLow, k52WeekLow},
                  {m_fAsk, kAsk},
                  {m_fHigh, kHigh},
                  {m_fLow, kLow},
                  {m_fPrevious, kPrevious}};
    for (const auto& entry : prices) {
        if (entry.value != 0.0f) m_texts[entry.text] = price.ToString(entry.value);
    }
    if (m_lBidSize != 0) m_texts[kBidSize] = Counted(m_lBidSize);
    if (m_lAskSize != 0) m_texts[kAskSize] = Counted(m_lAskSize);
    if (percent != 0.0) m_texts[kPercent] = Formatted("%04.2f%%", percent);

    if (m_lTime != 0 && m_byExchange != kNoExchange) {
        // Without a driver (a quote replayed from the cache) the forwarder answers 0, not
        // the default; the default is what a driver gives for an exchange it does not know.
        unsigned long zone =
            RTServer::m_hInstance
                ? RTSecurity::GetExchangeLong(m_byExchange, RTEXPROP_ZONE, kFallbackZone)
                : kFallbackZone;
        if (zone == kUnlistedZone) zone = kFallbackZone;
        uint32_t month, day, year, hour, minute, second;
        Date(static_cast<uint32_t>(m_lTime))
            .getMDYHMS(month, day, year, hour, minute, second, static_cast<uint8_t>(zone));
        m_texts[kTime].Format("%02d/%02d/%02d %02d:%02d:%02d", month, day, year, hour, minute,
                              second);
    }
    if (m_lVolume != 0) m_texts[kVolume] = Counted(m_lVolume);
    if (m_lTotalVolume != 0) m_texts[kTotalVolume] = Counted(m_lTotalVolume);

    // Always written: an empty quote shows "+" and a zero in the security's style.
    m_texts[kChange] = CString(sign) + price.ToString(change);

    if (m_pView) DoDataExchange(*m_pView, false);
}

bool CSymbolAtAGlanceDlg::DoDataExchange(View& view, bool save) {
    if (save) {
        CString text;
        if (!view.GetSymbolText(text)) return false;
        text.Trim();
        // The delayed mark is the panel's, not part of the symbol.
        const CString mark(kDelayedMark);
        if (text.GetLength() > mark.GetLength() && text.Right(mark.GetLength()) == mark) {
            text = text.Left(text.GetLength() - mark.GetLength());
        }
        m_strSymbolBox = text;
        return true;
    }
    view.SetSymbolText(m_strSymbolBox);
    for (int text = 0; text < kTextCount; ++text) {
        view.SetText(static_cast<Text>(text), m_texts[text]);
    }
    return true;
}

int CSymbolAtAGlanceDlg::OnInitDialog(View& view) {
    m_pView = &view;
    DoDataExchange(view, false);  // the controls start from the panel's values
    FillServiceBox();
    view.ShowButton(kRefreshButton, false);
    Refresh();
    return 1;
}

void CSymbolAtAGlanceDlg::OnOK() {}

void CSymbolAtAGlanceDlg::FillServiceBox() {
    if (!m_pView) return;
    View& view = *m_pView;
    view.ResetServices();
    CStringArray services;
    m_research.EnumInetServiceNames(services, kFlagsSymbolOnly);
    const bool any = services.GetSize() > 0;
    if (!any) {
        view.SelectService(view.AddService(kNoServices));
    } else {
        for (int i = 0; i < services.GetSize(); ++i) view.AddService(services[i]);
    }
    view.EnableServices(any);
    for (Button button : {kGotoButton, kEditButton}) {
        view.EnableButton(button, any);
        view.ShowButton(button, any);
    }
    if (!any) return;
    const int last = view.FindService(m_research.GetLastService());
    if (last >= 0) {
        view.SelectService(last);
    } else {
        view.SelectService(0);
        m_research.SetLastService(nullptr);
    }
}

void CSymbolAtAGlanceDlg::Refresh() {
    if (!m_pView || !DoDataExchange(*m_pView, true)) return;
    const CString symbol = m_strSymbolBox;
    ResetValues();
    m_pView->ShowArrow(kUpArrow, false);
    m_pView->ShowArrow(kDownArrow, false);
    DoDataExchange(*m_pView, false);
    m_research.UpdateSymbolName(symbol);
    // Not closed first: ReqSecurity cancels an earlier request of its own accord.
    char fields[sizeof(kFields)];
    std::copy(std::begin(kFields), std::end(kFields), fields);
    ReqSecurity(symbol, fields, kTypeNotKnown, kStreaming, 0);
}

void CSymbolAtAGlanceDlg::OnSymbolChanged() {
    if (!m_pView) return;
    CString text;
    const bool readable = m_pView->GetSymbolText(text);
    m_pView->ShowButton(kRefreshButton, true);
    m_pView->SetDefaultButton(kRefreshButton);
    m_pView->EnableButton(kRefreshButton, readable && !text.IsEmpty());
}

void CSymbolAtAGlanceDlg::OnRefresh() {
    if (!m_pView) return;
    m_pView->ShowButton(kRefreshButton, false);
    m_pView->SetDefaultButton(kCloseButton);
    Refresh();
}

void CSymbolAtAGlanceDlg::OnVisitHomePage() {
    m_research.GotoHomePage(1, &m_wndPanel);
}

void CSymbolAtAGlanceDlg::OnServiceChanged() {
    if (!m_pView) return;
    m_research.SetLastService(m_pView->GetSelectedService());
}

void CSymbolAtAGlanceDlg::OnGoto() {
    if (!m_pView) return;
    m_research.GotoInetSearchPage(m_pView->GetSelectedService(), 1, &m_wndPanel);
}

void CSymbolAtAGlanceDlg::OnEditServices() {
    if (m_research.EditInetSearchURLs(&m_wndPanel) == qvnrt::IDOK) FillServiceBox();
}

int DisplaySymbolAtAGlanceDlg(HWND owner, const char* symbol) {
    if (!symbol) return 0;
    // The owner travels to the host in a temporary window object.
    CWnd ownerWindow(owner);
    CSymbolAtAGlanceDlg panel(symbol, owner ? &ownerWindow : nullptr);
    panel.DoModal();
    return 0;
}
