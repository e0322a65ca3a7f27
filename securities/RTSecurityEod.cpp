// RTSecurity's end-of-day history: the request, and the callback entry that repairs each
// batch and merges it into the security's pending entry. The cache timer delivers the
// entry once the security is ready for it.

#include <qvnrt/RTSecurity.h>

#include <algorithm>
#include <exception>

#include <qvnrt/RTServer.h>

#include "platform/LiveObjects.h"
#include "securities/PendingEod.h"
#include "securities/SecuritiesState.h"

namespace {

constexpr int kStreaming = 0x1;
constexpr int kUnmappedSymbol = 0x100000;  // send m_strSymbol as it stands
constexpr int kFinal = 0x1;                // bit 0 of a batch's flags: the data is final

// A batch is read from the driver's pointer by its count, so a count past any history is
// taken as a broken batch and dropped; so is a batch that would take one security's
// waiting records past what a slow owner could ever want. A century of days is 36,525.
constexpr int kMaxBatchRecords = 1 << 16;
constexpr size_t kMaxPendingRecords = size_t{1} << 20;

qvnrt::securities::PendingEodEntry& PendingEntryOf(RTSecurity* security) {
    return qvnrt::securities::State().pendingEod()[security];
}

// A record with only a closing price gets it as all four prices; a missing value is
// stored as QVN_MISSING_INT.
void Repair(RTPRICEREC& record) {
    if (record.first == 0.0f && record.second == 0.0f && record.third == 0.0f &&
        record.close != 0.0f) {
        record.first = record.second = record.third = record.close;
    }
    if (record.value == 0) record.value = QVN_MISSING_INT;
}

// Batches come newest first, so each goes in front of what the entry holds. A batch's
// last (oldest) record may be the day that the entry starts with: it takes that record's
// place, the later values winning.
void Merge(qvnrt::securities::PendingEodEntry& entry, const RTPRICEREC* records, int count) {
    int inserted = count;
    if (!entry.records.empty() && entry.records.front().date == records[count - 1].date) {
        entry.records.front() = records[count - 1];
        Repair(entry.records.front());
        --inserted;
    }
    entry.records.insert(entry.records.begin(), records, records + inserted);
    std::for_each(entry.records.begin(), entry.records.begin() + inserted, Repair);
}

}  // namespace

bool RTSecurity::RequestEOD(EODDATA* request, int flags, ServiceLimit limit) {
    CloseEOD();
    // Kept: offline, the owner hears of it at once, and the driver is asked all the same.
    if (!RTServer::IsConnected()) ReqEODCallback(m_eodRequest, 0, 1, nullptr);
    const CString symbol = (flags & kUnmappedSymbol) ? m_strSymbol : GetReqSymbol();
    if (RTServer::m_lpReqEOD) {  // null only while no driver is loaded
        m_eodRequest = RTServer::m_lpReqEOD(symbol, m_assetType, request, ReqEODCallbackHelper,
                                            reinterpret_cast<unsigned long>(this),
                                            flags & kStreaming, limit);
    }
    return m_eodRequest != 0;
}

void RTSecurity::CloseEOD() {
    qvnrt::securities::State().pendingEod().erase(this);  // undelivered records are dropped
    RTServer::CloseEvent(m_eodRequest);
}

// The request handle is not compared here, unlike the quote callback: a batch for an
// older request of a live security still lands in its entry.
int RTSecurity::ReqEODCallbackHelper(unsigned long, int count, int flags, RTPRICEREC* records,
                                     unsigned long user) {
    try {
        if (!user) return 0;
        RTSecurity* security = qvnrt::platform::LiveObjects<RTSec_Base>::Cast<RTSecurity>(user);
        if (!security) return 0;
        if (count > 0 && (!records || count > kMaxBatchRecords)) return 0;
        qvnrt::securities::PendingEodEntry& entry = PendingEntryOf(security);
        if (count > 0) {
            if (entry.records.size() + static_cast<size_t>(count) > kMaxPendingRecords) return 0;
            entry.complete = (flags & kFinal) != 0;
            Merge(entry, records, count);
        } else {
            entry.complete = true;  // the end mark
            entry.ended = true;
        }
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}
