#include "SimConfig.h"

#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "CivilDate.h"
#include "Universe.h"

namespace qvnsim {

namespace {

const char* const kKeys[] = {"seed",        "speed_ms", "step_seconds", "start",
                             "universe",    "connect",  "live_minutes", "server_limit",
                             "time_events", "changes",  "events",       "calendar"};

std::string Trim(const std::string& text) {
    size_t first = 0;
    size_t last = text.size();
    while (first < last && std::isspace(static_cast<unsigned char>(text[first]))) ++first;
    while (last > first && std::isspace(static_cast<unsigned char>(text[last - 1]))) --last;
    return text.substr(first, last - first);
}

std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

bool ParseInteger(const std::string& text, long long minimum, long long maximum, long long& out) {
    if (text.empty()) return false;
    errno = 0;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || value < minimum || value > maximum) return false;
    out = value;
    return true;
}

bool ParseFlag(const std::string& text, bool& out) {
    const std::string v = Lower(text);
    const bool yes = v == "1" || v == "yes" || v == "on" || v == "true";
    const bool no = v == "0" || v == "no" || v == "off" || v == "false";
    if (yes || no) out = yes;
    return yes || no;
}

// "2024-06-11", "2024-06-11T14:00", "2024-06-11T14:00:00Z" (always UTC), or seconds
// since 1970.
bool ParseStart(const std::string& text, int64_t& out) {
    long long seconds = 0;
    if (ParseInteger(text, 86400, 2000000000, seconds)) {
        out = seconds;
        return true;
    }
    static const std::regex kFormat(
        R"(^(\d{4})-(\d{2})-(\d{2})(?:[T ](\d{2}):(\d{2})(?::(\d{2}))?Z?)?$)");
    std::smatch m;
    if (!std::regex_match(text, m, kFormat)) return false;
    auto part = [&m](int i) { return m[i].matched ? std::stoi(m[i].str()) : 0; };
    const int year = part(1), month = part(2), day = part(3);
    const int hour = part(4), minute = part(5), second = part(6);
    if (year < 1971 || year > 2035 || month < 1 || month > 12 || day < 1 ||
        day > DaysInMonth(year, month) || hour > 23 || minute > 59 || second > 59) {
        return false;
    }
    out = DaysFromCivil(year, month, day) * kSecondsPerDay + hour * 3600 + minute * 60 + second;
    return true;
}

bool ParseUniverse(const std::string& text, unsigned& out) {
    unsigned bits = 0;
    std::stringstream items(Lower(text));
    std::string item;
    while (std::getline(items, item, ',')) {
        item = Trim(item);
        if (item == "all")
            bits |= kAllClasses;
        else if (item == "stocks")
            bits |= kStocksBit;
        else if (item == "indices")
            bits |= kIndicesBit;
        else if (item == "bonds")
            bits |= kBondsBit;
        else if (item == "futures")
            bits |= kFuturesBit;
        else if (item == "currencies")
            bits |= kCurrenciesBit;
        else if (item == "options")
            bits |= kOptionsBit;
        else
            return false;
    }
    if (bits == 0) return false;
    out = bits;
    return true;
}

// "EVENT@STEP[:ARGUMENT]", separated by commas or blanks: "5@10:1, 5@20:0, 1@40:2".
bool ParseEvents(const std::string& text, std::vector<ScheduledEvent>& out) {
    std::vector<ScheduledEvent> events;
    std::string spaced = text;
    for (char& c : spaced) {
        if (c == ',') c = ' ';
    }
    std::stringstream items(spaced);
    std::string item;
    while (items >> item) {
        const size_t at = item.find('@');
        if (at == std::string::npos) return false;
        const size_t colon = item.find(':', at);
        long long event = 0, step = 0, argument = 0;
        if (!ParseInteger(item.substr(0, at), 1, 8, event)) return false;
        if (!ParseInteger(item.substr(at + 1, colon == std::string::npos ? std::string::npos
                                                                         : colon - at - 1),
                          1, 1LL << 40, step)) {
            return false;
        }
        if (colon != std::string::npos &&
            !ParseInteger(item.substr(colon + 1), -(1LL << 40), 1LL << 40, argument)) {
            return false;
        }
        events.push_back(
            {static_cast<long>(step), static_cast<int>(event), static_cast<long>(argument)});
    }
    out = std::move(events);
    return true;
}

}  // namespace

bool SimConfig::Set(const std::string& rawKey, const std::string& rawValue, std::string& error) {
    const std::string key = Lower(Trim(rawKey));
    const std::string value = Trim(rawValue);
    long long number = 0;
    bool ok = true;
    if (key == "seed") {
        errno = 0;
        char* end = nullptr;
        const unsigned long long parsed = std::strtoull(value.c_str(), &end, 0);
        ok = !value.empty() && value[0] != '-' && errno == 0 && *end == '\0';
        if (ok) seed = parsed;
    } else if (key == "speed_ms") {
        ok = ParseInteger(value, 0, 3600000, number);
        if (ok) speedMs = static_cast<int>(number);
    } else if (key == "step_seconds") {
        ok = ParseInteger(value, 1, 86400, number);
        if (ok) stepSeconds = static_cast<int>(number);
    } else if (key == "start") {
        ok = ParseStart(value, start);
    } else if (key == "universe") {
        ok = ParseUniverse(value, universe);
    } else if (key == "connect") {
        const std::string v = Lower(value);
        if (v == "auto")
            connect = ConnectAnswer::kAuto;
        else if (v == "remote")
            connect = ConnectAnswer::kRemote;
        else if (v == "local")
            connect = ConnectAnswer::kLocal;
        else if (v == "pending")
            connect = ConnectAnswer::kPending;
        else if (v == "refuse")
            connect = ConnectAnswer::kRefuse;
        else
            ok = false;
    } else if (key == "live_minutes") {
        const std::string v = Lower(value);
        if (v == "bars")
            liveMinutes = LiveMinutes::kBars;
        else if (v == "ticks")
            liveMinutes = LiveMinutes::kTicks;
        else
            ok = false;
    } else if (key == "server_limit") {
        ok = ParseInteger(value, 0, 0x7fffffff, number);
        if (ok) serverLimit = static_cast<long>(number);
    } else if (key == "time_events") {
        ok = ParseFlag(value, timeEvents);
    } else if (key == "changes") {
        ok = ParseFlag(value, changes);
    } else if (key == "events") {
        ok = ParseEvents(value, events);
    } else if (key == "calendar") {
        const std::string v = Lower(value);
        if (v == "registry")
            calendar = CalendarChoice::kRegistry;
        else if (v == "modern")
            calendar = CalendarChoice::kModern;
        else if (v == "faithful")
            calendar = CalendarChoice::kFaithful;
        else
            ok = false;
    } else {
        error = "unknown setting '" + key + "'";
        return false;
    }
    if (!ok) error = "bad value '" + value + "' for " + key;
    return ok;
}

bool SimConfig::Apply(const std::string& text, std::string& error) {
    std::string lines = text;
    for (char& c : lines) {
        if (c == ';') c = '\n';
    }
    std::stringstream stream(lines);
    std::string line;
    while (std::getline(stream, line)) {
        const size_t hash = line.find('#');
        if (hash != std::string::npos) line.erase(hash);
        if (Trim(line).empty()) continue;
        const size_t equals = line.find('=');
        if (equals == std::string::npos) {
            error = "expected key = value in '" + Trim(line) + "'";
            return false;
        }
        if (!Set(line.substr(0, equals), line.substr(equals + 1), error)) return false;
    }
    return true;
}

SimConfig SimConfig::FromEnvironment() {
    SimConfig config;
    std::string error;
    if (const char* path = std::getenv("QVNSIM_CONFIG"); path != nullptr && *path != '\0') {
        std::ifstream file(path);
        if (!file) {
            std::fprintf(stderr, "qvnsim: cannot read the settings file %s\n", path);
        } else {
            std::stringstream stream;
            stream << file.rdbuf();
            // Line by line, so that one bad line does not hide the rest.
            std::string line;
            while (std::getline(stream, line)) {
                if (!config.Apply(line, error)) {
                    std::fprintf(stderr, "qvnsim: %s: %s (ignored)\n", path, error.c_str());
                }
            }
        }
    }
    for (const char* key : kKeys) {
        std::string name = "QVNSIM_";
        for (const char* c = key; *c; ++c) {
            name.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(*c))));
        }
        const char* value = std::getenv(name.c_str());
        if (value == nullptr) continue;
        if (!config.Set(key, value, error)) {
            std::fprintf(stderr, "qvnsim: %s: %s (ignored)\n", name.c_str(), error.c_str());
        }
    }
    return config;
}

}  // namespace qvnsim
