/// \file
/// RTNewsHeadline: one news article as the client knows it (identifier, publication time,
/// source, headline text) and its body, fetched from the driver on demand.
#pragma once

#include <qvnrt/compat/CString.h>
#include <qvnrt/driver.h>
#include <qvnrt/export.h>

/// One article. Headlines are made and owned by an RTNewsItem; an application reads them,
/// asks for their bodies, and may keep one alive with SetCanDelete(0).
///
/// Threads: none of its own; everything runs on the main loop's thread, where the driver
/// delivers stories.
class QVNRT_API RTNewsHeadline {
public:
    /// Called when a body arrives (or is set): the headline, and the user value given to
    /// GetArticleBody. The result is ignored.
    typedef int (*BodyReadyCallback)(RTNewsHeadline* headline, unsigned long userData);

    /// A null headline or source name leaves that text empty. CanDelete() starts at 1; no
    /// body callback is stored.
    RTNewsHeadline(unsigned long articleID, const char* headline, unsigned char sourceId,
                   const char* sourceName, long dateTime, int history);
    /// Copies every field, the body callback and its user value included.
    RTNewsHeadline(const RTNewsHeadline& other);
    RTNewsHeadline& operator=(const RTNewsHeadline& other);

    // ---- Virtual operations, in slot order ----

    /// Debug builds assert that this is a live headline; release builds do nothing.
    virtual void AssertValid() const;
    virtual ~RTNewsHeadline();

    // ---- Accessors: each reads or writes one field ----

    unsigned long GetArticleID();
    void SetArticleID(unsigned long articleID);
    long GetDateAndTime();
    void SetDateAndTime(long dateTime);
    /// Valid until the headline changes or is deleted.
    const char* GetHeadline();
    /// A null text empties the headline.
    void SetHeadline(const char* headline);
    int IsHeadlineForHistory();
    void SetAsHistory(int history);
    int CanDelete();
    /// While 0, RTNewsItem::RemoveArticle takes the headline out of the date order but
    /// neither deletes it nor reports it removed. Set it while a body request is in flight.
    void SetCanDelete(int canDelete);
    /// The source byte.
    unsigned char GetNewsSource();
    /// Copies the source's name to `out`; 1 when it is not empty, else 0.
    int GetNewsSource(CString& out);
    /// 1 once a body is present.
    int HasBodyBeenRetrieved();
    /// Forgets the body callback. The driver is not told: a story that still arrives is
    /// stored without a callback.
    void CancelBodyRetrieval();

    // ---- The body ----

    /// The body when present (callback and limit unread). Else, with a null callback, the
    /// headline text and no request. Else stores the callback and user value, asks the
    /// driver for the story when connected, and returns "Retrieving article body...Please
    /// wait." (also when not connected, when no story will come). A second call before the
    /// story arrives asks again. The text is valid until the headline changes.
    const char* GetArticleBody(BodyReadyCallback callback, unsigned long userData,
                               ServiceLimit limit);
    /// Sets the body to the headline, two CRLFs and the formatted text; a null text empties
    /// the body. Then calls the stored callback, if any, which stays stored.
    void SetArticleBody(const char* text);

protected:
    /// Replaces `out` by `source` with each line end (LF, CR, CRLF, LFCR) made one CRLF and
    /// each tab four blanks. An empty (or null) source gives one NUL character: kept, since
    /// the body then counts as retrieved.
    void FormatBodyCopy(const char* source, CString& out);

public:
    int m_bCanDelete;
    int m_bHistory;  ///< from history rather than the live feed
    unsigned long m_bodyUserData;
    unsigned char m_sourceId;
    CString m_sourceName;  ///< may be empty
    long m_dateTime;       ///< as the driver delivers it; compared only for order
    CString m_headline;
    CString m_body;  ///< the formatted article; empty until retrieved
    unsigned long m_articleID;
    BodyReadyCallback m_pfnBodyReady;  ///< null when nobody waits

private:
    /// The driver's story callback; `user` is the headline, looked up among live headlines.
    static int NewsStoryCallbackHelper(unsigned long request, int status,
                                       unsigned long articleID, char* story,
                                       unsigned long user);
};
