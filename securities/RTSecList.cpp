// RTSecList: construction, the array it owns, and its sort.

#include <qvnrt/RTSecList.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include <qvnrt/RTSecurity.h>
#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/SecListRows.h"

namespace {

using LiveLists = qvnrt::platform::LiveObjects<RTSecList>;

constexpr int kSymbolRoom = 10;  // characters reserved a symbol for the list text

void CheckIndex(const RTSecList& list, int index) {
    if (index < 0 || index >= list.m_secArray.GetSize()) {
        throw std::out_of_range("invalid vector<T> subscript");
    }
}

}  // namespace

RTSecList::RTSecList()
    : m_request(0),
      m_stream(1),
      m_assetType(RTSECTYPE_NOT_KNOWN),
      m_limit(0),
      m_listFlags(0),
      m_index(0),
      m_sortKey(0) {
    LiveLists::Insert(this);
}

RTSecList::RTSecList(const RTSecList& other)
    : m_secArray(other.m_secArray),
      m_request(other.m_request),
      m_stream(other.m_stream),
      m_strFields(other.m_strFields),
      m_assetType(other.m_assetType),
      m_limit(other.m_limit),
      m_listFlags(other.m_listFlags),
      m_index(other.m_index),
      m_sortKey(other.m_sortKey) {
    LiveLists::Insert(this);
}

RTSecList::~RTSecList() {
    LiveLists::Erase(this);  // a late callback for this address now does nothing
    CloseEvent();
    Clear();
}

void RTSecList::OnSecListStart(int count) {
    m_secArray.Reserve(qvnrt::securities::ReservableRows(m_secArray.GetSize(), count));
}

void RTSecList::OnSecListStop(void*) {}

RTSec_Base* RTSecList::OnSecCreateNew() { return new RTSecurity; }

void RTSecList::OnSecChanged(int) {}

void RTSecList::OnSecClosed(int) {}

void RTSecList::SecSymbolList(const char* symbols) {
    Clear();
    SecRequest(symbols, RTSECTYPE_NOT_KNOWN, nullptr, 1);
}

CString RTSecList::SecSymbolList() {
    std::string text;
    text.reserve(static_cast<size_t>(m_secArray.GetSize()) * kSymbolRoom + 1);
    for (RTSec_Base* security : m_secArray) {
        if (security) text += security->m_strSymbol.str();
        text += '\0';
    }
    text += '\0';
    return CString(std::move(text));
}

void RTSecList::SetDefaultFields(CString fields) { m_strFields = fields; }

RTSec_Base* RTSecList::At(int index) {
    CheckIndex(*this, index);
    return m_secArray[index];
}

void RTSecList::RemoveAt(int index) {
    CheckIndex(*this, index);
    RTSec_Base* security = m_secArray[index];
    m_secArray.RemoveAt(index);
    delete security;
}

void RTSecList::Clear() {
    for (RTSec_Base* security : m_secArray) {
        if (!security) continue;
        if (m_stream == 0) security->m_request = 0;  // a one-shot answer has nothing to cancel
        delete security;
    }
    m_secArray.RemoveAll();
    m_index = 0;
}

void RTSecList::CloseEvent() {
    if (m_listFlags & qvnrt::securities::kRankedList) RTServer::CloseEvent(m_request);
    for (RTSec_Base* security : m_secArray) {
        if (!security) continue;
        if (m_stream == 0) {
            security->m_request = 0;
        } else {
            RTServer::CloseEvent(security->m_request);
        }
    }
}

void RTSecList::Sort(int key) {
    m_sortKey = key;
    if (m_secArray.IsEmpty()) return;
    std::stable_sort(m_secArray.begin(), m_secArray.end(),
                     [key](RTSec_Base* a, RTSec_Base* b) {
                         return a && b && a->compareTo(b, key) < 0;
                     });
}
