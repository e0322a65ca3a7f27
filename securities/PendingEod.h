// End-of-day records buffered per security until the cache timer delivers them.
#pragma once

#include <map>
#include <vector>

#include <qvnrt/driver.h>

class RTSecurity;

namespace qvnrt::securities {

struct PendingEodEntry {
    bool complete = false;  // the data is final
    bool ended = false;     // the end mark has come
    std::vector<RTPRICEREC> records;  // in ascending order of date
};

// Ordered by the security's address, the order of delivery. Found by any RTSec_Base address
// too, which is how a closing security finds its entry.
using PendingEodMap = std::map<RTSecurity*, PendingEodEntry, std::less<>>;

// The cache timer's step: hands every entry whose security is ready to it, and erases it.
void DeliverPendingEod();

}  // namespace qvnrt::securities
