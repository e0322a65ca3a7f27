// Whether the simulated exchanges keep today's clocks: the same switch as the library's
// modern calendar, the value "Modern Calendar" (dword, 1 for on) of
// [HKEY_CURRENT_USER\Software\Quorvane\RealTime] in the registry store user.reg of the config
// directory ($QVNRT_HOME, else $XDG_CONFIG_HOME/quorvane, else ~/.config/quorvane). Read once,
// when the first zone clock is made; off when the store or the value is missing.
#pragma once

namespace qvnsim {

bool ModernCalendarOn();

}  // namespace qvnsim
