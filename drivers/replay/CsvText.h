// The pieces of a data file's line: comma-separated fields, numbers and times. Nothing here
// allocates; a line is read in place from the mapped file.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace qvnreplay {

// Splits `line` at commas into at most `most` fields; returns how many there were, or -1
// when there were more than `most`.
int SplitFields(std::string_view line, std::string_view* fields, int most);

std::string_view TrimBlanks(std::string_view text);

std::optional<double> ParseNumber(std::string_view text);
std::optional<int64_t> ParseWhole(std::string_view text);

// Seconds since 1970 from "1718112600", "2024-06-11T09:30:00-04:00", "2024-06-11T13:30:00Z",
// "2024-06-11 09:30:00+0200", or a date alone, "2024-06-11", read as noon UTC of that day
// (the time an end-of-day record carries).
std::optional<int64_t> ParseTime(std::string_view text);

// Days since 1970 from "2024-06-11".
std::optional<int64_t> ParseDay(std::string_view text);

}  // namespace qvnreplay
