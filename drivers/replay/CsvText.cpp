#include "CsvText.h"

#include <charconv>

#include "CivilDate.h"

namespace qvnreplay {

namespace {

bool Digits(std::string_view text, size_t at, size_t count, int& out) {
    if (at + count > text.size()) return false;
    int value = 0;
    for (size_t i = at; i < at + count; ++i) {
        if (text[i] < '0' || text[i] > '9') return false;
        value = value * 10 + (text[i] - '0');
    }
    out = value;
    return true;
}

}  // namespace

int SplitFields(std::string_view line, std::string_view* fields, int most) {
    int count = 0;
    size_t begin = 0;
    while (true) {
        const size_t comma = line.find(',', begin);
        if (count == most) return -1;
        fields[count++] = TrimBlanks(line.substr(begin, comma == std::string_view::npos
                                                            ? std::string_view::npos
                                                            : comma - begin));
        if (comma == std::string_view::npos) return count;
        begin = comma + 1;
    }
}

std::string_view TrimBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) {
        text.remove_suffix(1);
    }
    return text;
}

std::optional<double> ParseNumber(std::string_view text) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::optional<int64_t> ParseWhole(std::string_view text) {
    int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end) return std::nullopt;
    return value;
}

std::optional<int64_t> ParseDay(std::string_view text) {
    int year = 0, month = 0, day = 0;
    if (text.size() != 10 || text[4] != '-' || text[7] != '-' || !Digits(text, 0, 4, year) ||
        !Digits(text, 5, 2, month) || !Digits(text, 8, 2, day) || month < 1 || month > 12 ||
        day < 1 || day > DaysInMonth(year, month)) {
        return std::nullopt;
    }
    return DaysFromCivil(year, month, day);
}

std::optional<int64_t> ParseTime(std::string_view text) {
    if (text.size() < 10 || text[4] != '-') return ParseWhole(text);
    const std::optional<int64_t> day = ParseDay(text.substr(0, 10));
    if (!day) return std::nullopt;
    if (text.size() == 10) return *day * kSecondsPerDay + kSecondsPerDay / 2;
    int hour = 0, minute = 0, second = 0;
    if ((text[10] != 'T' && text[10] != ' ') || !Digits(text, 11, 2, hour) ||
        text.size() < 16 || text[13] != ':' || !Digits(text, 14, 2, minute) || hour > 23 ||
        minute > 59) {
        return std::nullopt;
    }
    size_t at = 16;
    if (at < text.size() && text[at] == ':') {
        if (!Digits(text, at + 1, 2, second) || second > 59) return std::nullopt;
        at += 3;
    }
    // The offset is required: a time without one would depend on the reader's zone.
    int64_t offset = 0;
    const std::string_view zone = text.substr(at);
    if (zone == "Z") {
        offset = 0;
    } else if (zone.size() >= 5 && (zone[0] == '+' || zone[0] == '-')) {
        int offsetHours = 0, offsetMinutes = 0;
        const size_t minuteAt = zone[3] == ':' ? 4 : 3;
        if (!Digits(zone, 1, 2, offsetHours) || !Digits(zone, minuteAt, 2, offsetMinutes) ||
            zone.size() != minuteAt + 2) {
            return std::nullopt;
        }
        offset = (offsetHours * 60 + offsetMinutes) * 60 * (zone[0] == '-' ? -1 : 1);
    } else {
        return std::nullopt;
    }
    return *day * kSecondsPerDay + hour * 3600 + minute * 60 + second - offset;
}

}  // namespace qvnreplay
