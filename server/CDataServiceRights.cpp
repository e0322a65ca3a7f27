#include <qvnrt/CDataServiceRights.h>

CDataServiceRights g_appDataServiceRights;

int CDataServiceRights::GetRightsValue(int tag) const {
    return (tag >= 0 && tag < kTags) ? m_rightsValues[tag] : 1;
}

void CDataServiceRights::SetRightsValue(int tag, int value) {
    if (tag >= 0 && tag < kTags) m_rightsValues[tag] = value;
}

void CDataServiceRights::NoteConnectionState(long status) {
    m_lastConnectionState = status;
    ++m_connectionStateCount;
}

void CDataServiceRights::SetRightsData(const void* data) { m_rightsData = data; }

void CDataServiceRights::ApplyRightsData() { ++m_rightsApplied; }

bool CDataServiceRights::MayOpenNewsItem(bool byKeyword) const {
    const int limit = byKeyword ? m_keywordItemLimit : m_symbolItemLimit;
    return limit < 0 || (byKeyword ? m_keywordItemsOpen : m_symbolItemsOpen) < limit;
}

void CDataServiceRights::NoteNewsItemOpened(bool byKeyword) {
    ++(byKeyword ? m_keywordItemsOpen : m_symbolItemsOpen);
}

void CDataServiceRights::NoteNewsItemReleased(bool byKeyword) {
    int& open = byKeyword ? m_keywordItemsOpen : m_symbolItemsOpen;
    if (open > 0) --open;
}
