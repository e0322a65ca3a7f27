// RTNewsItem: starting and stopping the search's requests, their handles, and the driver's
// headline callback.
#include <qvnrt/CDataServiceRights.h>
#include <qvnrt/RTNewsItem.h>
#include <qvnrt/RTServer.h>

#include <string>

#include "config/Strings.h"
#include "news/NewsState.h"
#include "platform/Clock.h"
#include "platform/LiveObjects.h"
#include "platform/UiHost.h"

namespace {

using LiveItems = qvnrt::platform::LiveObjects<RTNewsItem>;

constexpr unsigned kNewsNotAvailable = 116;  // "... on %d out of the %d symbols you listed."
constexpr unsigned kNewsLimitReached = 118;
constexpr const char* kSymbolNewsCaption = "Symbol News Search";

// Splits off the text before the first blank; `rest` becomes what follows it (empty when
// the blank was last, or when there was none).
CString TakeSymbol(CString& rest) {
    const int blank = rest.Find(' ');
    if (blank < 0) {
        CString symbol = rest;
        rest.Empty();
        return symbol;
    }
    CString symbol = rest.Left(blank);
    rest = rest.Mid(blank + 1);
    return symbol;
}

}  // namespace

int RTNewsItem::StartNewsCollection(int showMessages, ServiceLimit limit) {
    if (!RTServer::IsConnected()) return 0;
    if (IsCollecting()) return 1;
    if (!RTServer::m_lpClientReqNewsHeadlines) return 0;

    // Open-ended, or a window that has not closed yet, asks for live headlines too.
    const int live = m_endTime == 0 || m_endTime >= qvnrt::platform::Now() ? 1 : 0;
    if (m_bByKeyword || RTServer::GetProperty(RTPROP_NEWS_WHOLE_SYMBOL_LIST, 0) != 0) {
        StartSingleRequest(live, limit);
    } else {
        StartPerSymbol(showMessages, live, limit);
    }
    return IsCollecting();
}

unsigned long RTNewsItem::RequestHeadlines(const CString& searchText, int live,
                                           ServiceLimit limit) {
    // The driver takes the text as char*; it gets a copy of its own.
    std::string text = searchText.str();
    return RTServer::m_lpClientReqNewsHeadlines(
        text.data(), m_bByKeyword, m_bCaseSensitive, m_bWholeWords,
        static_cast<int>(m_maxHeadlines), m_sources, m_nSources, m_startTime, m_endTime,
        &NewsHeadlinesCallbackHelper, reinterpret_cast<unsigned long>(this), live, limit);
}

// A keyword search, or a symbol list that the driver takes whole. A refusal by the gate is
// silent at every setting of showMessages.
void RTNewsItem::StartSingleRequest(int live, ServiceLimit limit) {
    const bool byKeyword = m_bByKeyword != 0;
    if (!g_appDataServiceRights.MayOpenNewsItem(byKeyword)) return;
    if (const unsigned long handle = RequestHeadlines(m_searchString, live, limit)) {
        g_appDataServiceRights.NoteNewsItemOpened(byKeyword);
        AddRTNewsEvent(handle);
    }
}

void RTNewsItem::StartPerSymbol(int showMessages, int live, ServiceLimit limit) {
    int failures = 0;
    int symbols = 0;
    bool refused = false;
    CString failedList;
    {
        qvnrt::platform::WaitCursor wait;
        // Two blanks in a row give an empty symbol, which is asked for like any other.
        CString rest = m_searchString;
        while (!rest.IsEmpty()) {
            const CString symbol = TakeSymbol(rest);
            unsigned long handle = 0;
            if (g_appDataServiceRights.MayOpenNewsItem(false)) {
                handle = RequestHeadlines(symbol, live, limit);
            } else {
                refused = true;
            }
            if (handle) {
                g_appDataServiceRights.NoteNewsItemOpened(false);
                AddRTNewsEvent(handle);
            } else {
                failedList += symbol;
                failedList += " ";
                ++failures;
            }
            ++symbols;
        }
        if (failures > 0 && showMessages) {
            if (refused) {
                qvnrt::platform::ShowMessageBox(qvnrt::LoadString(kNewsLimitReached),
                                                qvnrt::MB_OK | qvnrt::MB_ICONINFORMATION, 0,
                                                kSymbolNewsCaption);
            } else if (failures < symbols) {
                // When every symbol failed nothing is shown: the result says it all.
                CString message;
                message.Format(qvnrt::LoadString(kNewsNotAvailable), failures, symbols);
                qvnrt::news::State().showUnavailable(message, failedList);
            }
        }
    }
}

int RTNewsItem::StopNewsCollection() {
    const bool byKeyword = m_bByKeyword != 0;
    for (const uint32_t event : m_events) {
        g_appDataServiceRights.NoteNewsItemReleased(byKeyword);
        unsigned long handle = event;
        RTServer::CloseEvent(handle);
    }
    m_events.RemoveAll();
    return 1;
}

int RTNewsItem::IsCollecting() { return m_events.IsEmpty() ? 0 : 1; }

void RTNewsItem::AddRTNewsEvent(unsigned long event) {
    m_events.Add(static_cast<uint32_t>(event));
}

int RTNewsItem::GetRTNewsEvents(CDWordArray& out) {
    out.RemoveAll();
    for (const uint32_t event : m_events) out.Add(event);
    return out.GetSize();
}

int RTNewsItem::RemoveRTNewsEvent(unsigned long event) {
    if (event == 0) return 0;
    for (int i = 0; i < m_events.GetSize(); ++i) {
        if (m_events[i] == event) {
            unsigned long handle = event;
            RTServer::CloseEvent(handle);
            m_events.RemoveAt(i);
            return 1;
        }
    }
    // Kept: a handle not held comes back unchanged, which a caller testing for non-zero
    // takes for success.
    return static_cast<int>(event);
}

int RTNewsItem::NewsHeadlinesCallbackHelper(unsigned long, int count, unsigned long articleID,
                                            char* headline, unsigned char sourceId,
                                            char* sourceName, long dateTime, int history,
                                            unsigned long user) {
    RTNewsItem* item = LiveItems::Cast<RTNewsItem>(user);
    if (!item) return 0;
    const int result =
        item->AddHeadline(articleID, headline, sourceId, sourceName, dateTime, count, history);
    // The application may have deleted the item from its article callback.
    if (!LiveItems::Contains(item)) return result;
    // The archive limit holds at the end of a batch only, so a batch may pass it until then.
    if (count == 1) {
        const long excess = static_cast<long>(item->GetHeadlineCount()) - item->m_maxArchive;
        if (excess > 0) item->RemoveOldestHeadlines(static_cast<int>(excess));
    }
    return result;
}
