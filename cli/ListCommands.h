// The commands that show lists and history:
//
//   list NAME                  a service list (STOCKS, an exchange, an index's members), live
//   chain SYMBOL               an option chain, live
//   ranked KIND                gainers, losers, active or trades; reorders itself each round
//   history SYMBOL             daily records as a table; --chart adds candlesticks
#pragma once

#include <string>
#include <vector>

namespace qvnrt::cli {

struct ListOptions {
    std::string driver;
    std::vector<std::string> arguments;
    double seconds = 0;  // how long a live board runs; 0: until Ctrl-C on a terminal
    int type = -1;       // asset type; -1: any
    int rows = 0;        // rows of a ranked list; 0: the service's default
    std::string sort;    // "last", "change", "volume" or empty
    int days = 0;        // days of history; 0: the service's default
    bool chart = false;
};

// Each returns the program's exit status: 0 all shown, 1 nothing to show (a reason is
// given on standard error), 2 a wrong command line.
int RunList(const ListOptions& options);
int RunChain(const ListOptions& options);
int RunRanked(const ListOptions& options);
int RunHistory(const ListOptions& options);

}  // namespace qvnrt::cli
