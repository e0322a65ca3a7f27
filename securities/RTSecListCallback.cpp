// RTSecList's one driver callback: every update of every kind of list comes through here
// and is matched to the object it belongs to.

#include <qvnrt/RTSecList.h>

#include <exception>

#include "platform/LiveObjects.h"
#include "securities/CacheBinding.h"
#include "securities/SecListRows.h"
#include "store/SecCacheEntry.h"

namespace {

using namespace qvnrt::securities;

constexpr int kNoIndex = -1;

// The object with handle `request`, looking from m_index round the array once; m_index is
// left on it, so updates arriving in list order cost one step each. kNoIndex when none
// has it. Handle 0 is no request, and matches no object.
int FindByHandle(RTSecList& list, unsigned long request) {
    const int size = list.m_secArray.GetSize();
    if (request == 0 || size == 0) return kNoIndex;
    if (list.m_index < 0 || list.m_index >= size) list.m_index = 0;
    for (int step = 0; step < size; ++step) {
        const RTSec_Base* security = list.m_secArray[list.m_index];
        if (security && security->m_request == request) return list.m_index;
        if (++list.m_index >= size) list.m_index = 0;
    }
    return kNoIndex;
}

// The row of a service-built list that this update fills, made if new; kNoIndex when the
// row cannot be held or made.
int ServiceRow(RTSecList& list, int status) {
    if (list.m_listFlags & kAwaitingStart) {
        list.OnSecListStart(status);
        // Read after the announcement: the application may have cleared the array in it.
        list.m_index = SaturatedSum(status, list.m_secArray.GetSize());
        list.m_listFlags &= ~kAwaitingStart;
    }
    const int row = RowOf(list.m_index, status);
    if (row == kNoIndex) return kNoIndex;  // a count past what the list may hold
    while (row >= list.m_secArray.GetSize()) {
        RTSec_Base* security = list.OnSecCreateNew();
        if (!security) return kNoIndex;
        list.m_secArray.Add(security);
    }
    return row;
}

// A row now shows `symbol`: bind the object to that symbol's cache record, leaving the
// record of the symbol that the row showed before.
void OpenRow(RTSec_Base& security, const char* symbol) {
    if (security.m_pCacheEntry && security.m_strSymbol != symbol) {
        qvnrt::securities::closeEntry(&security);
    }
    qvnrt::securities::openEntry(symbol, &security, "");
}

}  // namespace

int RTSecList::ReqSecCallbackHelper(unsigned long request, int status, int field, int dataType,
                                    void* data, unsigned long user) {
    try {
        RTSecList* list = qvnrt::platform::LiveObjects<RTSecList>::Cast<RTSecList>(user);
        if (!list) return 0;
        list->ReqSecCallback(request, status, field, dataType, data);
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

int RTSecList::ReqSecCallback(unsigned long request, int status, int field, int dataType,
                              void* data) {
    int index = kNoIndex;
    if ((m_listFlags & kListUnderWay) && request == m_request) {
        // A service-built list: the status counts the rows down.
        index = ServiceRow(*this, status);
        if (index != kNoIndex && field == 1 && data) {
            OpenRow(*m_secArray[index], static_cast<const char*>(data));
        }
    } else {
        index = FindByHandle(*this, request);
        if (index != kNoIndex) {
            RTSec_Base& security = *m_secArray[index];
            if (security.m_pCacheEntry) {
                security.m_pCacheEntry->storeSecField(request, status, field, dataType, data);
            }
            if (field == 0 && m_stream == 0) security.m_request = 0;  // one-shot: complete
            security.m_delivered = 1;
            if (status < 0) {
                if (status == -2) security.m_delivered = 0;
                OnSecClosed(index);
                // The application may have removed the object in its handler.
                if (index < m_secArray.GetSize() && m_secArray[index] == &security) {
                    security.m_request = 0;
                }
                return 0;
            }
        }
    }

    if (index != kNoIndex) {
        if (field == 0) {
            OnSecChanged(index);
        } else {
            m_secArray[index]->ReqSecCallback(request, status, field, dataType, data);
        }
    }
    if (field == 0 && status == 1 && (m_listFlags & kListUnderWay)) {
        OnSecListStop(data);
        if (m_listFlags & kRankedList) {
            m_listFlags |= kListUnderWay | kAwaitingStart;  // the next round starts over
        } else {
            m_listFlags &= ~kListUnderWay;
            m_request = 0;
        }
    }
    return 1;
}
