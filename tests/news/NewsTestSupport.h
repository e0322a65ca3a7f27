// Shared by the news tests: an article callback that records what it hears, and the date
// order of an item as identifiers.
#pragma once

#include <qvnrt/RTNewsItem.h>

#include <vector>

namespace qvnrt::test {

// One call of the article callback; `id` is 0 for a null headline.
struct ArticleCall {
    unsigned long id;
    AddRemoveArticle what;
    int count;
    bool operator==(const ArticleCall&) const = default;
};

class ArticleLog {
public:
    static int Record(RTNewsHeadline* headline, AddRemoveArticle what, RTNewsItem*, int count,
                      unsigned long user) {
        auto* log = reinterpret_cast<ArticleLog*>(user);
        log->calls.push_back({headline ? headline->GetArticleID() : 0, what, count});
        return log->answer;
    }
    unsigned long user() { return reinterpret_cast<unsigned long>(this); }

    std::vector<ArticleCall> calls;
    int answer = 7;  // what the callback returns, so that results can be traced to it
};

// The identifiers in the item's date order.
inline std::vector<unsigned long> DateOrder(RTNewsItem& item) {
    std::vector<unsigned long> ids;
    for (RTNewsHeadline* headline : item.m_dateSort) ids.push_back(headline->GetArticleID());
    return ids;
}

}  // namespace qvnrt::test
