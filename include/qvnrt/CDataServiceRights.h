/// \file
/// CDataServiceRights: the service-rights gate. It tracks what a subscriber's plan allows;
/// this build keeps only what the connection and the news collection ask of it: it records
/// each call, and allows everything but news items beyond a plan's concurrent limit.
#pragma once

#include <qvnrt/export.h>

/// The service-rights gate; the library's one instance is g_appDataServiceRights.
/// Called on the main loop's thread only.
class QVNRT_API CDataServiceRights {
public:
    /// The rights value for a tag, given to the driver at connect (tag 5). 1 unless set.
    int GetRightsValue(int tag) const;
    void SetRightsValue(int tag, int value);

    /// The connection's state (RTServer::m_lStatus) when it changes.
    void NoteConnectionState(long status);
    /// The rights data of network event 2 (driver memory; kept as an address only), and the
    /// request to act on it, made while connected.
    void SetRightsData(const void* data);
    void ApplyRightsData();

    /// News items: whether one more may be opened (while fewer than the kind's limit are
    /// open), and that one was opened or released.
    bool MayOpenNewsItem(bool byKeyword) const;
    void NoteNewsItemOpened(bool byKeyword);
    void NoteNewsItemReleased(bool byKeyword);

    /// What was recorded.
    long m_lastConnectionState = 0;
    int m_connectionStateCount = 0;
    const void* m_rightsData = nullptr;
    int m_rightsApplied = 0;
    int m_keywordItemsOpen = 0;
    int m_symbolItemsOpen = 0;

    /// Most news items of each kind open at once; -1 (the default) for no limit.
    int m_keywordItemLimit = -1;
    int m_symbolItemLimit = -1;

private:
    static constexpr int kTags = 16;
    int m_rightsValues[kTags] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1, 1};
};

/// The library's gate, from load to unload.
QVNRT_API extern CDataServiceRights g_appDataServiceRights;
