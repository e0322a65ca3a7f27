#include <qvnrt/RTNewsHeadline.h>

#include <qvnrt/RTServer.h>

#include <cassert>
#include <cstring>

#include "platform/LiveObjects.h"

namespace {

using LiveHeadlines = qvnrt::platform::LiveObjects<RTNewsHeadline>;

constexpr const char* kRetrievingBody = "Retrieving article body...Please wait.";

}  // namespace

RTNewsHeadline::RTNewsHeadline(unsigned long articleID, const char* headline,
                               unsigned char sourceId, const char* sourceName, long dateTime,
                               int history)
    : m_bCanDelete(1),
      m_bHistory(history),
      m_bodyUserData(0),
      m_sourceId(sourceId),
      m_sourceName(sourceName),
      m_dateTime(dateTime),
      m_headline(headline),
      m_articleID(articleID),
      m_pfnBodyReady(nullptr) {
    LiveHeadlines::Insert(this);
}

RTNewsHeadline::RTNewsHeadline(const RTNewsHeadline& other)
    : m_bCanDelete(other.m_bCanDelete),
      m_bHistory(other.m_bHistory),
      m_bodyUserData(other.m_bodyUserData),
      m_sourceId(other.m_sourceId),
      m_sourceName(other.m_sourceName),
      m_dateTime(other.m_dateTime),
      m_headline(other.m_headline),
      m_body(other.m_body),
      m_articleID(other.m_articleID),
      m_pfnBodyReady(other.m_pfnBodyReady) {
    LiveHeadlines::Insert(this);
}

RTNewsHeadline& RTNewsHeadline::operator=(const RTNewsHeadline& other) {
    m_bCanDelete = other.m_bCanDelete;
    m_bHistory = other.m_bHistory;
    m_bodyUserData = other.m_bodyUserData;
    m_sourceId = other.m_sourceId;
    m_sourceName = other.m_sourceName;
    m_dateTime = other.m_dateTime;
    m_headline = other.m_headline;
    m_body = other.m_body;
    m_articleID = other.m_articleID;
    m_pfnBodyReady = other.m_pfnBodyReady;
    return *this;
}

RTNewsHeadline::~RTNewsHeadline() { LiveHeadlines::Erase(this); }

void RTNewsHeadline::AssertValid() const { assert(LiveHeadlines::Contains(this)); }

unsigned long RTNewsHeadline::GetArticleID() { return m_articleID; }
void RTNewsHeadline::SetArticleID(unsigned long articleID) { m_articleID = articleID; }
long RTNewsHeadline::GetDateAndTime() { return m_dateTime; }
void RTNewsHeadline::SetDateAndTime(long dateTime) { m_dateTime = dateTime; }
const char* RTNewsHeadline::GetHeadline() { return m_headline; }
void RTNewsHeadline::SetHeadline(const char* headline) { m_headline = headline; }
int RTNewsHeadline::IsHeadlineForHistory() { return m_bHistory; }
void RTNewsHeadline::SetAsHistory(int history) { m_bHistory = history; }
int RTNewsHeadline::CanDelete() { return m_bCanDelete; }
void RTNewsHeadline::SetCanDelete(int canDelete) { m_bCanDelete = canDelete; }
unsigned char RTNewsHeadline::GetNewsSource() { return m_sourceId; }

int RTNewsHeadline::GetNewsSource(CString& out) {
    out = m_sourceName;
    return out.IsEmpty() ? 0 : 1;
}

int RTNewsHeadline::HasBodyBeenRetrieved() { return m_body.IsEmpty() ? 0 : 1; }
void RTNewsHeadline::CancelBodyRetrieval() { m_pfnBodyReady = nullptr; }

const char* RTNewsHeadline::GetArticleBody(BodyReadyCallback callback, unsigned long userData,
                                           ServiceLimit limit) {
    if (!m_body.IsEmpty()) return m_body;
    if (!callback) return m_headline;
    m_pfnBodyReady = callback;
    m_bodyUserData = userData;
    // The request's result is ignored, and nothing stops a second request while one is in
    // flight: the caller sees only whether its callback is called.
    if (RTServer::IsConnected() && RTServer::m_lpclientReqNewsStory) {
        RTServer::m_lpclientReqNewsStory(m_articleID, m_sourceId, &NewsStoryCallbackHelper,
                                         reinterpret_cast<unsigned long>(this), limit);
    }
    return kRetrievingBody;
}

void RTNewsHeadline::SetArticleBody(const char* text) {
    if (text) {
        CString formatted;
        FormatBodyCopy(text, formatted);
        // The headline opens the article, with one blank line under it.
        m_body = m_headline;
        m_body += "\r\n";
        m_body += "\r\n";
        m_body += formatted;
    } else {
        m_body.Empty();
    }
    // Delivery does not clear the callback: a later SetArticleBody notifies it again.
    if (m_pfnBodyReady) m_pfnBodyReady(this, m_bodyUserData);
}

void RTNewsHeadline::FormatBodyCopy(const char* source, CString& out) {
    out.Empty();
    if (!source) source = "";  // the port's guard; the walk below then sees an empty text
    const size_t length = std::strlen(source);
    size_t index = 0;
    // A do-while: the first character is looked at before the index is compared with the
    // length, so an empty source appends its terminating NUL (kept: an empty story still
    // counts as a retrieved body).
    do {
        const char ch = source[index];
        if (ch == '\n') {
            out += "\r\n";
            if (source[index + 1] == '\r') ++index;
        } else if (ch == '\r') {
            out += "\r\n";
            if (source[index + 1] == '\n') ++index;
        } else if (ch == '\t') {
            out += "    ";
        } else {
            out += ch;
        }
        ++index;
    } while (index < length);
}

int RTNewsHeadline::NewsStoryCallbackHelper(unsigned long, int, unsigned long, char* story,
                                            unsigned long user) {
    // A story for a headline that has been deleted finds nothing registered and is dropped.
    if (RTNewsHeadline* headline = LiveHeadlines::Cast<RTNewsHeadline>(user)) {
        headline->SetArticleBody(story);
    }
    return 0;
}
