#include "config/Strings.h"

#include <string>

#include <gtest/gtest.h>

#include "support/RecordingUiHost.h"

namespace qvnrt {
namespace {

TEST(Strings, TextsAreVerbatimAndUnknownIdsEmpty) {
    EXPECT_STREQ("Invaild Second", LoadString(7332));  // the misspelling stands
    EXPECT_STREQ("Home page unknown. Click \"Edit..\" to add.", LoadString(339));
    EXPECT_STREQ("<SYMBOL>", LoadString(337));
    EXPECT_STREQ("AM", LoadString(2152));
    EXPECT_STREQ("Date incomplete.", LoadString(5243));
    EXPECT_STREQ(
        "You must enter a symbol name and home page address before  a new item can be added.",
        LoadString(124));  // two blanks before "a"
    for (const unsigned id : {7338u, 7339u, 7348u}) EXPECT_STRNE("", LoadString(id)) << id;
    for (const unsigned id : {0u, 115u, 117u, 7333u, 99999u}) EXPECT_STREQ("", LoadString(id));
}

TEST(Strings, ShowMessageUsesTheIdAsHelpIdUnlessGiven) {
    test::RecordingUiHost host;
    ShowMessage(123, MB_ICONINFORMATION);
    ShowMessage(7348, MB_ICONINFORMATION, 0);
    ASSERT_EQ(2u, host.messages.size());
    EXPECT_EQ("Map file not found.", host.messages[0].text);
    EXPECT_EQ(MB_ICONINFORMATION, host.messages[0].style);
    EXPECT_EQ(123u, host.messages[0].helpId);
    EXPECT_EQ(LoadString(7348), host.messages[1].text);
    EXPECT_EQ(0u, host.messages[1].helpId);
}

}  // namespace
}  // namespace qvnrt
