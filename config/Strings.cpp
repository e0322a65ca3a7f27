#include "config/Strings.h"

#include <algorithm>
#include <iterator>

#include "platform/UiHost.h"

namespace qvnrt {
namespace {

struct Entry {
    unsigned id;
    const char* text;
};

// Sorted by id. 7338, 7339 and 7348 belong to the application; the library shows them when
// it cannot load a driver, so it carries wording of its own for them.
constexpr Entry kStrings[] = {
    {116, "News was not available from the server on %d out of the %d symbols you listed."},
    {118,
     "Sorry, some of the symbols in this search will not be used for news collection. You "
     "have reached your limit for concurrently displayed symbol news items. You must either "
     "close one of your existing news items or upgrade your news service plan. Please "
     "contact your market data provider to review your service plan."},
    {121, "Incompatible map file version"},
    {122, "Unknown provider in symbol mapper."},
    {123, "Map file not found."},
    {124,
     "You must enter a symbol name and home page address before  a new item can be added."},
    {125, "Nothing was selected in the list"},
    {126,
     "There is no home page specified for this symbol. Would you like to enter one now?"},
    {337, "<SYMBOL>"},
    {338,
     "A valid Internet background URL must contain %s so that the service is able to give "
     "information on a specific stock symbol. See help for more details."},
    {339, "Home page unknown. Click \"Edit..\" to add."},
    {649, "<EXTRA>"},
    {2151, "PM"},
    {2152, "AM"},
    {5237, "Invalid Month/Day"},
    {5238, "Invalid Day Name"},
    {5239, "Invalid Month Name"},
    {5240, "Invalid Month"},
    {5241, "Invalid Day"},
    {5242, "Invalid Year"},
    {5243, "Date incomplete."},
    {7330, "Invalid Hour"},
    {7331, "Invalid Minute"},
    {7332, "Invaild Second"},  // kept: the misspelling is the text applications know
    {7338,
     "No market data driver is configured. Set the value \"RealTime DLL\" of key "
     "Software\\Quorvane\\RealTime in the registry store, or name the driver before loading "
     "it."},
    {7339,
     "The market data driver is incomplete: it does not provide every entry point that "
     "this library needs. Install a driver that matches this version."},
    {7348,
     "The market data driver could not be loaded. Check that the driver is installed and "
     "that its name is set correctly."},
};

static_assert(std::is_sorted(std::begin(kStrings), std::end(kStrings),
                             [](const Entry& a, const Entry& b) { return a.id < b.id; }));

}  // namespace

const char* LoadString(unsigned id) {
    const auto found = std::lower_bound(std::begin(kStrings), std::end(kStrings), id,
                                        [](const Entry& e, unsigned key) { return e.id < key; });
    return (found != std::end(kStrings) && found->id == id) ? found->text : "";
}

int ShowMessage(unsigned id, unsigned style, int helpId) {
    return platform::ShowMessageBox(LoadString(id), style,
                                    helpId == -1 ? id : static_cast<unsigned>(helpId));
}

}  // namespace qvnrt
