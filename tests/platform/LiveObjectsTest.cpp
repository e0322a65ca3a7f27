#include "platform/LiveObjects.h"

#include <gtest/gtest.h>

namespace qvnrt::platform {
namespace {

struct Base {
    Base() { LiveObjects<Base>::Insert(this); }
    virtual ~Base() { LiveObjects<Base>::Erase(this); }
};
struct Quote : Base {};
struct List : Base {};

unsigned long UserOf(const void* object) { return reinterpret_cast<unsigned long>(object); }

TEST(LiveObjects, CastsOnlyLiveObjectsOfTheAskedClass) {
    Quote quote;
    List list;
    EXPECT_EQ(&quote, LiveObjects<Base>::Cast<Quote>(UserOf(&quote)));
    EXPECT_EQ(&quote, LiveObjects<Base>::Cast<Base>(UserOf(&quote)));
    EXPECT_EQ(nullptr, LiveObjects<Base>::Cast<Quote>(UserOf(&list)));  // wrong class
    EXPECT_EQ(nullptr, LiveObjects<Base>::Cast<Quote>(0));
    int unrelated = 0;
    EXPECT_EQ(nullptr, LiveObjects<Base>::Cast<Quote>(UserOf(&unrelated)));  // never registered
}

TEST(LiveObjects, ErasedObjectIsNoLongerFound) {
    alignas(Quote) unsigned char storage[sizeof(Quote)];
    Quote* quote = new (storage) Quote;
    const unsigned long user = UserOf(quote);
    EXPECT_TRUE(LiveObjects<Base>::Contains(quote));
    quote->~Quote();
    EXPECT_EQ(nullptr, LiveObjects<Base>::Cast<Quote>(user));
    // A new object at the same address is a new, live object.
    Quote* again = new (storage) Quote;
    EXPECT_EQ(again, LiveObjects<Base>::Cast<Quote>(user));
    again->~Quote();
}

}  // namespace
}  // namespace qvnrt::platform
