// RTNewsItem: construction, the search's fields, and the headlines by identifier and date.
// The requests to the driver are in RTNewsItemRequests.cpp.
#include <qvnrt/RTNewsItem.h>

#include <cstring>

#include "platform/LiveObjects.h"

namespace {

using LiveItems = qvnrt::platform::LiveObjects<RTNewsItem>;

constexpr int kDefaultMaxArchive = 1000;

}  // namespace

RTNewsItem::RTNewsItem()
    : m_bByKeyword(1),
      m_refCount(0),
      m_bCaseSensitive(0),
      m_startTime(10),  // kept: the same number as the headline maximum, not a date
      m_endTime(0),
      m_maxHeadlines(10),
      m_maxArchive(kDefaultMaxArchive),
      m_pfnArticle(nullptr),
      m_articleUserData(0),
      m_bWholeWords(1),
      m_sources(nullptr),
      m_nSources(0) {
    LiveItems::Insert(this);
}

RTNewsItem::RTNewsItem(const char* searchString, int byKeyword, int caseSensitive,
                       int wholeWords, long maxHeadlines, long startTime, long endTime,
                       unsigned char* sources, int sourceCount, ArticleCallback callback,
                       unsigned long userData)
    : m_searchString(searchString),
      m_bByKeyword(byKeyword),
      m_refCount(0),
      m_bCaseSensitive(caseSensitive),
      m_startTime(startTime),
      m_endTime(endTime),
      m_maxHeadlines(static_cast<unsigned long>(maxHeadlines)),
      m_maxArchive(kDefaultMaxArchive),
      m_pfnArticle(callback),
      m_articleUserData(userData),
      m_bWholeWords(wholeWords),
      m_sources(nullptr),
      m_nSources(0) {
    SetNewsSources(sources, sourceCount);
    LiveItems::Insert(this);
}

RTNewsItem::~RTNewsItem() {
    // Unregistered first: a headline callback that the closing requests still cause finds
    // no item.
    LiveItems::Erase(this);
    StopNewsCollection();
    RemoveAllHeadlines();
    delete[] m_sources;
}

int RTNewsItem::NotifyArticle(RTNewsHeadline* headline, AddRemoveArticle what, int count) {
    // The original called the article callback without a test; a null one is skipped here
    // so that headlines arriving for an item without a callback cannot crash the program.
    if (!m_pfnArticle) return 0;
    return m_pfnArticle(headline, what, this, count, m_articleUserData);
}

// ---- Headlines ----

int RTNewsItem::AddHeadline(unsigned long articleID, const char* headline,
                            unsigned char sourceId, const char* sourceName, long dateTime,
                            int count, int history) {
    if (count <= 0) return NotifyArticle(nullptr, ARTICLE_ADDED, count);
    if (m_headlines.PLookup(articleID)) {
        // The first headline with this identifier stays as it is.
        NotifyArticle(nullptr, ARTICLE_ADDED, 0);
        return 0;
    }
    auto* added = new RTNewsHeadline(articleID, headline, sourceId, sourceName, dateTime, history);
    m_headlines[articleID] = added;
    AddHeadlineToDateSort(added);
    return NotifyArticle(added, ARTICLE_ADDED, count);
}

// A binary search whose exits are kept exactly as they were, since applications see the
// order they give: a tie at the last remaining element goes after it, a tie met on the way
// goes before, and when the bounds cross the headline goes to the front, which is right only
// when the lower bound is still 0 (kept: 12 added to 5, 10, 15, 20 goes first).
int RTNewsItem::AddHeadlineToDateSort(RTNewsHeadline* headline) {
    if (m_dateSort.IsEmpty()) {
        m_dateSort.InsertAt(0, headline);
        return 0;
    }
    const long date = headline->GetDateAndTime();
    int low = 0;
    int high = m_dateSort.GetUpperBound();
    for (;;) {
        const int mid = (low + high) / 2;
        const long midDate = m_dateSort[mid]->GetDateAndTime();
        if (low == high) {
            const int at = date >= midDate ? mid + 1 : mid;
            m_dateSort.InsertAt(at, headline);
            return at;
        }
        if (date < midDate) {
            high = mid - 1;
        } else if (date > midDate) {
            low = mid + 1;
        } else {
            m_dateSort.InsertAt(mid, headline);
            return mid;
        }
        if (low > high) {
            m_dateSort.InsertAt(0, headline);
            return 0;
        }
    }
}

// A plain scan from the front: the array may be out of order (see AddHeadlineToDateSort).
int RTNewsItem::GetFirstIndexAtDate(long dateTime) {
    for (int i = 0; i < m_dateSort.GetSize(); ++i) {
        if (m_dateSort[i]->GetDateAndTime() == dateTime) return i;
    }
    return -1;
}

int RTNewsItem::RemoveArticle(unsigned long articleID, int count) {
    RTNewsHeadline* headline = nullptr;
    if (!m_headlines.Lookup(articleID, headline)) return 0;
    const int first = GetFirstIndexAtDate(headline->GetDateAndTime());
    for (int i = first < 0 ? 0 : first; i < m_dateSort.GetSize(); ++i) {
        if (m_dateSort[i] == headline) {
            m_dateSort.RemoveAt(i);
            break;
        }
    }
    // The application keeps this one: it leaves the date order only.
    if (!headline->CanDelete()) return 0;
    const int removed = m_headlines.RemoveKey(articleID) ? 1 : 0;
    NotifyArticle(headline, ARTICLE_REMOVED, count);
    delete headline;
    return removed;
}

int RTNewsItem::RemoveOldestHeadlines(int number) {
    if (m_dateSort.IsEmpty() || number < 1) return 0;
    // Downward, so that the lower indices stay valid while entries leave. The original did
    // not check `number` against the array; the port skips indices beyond it (a kept
    // headline leaves the array but not the count that the archive limit is computed from),
    // and the counts stay those the caller would have seen.
    int count = number;
    for (int index = number - 1; index >= 0; --index, --count) {
        if (index < m_dateSort.GetSize()) RemoveArticle(m_dateSort[index]->GetArticleID(), count);
    }
    return number;
}

void RTNewsItem::RemoveAllHeadlines() {
    POSITION position = m_headlines.GetStartPosition();
    while (position) {
        unsigned long id = 0;
        RTNewsHeadline* headline = nullptr;
        m_headlines.GetNextAssoc(position, id, headline);
        delete headline;
    }
    m_headlines.RemoveAll();
    m_dateSort.RemoveAll();
}

unsigned long RTNewsItem::GetHeadlineCount() {
    return static_cast<unsigned long>(m_headlines.GetCount());
}

RTNewsHeadline* RTNewsItem::GetNewsHeadline(unsigned long articleID) {
    RTNewsHeadline* headline = nullptr;
    return m_headlines.Lookup(articleID, headline) ? headline : nullptr;
}

int RTNewsItem::GetHeadlines(CPtrArray& out) {
    out.RemoveAll();
    POSITION position = m_headlines.GetStartPosition();
    while (position) {
        unsigned long id = 0;
        RTNewsHeadline* headline = nullptr;
        m_headlines.GetNextAssoc(position, id, headline);
        out.Add(headline);
    }
    return out.GetSize();
}

// ---- Reference count and the search ----

int RTNewsItem::AddRef() { return ++m_refCount; }
int RTNewsItem::Release() { return --m_refCount; }

void RTNewsItem::SetNewsSources(unsigned char* sources, int count) {
    if (count < 0) return;
    delete[] m_sources;
    m_sources = nullptr;
    m_nSources = 0;
    // Null bytes with a positive count are taken as no sources rather than read.
    if (count > 0 && sources) {
        m_sources = new unsigned char[static_cast<size_t>(count)];
        std::memcpy(m_sources, sources, static_cast<size_t>(count));
        m_nSources = count;
    }
}

int RTNewsItem::operator==(const RTNewsItem& other) {
    const bool sameSources =
        m_nSources == other.m_nSources &&
        (m_nSources == 0 ||
         std::memcmp(m_sources, other.m_sources, static_cast<size_t>(m_nSources)) == 0);
    return m_searchString.str() == other.m_searchString.str() &&
                   m_bByKeyword == other.m_bByKeyword &&
                   m_bCaseSensitive == other.m_bCaseSensitive &&
                   m_bWholeWords == other.m_bWholeWords && m_startTime == other.m_startTime &&
                   m_endTime == other.m_endTime && sameSources &&
                   m_maxHeadlines == other.m_maxHeadlines
               ? 1
               : 0;
}

int RTNewsItem::operator<(const RTNewsItem& other) {
    return std::strcmp(m_searchString, other.m_searchString) < 0 ? 1 : 0;
}

// Kept: one body serves both, so a > b is the same test as a < b.
int RTNewsItem::operator>(const RTNewsItem& other) { return *this < other; }

const char* RTNewsItem::GetSearchString() { return m_searchString; }
void RTNewsItem::SetSearchString(const char* searchString) { m_searchString = searchString; }
int RTNewsItem::IsByKeyword() { return m_bByKeyword; }
int RTNewsItem::IsCaseSensitive() { return m_bCaseSensitive; }
void RTNewsItem::SetCaseSensitive(int caseSensitive) { m_bCaseSensitive = caseSensitive; }
int RTNewsItem::FindWholeWordsOnly() { return m_bWholeWords; }
long RTNewsItem::GetStartTime() { return m_startTime; }
void RTNewsItem::SetStartTime(long startTime) { m_startTime = startTime; }
long RTNewsItem::GetEndTime() { return m_endTime; }
void RTNewsItem::SetEndTime(long endTime) { m_endTime = endTime; }
unsigned long RTNewsItem::GetMaxHeadlines() { return m_maxHeadlines; }
void RTNewsItem::SetMaxHeadlines(unsigned long maxHeadlines) { m_maxHeadlines = maxHeadlines; }
int RTNewsItem::GetMaxHeadlinesToArchive() { return m_maxArchive; }
void RTNewsItem::SetMaxHeadlinesToArchive(int maxArchive) { m_maxArchive = maxArchive; }
