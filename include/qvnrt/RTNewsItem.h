/// \file
/// RTNewsItem: one running news search (keyword text or a list of symbols, sources, a time
/// window, limits) and the headlines it has received, by identifier and by date.
#pragma once

#include <qvnrt/RTNewsHeadline.h>
#include <qvnrt/compat/CArray.h>
#include <qvnrt/compat/CMap.h>
#include <qvnrt/compat/CString.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

/// What the article callback reports.
enum AddRemoveArticle { ARTICLE_ADDED = 0, ARTICLE_REMOVED = 1 };

/// A news search and its headlines, which it owns. The application owns the item; AddRef
/// and Release count its users, and Release never deletes.
///
/// The article callback hears of each headline added or removed. Its `count` says how many
/// articles of the batch are still to come, this one included (1 marks the last); its
/// headline may be null (a delivery that carried no article, or a repeated one). A removed
/// headline is still alive during the call and deleted after it.
///
/// Threads: none of its own; the driver delivers on the main loop's thread.
class QVNRT_API RTNewsItem {
public:
    typedef int (*ArticleCallback)(RTNewsHeadline* headline, AddRemoveArticle what,
                                   RTNewsItem* item, int count, unsigned long userData);
    /// Headlines by article identifier, in the framework's order: 17 buckets, hash key >> 4.
    typedef qvnrt::compat::HashMap<unsigned long, RTNewsHeadline*, qvnrt::compat::ShiftHash>
        HeadlineMap;

    /// Starts idle, with no headlines, a reference count of 0, and an archive limit of 1000.
    /// `sources` is copied as SetNewsSources copies it.
    RTNewsItem(const char* searchString, int byKeyword, int caseSensitive, int wholeWords,
               long maxHeadlines, long startTime, long endTime, unsigned char* sources,
               int sourceCount, ArticleCallback callback, unsigned long userData);
    RTNewsItem(const RTNewsItem&) = delete;
    RTNewsItem& operator=(const RTNewsItem&) = delete;
    /// Stops collecting, then deletes every headline.
    ~RTNewsItem();

    // ---- Collecting ----

    /// Opens the search's requests while connected: one for keyword text or, when the
    /// driver takes a whole symbol list (property 13), one for the list; else one per
    /// symbol of the blank-separated list (two blanks make an empty symbol). The
    /// service-rights gate may refuse an item. With showMessages set, a partly failed
    /// symbol search says so: a message when the gate refused, else the "News Unavailable"
    /// panel, unless every symbol failed. 1 when collecting (also when already collecting,
    /// with nothing sent), else 0.
    int StartNewsCollection(int showMessages, ServiceLimit limit);
    /// Closes every request and releases it at the gate. Headlines stay. Returns 1.
    int StopNewsCollection();
    /// 1 while any request is open.
    int IsCollecting();

    // ---- Headlines ----

    /// Adds a headline and reports it with `count`. A count of 0 or below makes none and
    /// reports a null headline with that count; a known identifier reports a null headline
    /// with count 0, keeps the first, and returns 0. Otherwise the callback's result.
    int AddHeadline(unsigned long articleID, const char* headline, unsigned char sourceId,
                    const char* sourceName, long dateTime, int count, int history);
    /// Takes the headline out of the date order; unless it has CanDelete() 0, also out of
    /// the item, reporting it removed with `count` before deleting it. 1 when deleted, else 0.
    int RemoveArticle(unsigned long articleID, int count);
    /// Removes the first `number` entries of the date order, last first, with counts
    /// `number` down to 1. Returns `number`, or 0 when there is nothing to do.
    int RemoveOldestHeadlines(int number);
    /// Deletes every headline, whatever CanDelete() says, without callbacks.
    void RemoveAllHeadlines();
    unsigned long GetHeadlineCount();
    /// Null when absent. The item owns the headline.
    RTNewsHeadline* GetNewsHeadline(unsigned long articleID);
    /// Replaces `out` by every headline in the map's order (not date order); their number.
    int GetHeadlines(CPtrArray& out);

    // ---- Request handles ----

    void AddRTNewsEvent(unsigned long event);
    /// Replaces `out` by the open handles; their number.
    int GetRTNewsEvents(CDWordArray& out);
    /// Closes one handle and forgets it (the gate is not told): 1. A 0 argument gives 0; a
    /// handle not held is returned unchanged (kept: callers cannot tell it from success).
    int RemoveRTNewsEvent(unsigned long event);

    // ---- Reference count ----

    int AddRef();
    int Release();

    // ---- The search ----

    /// Copies `count` bytes; 0 (or null bytes) clears the sources; a negative count changes
    /// nothing.
    void SetNewsSources(unsigned char* sources, int count);
    /// 1 when text, kind, case, whole words, window, sources and maximum all match.
    int operator==(const RTNewsItem& other);
    /// 1 when this search text sorts before the other's, byte by byte.
    int operator<(const RTNewsItem& other);
    /// The same test as operator< (kept: applications rely on it), not its reverse.
    int operator>(const RTNewsItem& other);

    const char* GetSearchString();
    void SetSearchString(const char* searchString);
    int IsByKeyword();
    int IsCaseSensitive();
    void SetCaseSensitive(int caseSensitive);
    int FindWholeWordsOnly();
    long GetStartTime();
    void SetStartTime(long startTime);
    long GetEndTime();
    void SetEndTime(long endTime);
    unsigned long GetMaxHeadlines();
    void SetMaxHeadlines(unsigned long maxHeadlines);
    int GetMaxHeadlinesToArchive();
    void SetMaxHeadlinesToArchive(int maxArchive);

    CString m_searchString;  ///< keyword text, or symbols separated by blanks
    int m_bByKeyword;
    HeadlineMap m_headlines;  ///< owns the headlines
    qvnrt::compat::VectorArray<RTNewsHeadline*> m_dateSort;  ///< oldest first; not owned
    int m_refCount;
    CDWordArray m_events;  ///< open request handles
    int m_bCaseSensitive;
    long m_startTime;
    long m_endTime;  ///< seconds since 1970; 0 open-ended
    unsigned long m_maxHeadlines;
    int m_maxArchive;  ///< most headlines kept, enforced at the end of each batch
    ArticleCallback m_pfnArticle;
    unsigned long m_articleUserData;
    int m_bWholeWords;
    unsigned char* m_sources;  ///< owned; null when there are none
    int m_nSources;

private:
    RTNewsItem();

    int AddHeadlineToDateSort(RTNewsHeadline* headline);
    int GetFirstIndexAtDate(long dateTime);

    /// Sends one request for `searchText`; the handle, 0 on failure.
    unsigned long RequestHeadlines(const CString& searchText, int live, ServiceLimit limit);
    /// One request for the whole search text, when the gate allows.
    void StartSingleRequest(int live, ServiceLimit limit);
    /// One request per symbol, then the messages of a partial failure.
    void StartPerSymbol(int showMessages, int live, ServiceLimit limit);
    int NotifyArticle(RTNewsHeadline* headline, AddRemoveArticle what, int count);

    /// The driver's headline callback; `user` is the item, looked up among live items.
    static int NewsHeadlinesCallbackHelper(unsigned long request, int count,
                                           unsigned long articleID, char* headline,
                                           unsigned char sourceId, char* sourceName,
                                           long dateTime, int history, unsigned long user);
};
