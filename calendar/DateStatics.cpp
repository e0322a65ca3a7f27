#include "calendar/DateStatics.h"

#include <iostream>
#include <string>

#include <qvnrt/Date.h>
#include <qvnrt/host.h>

#include "calendar/DateLog.h"
#include "calendar/ZoneTable.h"
#include "config/Strings.h"
#include "platform/Directories.h"
#include "platform/IniFile.h"
#include "platform/LocalZone.h"
#include "platform/Registry.h"

namespace qvnrt::calendar {
namespace {

constexpr unsigned kErrorTextIds[] = {5237, 5238, 5239, 5240, 5241, 5242, 5243, 7330, 7331, 7332};
constexpr size_t kErrorCount = sizeof(kErrorTextIds) / sizeof(kErrorTextIds[0]);

// Function statics, so that a Date made during another file's static initialisation finds
// them constructed.
struct DateStatics {
    bool started = false;
    CString errorTexts[kErrorCount];
    CString lastError;
    CVString formatted;
    bool modeKnown = false;
    bool modern = false;
};

DateStatics& Statics() {
    static DateStatics statics;
    return statics;
}

void LoadErrorTexts(DateStatics& statics) {
    for (size_t i = 0; i < kErrorCount; ++i) statics.errorTexts[i] = LoadString(kErrorTextIds[i]);
}

}  // namespace

void raiseDateError(DateError error) {
    DateStatics& statics = Statics();
    statics.lastError = statics.errorTexts[static_cast<size_t>(error)];
}

CVString& formatResult() {
    return Statics().formatted;
}

void reloadCalendarMode() {
    DateStatics& statics = Statics();
    uint32_t value = 0;
    const auto key = platform::RegistryKey::Open("Software\\Quorvane\\RealTime");
    statics.modern = key && key->QueryDword("Modern Calendar", value) && value == 1;
    statics.modeKnown = true;
}

bool modernCalendar() {
    DateStatics& statics = Statics();
    if (!statics.modeKnown) reloadCalendarMode();
    return statics.modern;
}

void setModernCalendar(bool on) {
    DateStatics& statics = Statics();
    statics.modern = on;
    statics.modeKnown = true;
}

}  // namespace qvnrt::calendar

void Date::ensureDateStatics() {
    using namespace qvnrt;
    calendar::DateStatics& statics = calendar::Statics();
    if (statics.started) return;
    statics.started = true;
    const std::string ini = platform::JoinPath(platform::ConfigDirectory(), "QUORVANE.INI");
    // Any default does that does not start with 'T'.
    const std::string logging =
        platform::GetPrivateProfileString("INHOUSEDEVELOPMENT", "LOGDATECALLS", "F", 80, ini);
    if (!logging.empty() && (logging[0] == 'T' || logging[0] == 't')) {
        calendar::enableDateLog();
        calendar::writeDateLog("\r\nStarting a new session\r\n");
    }
    calendar::LoadErrorTexts(statics);
}

const CString& Date::lastError() {
    return qvnrt::calendar::Statics().lastError;
}

extern "C" void setTimeZoneChangeFromQvn(void) {
    qvnrt::calendar::clearLocalZone();
    qvnrt::platform::ReloadLocalZone();
    qvnrt::calendar::reloadCalendarMode();
    // Went to the debugger's output; the library's diagnostics go to clog.
    std::clog << "Clearing flag in QvnRT" << std::endl;
}

void qvnrt::SetModernCalendar(bool on) {
    calendar::setModernCalendar(on);
}
