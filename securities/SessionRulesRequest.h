// Session-rule requests: the rules kept with a symbol's cache record, the securities that
// want to hear of changes, and the driver's answers.
#pragma once

#include <qvnrt/driver.h>

class RTSessSecurity;

namespace qvnrt::securities {

// Asks for the security's rules (the security must have a cache record): while connected it
// joins the entry's listeners and the driver is asked; rules kept in the record are
// delivered at once. Sets the security's last error; true when it is 0.
bool RequestSessionRules(RTSessSecurity& security);

// The driver's SessionCallback for these requests.
int SessionRulesCallback(unsigned long handle, int status, SESSION_INFO* rules, void* holidays,
                         unsigned long user);

}  // namespace qvnrt::securities
