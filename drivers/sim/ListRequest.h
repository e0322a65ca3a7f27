// Service-built lists: a symbol list or an option chain, sent once, and a ranked list,
// sent again at every simulated minute until it is closed.
//
// The status of each row counts the rows down: the first row of N carries N, the last 1.
// Every row is a batch that begins with field 1 and ends with field 0, so the list ends
// with status 1 and field 0.
#pragma once

#include <string>
#include <vector>

#include "Request.h"

namespace qvnsim {

class ListRequest : public Request {
public:
    ListRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                SecurityCallback callback, std::vector<int> rows, std::string fields);

protected:
    void MakeAnswer(Simulation& sim) override;
    void SendRows(Simulation& sim, const std::vector<int>& rows);

    SecurityCallback m_callback;
    std::vector<int> m_rows;
    std::string m_fields;  // field 1 leads every row whether asked for or not
};

class RankedListRequest : public ListRequest {
public:
    RankedListRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                      SecurityCallback callback, int list, int assetType, int rows);

    bool Continues() const override { return true; }
    void Step(Simulation& sim, int64_t from, int64_t to) override;

    // The ranking, or nothing for a list number the simulation does not have: 1 gainers,
    // 2 losers (by percent change), 3 most active by volume, 4 by number of trades.
    static std::vector<int> Rank(Simulation& sim, int list, int assetType, int rows);

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    int m_list;
    int m_assetType;
    int m_rowCount;
};

}  // namespace qvnsim
