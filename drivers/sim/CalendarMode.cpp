#include "CalendarMode.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <string>

namespace qvnsim {
namespace {

std::string ConfigDirectory() {
    if (const char* home = std::getenv("QVNRT_HOME"); home && *home) return home;
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) {
        return std::string(xdg) + "/quorvane";
    }
    if (const char* home = std::getenv("HOME"); home && *home) {
        return std::string(home) + "/.config/quorvane";
    }
    return {};
}

// Key and value names compare without regard to case, as the registry's do.
std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

CalendarChoice g_choice = CalendarChoice::kRegistry;

bool ReadSetting() {
    const std::string directory = ConfigDirectory();
    if (directory.empty()) return false;
    std::ifstream store(directory + "/user.reg");
    const std::string section = "[hkey_current_user\\software\\quorvane\\realtime]";
    const std::string value = "\"modern calendar\"=dword:";
    bool inSection = false;
    for (std::string line; std::getline(store, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        const std::string lower = Lower(line);
        if (!lower.empty() && lower.front() == '[') {
            inSection = lower == section;
        } else if (inSection && lower.rfind(value, 0) == 0) {
            return std::strtoul(lower.c_str() + value.size(), nullptr, 16) == 1;
        }
    }
    return false;
}

}  // namespace

void ChooseCalendar(CalendarChoice choice) {
    g_choice = choice;
}

bool ModernCalendarOn() {
    switch (g_choice) {
    case CalendarChoice::kModern:
        return true;
    case CalendarChoice::kFaithful:
        return false;
    case CalendarChoice::kRegistry:
        break;
    }
    static const bool registryOn = ReadSetting();
    return registryOn;
}

}  // namespace qvnsim
