// News: a headline search, whose history goes as one batch (the count says how many
// headlines are still to come, 1 the last; a search that finds nothing gets one call with
// count 0 and no headline), then, when live, one batch a step for new headlines; and the
// body of one article.
#pragma once

#include "NewsWire.h"
#include "Request.h"

namespace qvnsim {

class HeadlineRequest : public Request {
public:
    HeadlineRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                    HeadlineCallback callback, NewsQuery query, bool live);

    bool Continues() const override { return m_live; }
    void Step(Simulation& sim, int64_t from, int64_t to) override;

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    void SendBatch(Simulation& sim, const std::vector<Headline>& headlines, int history);

    HeadlineCallback m_callback;
    NewsQuery m_query;
    bool m_live;
};

class StoryRequest : public Request {
public:
    StoryRequest(const Simulation& sim, uint32_t handle, unsigned long user, StoryCallback callback,
                 unsigned long articleId);

protected:
    void MakeAnswer(Simulation& sim) override;

private:
    StoryCallback m_callback;
    unsigned long m_articleId;
};

}  // namespace qvnsim
