// Whether the simulated exchanges keep today's clocks. The setting `calendar` of the
// simulation chooses: `modern` or `faithful` outright, or `registry` (the default) to follow
// the library's own switch, the value "Modern Calendar" (dword, 1 for on) of
// [HKEY_CURRENT_USER\Software\Quorvane\RealTime] in the registry store user.reg of the config
// directory ($QVNRT_HOME, else $XDG_CONFIG_HOME/quorvane, else ~/.config/quorvane). The store
// is read once, when first needed; off when the store or the value is missing.
#pragma once

namespace qvnsim {

enum class CalendarChoice { kRegistry, kModern, kFaithful };

// Called by the simulation whenever it rebuilds its world, before any zone clock is made.
void ChooseCalendar(CalendarChoice choice);

bool ModernCalendarOn();

}  // namespace qvnsim
