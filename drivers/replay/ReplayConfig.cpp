#include "ReplayConfig.h"

#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "CsvText.h"

namespace qvnreplay {

namespace {

const char* const kKeys[] = {"data_dir", "start", "speed", "fast_step_seconds", "packet_records"};

constexpr int kMostPacketRecords = 100000;

std::string Trimmed(const std::string& text) {
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

}  // namespace

bool ReplayConfig::Set(const std::string& rawKey, const std::string& rawValue,
                       std::string& error) {
    const std::string key = Lower(Trimmed(rawKey));
    const std::string value = Trimmed(rawValue);
    bool ok = true;
    if (key == "data_dir") {
        ok = !value.empty();
        if (ok) dataDir = value;
    } else if (key == "start") {
        const std::optional<int64_t> time = ParseTime(value);
        ok = time.has_value() && *time > 0;
        if (ok) start = *time;
    } else if (key == "speed") {
        // "10", "10x", or "max".
        std::string number = Lower(value);
        if (number != "max" && !number.empty() && number.back() == 'x') number.pop_back();
        const std::optional<double> parsed =
            number == "max" ? std::optional<double>(0.0) : ParseNumber(number);
        ok = parsed.has_value() && *parsed >= 0 && *parsed <= 1e6;
        if (ok) speed = *parsed;
    } else if (key == "fast_step_seconds") {
        const std::optional<int64_t> parsed = ParseWhole(value);
        ok = parsed.has_value() && *parsed >= 1 && *parsed <= 86400;
        if (ok) fastStepSeconds = static_cast<int>(*parsed);
    } else if (key == "packet_records") {
        const std::optional<int64_t> parsed = ParseWhole(value);
        ok = parsed.has_value() && *parsed >= 1 && *parsed <= kMostPacketRecords;
        if (ok) packetRecords = static_cast<int>(*parsed);
    } else {
        error = "unknown setting '" + key + "'";
        return false;
    }
    if (!ok) error = "bad value '" + value + "' for " + key;
    return ok;
}

bool ReplayConfig::Apply(const std::string& text, const std::string& where) {
    std::string lines = text;
    for (char& c : lines) {
        if (c == ';') c = '\n';
    }
    std::stringstream stream(lines);
    std::string line;
    bool allGood = true;
    while (std::getline(stream, line)) {
        const size_t hash = line.find('#');
        if (hash != std::string::npos) line.erase(hash);
        if (Trimmed(line).empty()) continue;
        const size_t equals = line.find('=');
        std::string error = "expected key = value in '" + Trimmed(line) + "'";
        if (equals == std::string::npos || !Set(line.substr(0, equals), line.substr(equals + 1), error)) {
            std::fprintf(stderr, "qvnreplay: %s: %s (ignored)\n", where.c_str(), error.c_str());
            allGood = false;
        }
    }
    return allGood;
}

ReplayConfig ReplayConfig::FromEnvironment() {
    ReplayConfig config;
    if (const char* path = std::getenv("QVNREPLAY_CONFIG"); path != nullptr && *path != '\0') {
        std::ifstream file(path);
        if (!file) {
            std::fprintf(stderr, "qvnreplay: cannot read the settings file %s\n", path);
        } else {
            std::stringstream text;
            text << file.rdbuf();
            config.Apply(text.str(), path);
        }
    }
    for (const char* key : kKeys) {
        std::string name = "QVNREPLAY_";
        for (const char* c = key; *c; ++c) {
            name.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(*c))));
        }
        const char* value = std::getenv(name.c_str());
        if (value == nullptr) continue;
        std::string error;
        if (!config.Set(key, value, error)) {
            std::fprintf(stderr, "qvnreplay: %s: %s (ignored)\n", name.c_str(), error.c_str());
        }
    }
    return config;
}

}  // namespace qvnreplay
