#include "NewsRequests.h"

#include <string>

#include "Simulation.h"

namespace qvnsim {

HeadlineRequest::HeadlineRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                                 HeadlineCallback callback, NewsQuery query, bool live)
    : Request(sim, handle, user), m_callback(callback), m_query(std::move(query)), m_live(live) {}

void HeadlineRequest::SendBatch(Simulation& sim, const std::vector<Headline>& headlines,
                                int history) {
    const int count = static_cast<int>(headlines.size());
    for (int i = 0; i < count; ++i) {
        const Headline& headline = headlines[static_cast<size_t>(i)];
        std::string text = headline.text;
        std::string source = NewsWire::SourceName(headline.source);
        m_callback(Handle(), count - i, headline.articleId, text.data(), headline.source,
                   source.data(), static_cast<long>(headline.time), history, m_user);
        if (!Alive(sim)) return;
    }
}

void HeadlineRequest::MakeAnswer(Simulation& sim) {
    const std::vector<Headline> history = sim.news().History(m_query, sim.Now());
    if (history.empty()) {
        m_callback(Handle(), 0, 0, nullptr, 0, nullptr, 0, 1, m_user);
        return;
    }
    SendBatch(sim, history, 1);
}

void HeadlineRequest::Step(Simulation& sim, int64_t from, int64_t to) {
    if (m_query.end != 0 && from >= m_query.end) return;
    const std::vector<Headline> fresh = sim.news().Between(m_query, from, to);
    if (!fresh.empty()) SendBatch(sim, fresh, 0);
}

StoryRequest::StoryRequest(const Simulation& sim, uint32_t handle, unsigned long user,
                           StoryCallback callback, unsigned long articleId)
    : Request(sim, handle, user), m_callback(callback), m_articleId(articleId) {}

void StoryRequest::MakeAnswer(Simulation& sim) {
    const std::optional<Headline> headline =
        m_articleId <= 0xFFFFFFFFul ? sim.news().Article(static_cast<uint32_t>(m_articleId))
                                    : std::nullopt;
    // An article from the future is not known yet.
    if (!headline || headline->time > sim.Now()) {
        m_callback(Handle(), -1, m_articleId, nullptr, m_user);
        return;
    }
    std::string story = sim.news().Story(*headline, sim.market());
    m_callback(Handle(), 0, m_articleId, story.data(), m_user);
}

}  // namespace qvnsim
