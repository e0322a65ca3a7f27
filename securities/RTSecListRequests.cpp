// RTSecList's requests: the application's own symbols in one combined request, a symbol
// list on the service, an option chain and a ranked list.

#include <qvnrt/RTSecList.h>

#include <cstring>
#include <string>

#include <qvnrt/RTServer.h>

#include "securities/CacheBinding.h"
#include "securities/SecListRows.h"

namespace {

using namespace qvnrt::securities;

constexpr unsigned kSkippedByList = 0x2;  // bit 1 of RTSec_Base::m_flags

bool TakenByRequest(const RTSec_Base* security) {
    return security && !security->m_strSymbol.IsEmpty() && !(security->m_flags & kSkippedByList);
}

unsigned long UserOf(RTSecList* list) { return reinterpret_cast<unsigned long>(list); }

}  // namespace

int RTSecList::SecRequest(const char* symbols, RTSecurityType type, unsigned char* fields,
                          int stream) {
    if (fields) m_strFields = reinterpret_cast<const char*>(fields);
    m_stream = stream;
    m_assetType = type;
    const int oldSize = m_secArray.GetSize();
    m_index = oldSize;
    for (const char* symbol = symbols ? symbols : ""; *symbol; symbol += std::strlen(symbol) + 1) {
        RTSec_Base* security = OnSecCreateNew();
        if (!security) continue;
        security->m_strSymbol = symbol;
        m_secArray.Add(security);
    }
    // Kept: with nothing added this asks for the last object again, as applications have
    // always seen.
    return SecRequest(oldSize, m_secArray.GetSize() - 1);
}

int RTSecList::SecRequest(int first, int last) {
    const int size = m_secArray.GetSize();
    if (size == 0) return 0;
    if (first < 0) first = 0;
    if (last < 0 || last >= size) last = size - 1;
    if (first > last) first = last;
    m_listFlags &= ~kListUnderWay;
    m_index = first;

    std::string symbols;
    int count = 0;
    for (int i = first; i <= last; ++i) {
        RTSec_Base* security = m_secArray[i];
        if (!TakenByRequest(security)) continue;
        symbols += security->GetReqSymbol().str();
        symbols += '\0';
        ++count;
        // Offline this replays the cached fields into the object at once.
        qvnrt::securities::openEntry(security->m_strSymbol, security, m_strFields);
    }

    m_request = 0;
    if (RTServer::IsConnected() && count > 0) {
        m_request = RTServer::m_lpReqSecurity(symbols.c_str(), m_assetType, m_strFields,
                                              ReqSecCallbackHelper, UserOf(this), m_stream,
                                              count, m_limit);
    }
    // The driver answers the k-th symbol under m_request + k. A refused request (0) gives
    // no handles at all: handles counted up from 0 would belong to other requests.
    unsigned long next = m_request;
    for (int i = first; i <= last; ++i) {
        RTSec_Base* security = m_secArray[i];
        if (!TakenByRequest(security)) continue;
        security->m_request = m_request ? next++ : 0;
    }
    return 1;
}

unsigned long RTSecList::SecList(const char* symbol, RTSecurityType type, ServiceLimit limit) {
    RTServer::CloseEvent(m_request);
    m_listFlags = (m_listFlags | kListUnderWay | kAwaitingStart) & ~kRankedList;
    m_assetType = type;
    m_index = m_secArray.GetSize();
    // Kept: no check of the connection here, unlike the chain and the ranked list; the
    // driver decides. Only a driver that is not loaded at all cannot be asked.
    std::string name = symbol ? symbol : "";
    m_request = RTServer::m_lpReqSecList
                    ? RTServer::m_lpReqSecList(
                          name.data(), type,
                          reinterpret_cast<unsigned char*>(const_cast<char*>(m_strFields.GetString())),
                          nullptr, ReqSecCallbackHelper, UserOf(this), 1, limit)
                    : 0;
    return m_request;
}

unsigned long RTSecList::SecOptionChain(const char* symbol, RTSecurityType type,
                                        RTSec_OptionFilter& filter, ServiceLimit limit) {
    // Kept: the former request is not cancelled here, unlike SecList.
    m_listFlags = (m_listFlags | kListUnderWay | kAwaitingStart) & ~kRankedList;
    m_assetType = type;
    m_index = m_secArray.GetSize();
    CString name(symbol);
    name.MakeUpper();
    std::string text = name.str();
    m_request = 0;
    if (RTServer::IsConnected()) {
        m_request = RTServer::m_lpReqSecList(
            text.data(), type,
            reinterpret_cast<unsigned char*>(const_cast<char*>(m_strFields.GetString())),
            &filter, ReqSecCallbackHelper, UserOf(this), 1, limit);
    }
    return m_request;
}

unsigned long RTSecList::SecRankedList(int list, int selector1, int selector2,
                                       ServiceLimit limit) {
    RTServer::CloseEvent(m_request);
    m_listFlags = kListUnderWay | kAwaitingStart | kRankedList;
    m_stream = 0;
    m_index = m_secArray.GetSize();
    if (RTServer::IsConnected()) {
        m_request = RTServer::m_lpReqRankedList(list, selector1, selector2, ReqSecCallbackHelper,
                                                UserOf(this), limit);
    }
    return m_request;
}
