#include "SeriesFile.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "CivilDate.h"
#include "CsvText.h"

namespace qvnreplay {

namespace {

constexpr int64_t kEndTime = std::numeric_limits<int64_t>::max();
constexpr size_t kMostReports = 20;
constexpr int64_t kLatestTime = 0xFFFFFFFFll;
// Beyond any price or volume, and small enough for every conversion to stay defined.
constexpr double kLargestValue = 1e15;
// The checking read gives back what it has read in steps of this many bytes.
constexpr size_t kReleaseBytes = size_t{16} << 20;

bool IsHeader(std::string_view line) {
    line = TrimBlanks(line);
    return !line.empty() && !(line[0] >= '0' && line[0] <= '9') && line[0] != '-';
}

}  // namespace

std::optional<SeriesRow> SeriesFile::ParseLine(std::string_view line, SeriesKind kind) {
    std::string_view fields[6];
    const int count = SplitFields(line, fields, 6);
    const bool ticks = kind == SeriesKind::kTicks;
    if (ticks ? count != 3 && count != 4 : count != 6) return std::nullopt;
    SeriesRow row;
    const std::optional<int64_t> time = ParseTime(fields[0]);
    // Times travel as 32 bits: seconds since 1970 up to 2106.
    if (!time || *time < 0 || *time > kLatestTime) return std::nullopt;
    row.time = *time;
    for (int i = 1; i < count; ++i) {
        const std::optional<double> value = ParseNumber(fields[i]);
        if (!value || !std::isfinite(*value) || std::fabs(*value) > kLargestValue) {
            return std::nullopt;
        }
        row.values[i - 1] = *value;
    }
    // A tick's flag is a byte.
    if (ticks && (row.values[2] < 0 || row.values[2] > 255)) return std::nullopt;
    return row;
}

std::unique_ptr<SeriesFile> SeriesFile::Open(const std::string& path, SeriesKind kind) {
    std::unique_ptr<MappedFile> file = MappedFile::Open(path);
    if (!file) return nullptr;
    std::unique_ptr<SeriesFile> series(new SeriesFile(std::move(file), kind));
    series->Scan();
    return series;
}

SeriesFile::SeriesFile(std::unique_ptr<MappedFile> file, SeriesKind kind)
    : m_file(std::move(file)), m_text(m_file->Text()), m_kind(kind) {}

void SeriesFile::Scan() {
    m_file->ExpectSequential();
    const std::string& path = m_file->Path();
    if (IsHeader(LineAt(0))) m_dataStart = NextLine(0);
    int64_t previous = std::numeric_limits<int64_t>::min();
    size_t lineNumber = m_dataStart == 0 ? 0 : 1;
    size_t reported = 0;
    size_t released = 0;
    for (size_t at = m_dataStart; at < m_text.size(); at = NextLine(at)) {
        if (at - released >= kReleaseBytes) {
            m_file->Release(released, at);
            released = at;
        }
        ++lineNumber;
        const std::string_view line = LineAt(at);
        if (TrimBlanks(line).empty()) continue;
        const std::optional<SeriesRow> row = ParseLine(line, m_kind);
        const char* problem = !row                    ? "malformed line (skipped)"
                              : row->time < previous ? "time out of order (served sorted)"
                                                     : nullptr;
        // A file that is wrong throughout says so a few times, then once in total.
        if (problem != nullptr && ++reported <= kMostReports) {
            std::fprintf(stderr, "qvnreplay: %s:%zu: %s\n", path.c_str(), lineNumber, problem);
        }
        if (!row) {
            ++m_skipped;
            continue;
        }
        m_outOfOrder |= row->time < previous;
        previous = std::max(previous, row->time);
        ++m_rows;
    }
    m_file->Release(released, m_text.size());
    if (reported > kMostReports) {
        std::fprintf(stderr, "qvnreplay: %s: %zu problems in all\n", path.c_str(), reported);
    }
    if (m_outOfOrder) {
        for (size_t at = m_dataStart; at < m_text.size(); at = NextLine(at)) {
            if (const std::optional<SeriesRow> row = ParseLine(LineAt(at), m_kind)) {
                m_sorted.push_back({row->time, at});
            }
        }
        std::stable_sort(m_sorted.begin(), m_sorted.end(),
                         [](const Entry& a, const Entry& b) { return a.time < b.time; });
    }
    m_file->ExpectRandom();
}

size_t SeriesFile::NextLine(size_t position) const {
    const size_t newline = m_text.find('\n', position);
    return newline == std::string_view::npos ? m_text.size() : newline + 1;
}

size_t SeriesFile::LineStartBefore(size_t position) const {
    // `position` is a line start or the file's end; the line before it ends at its newline,
    // or at the file's last byte when the file lacks a final newline.
    if (position <= m_dataStart) return m_dataStart;
    size_t search = position - 1;
    if (m_text[search] == '\n') {
        if (search == m_dataStart) return m_dataStart;
        --search;
    }
    const size_t newline = m_text.rfind('\n', search);
    if (newline == std::string_view::npos || newline + 1 < m_dataStart) return m_dataStart;
    return newline + 1;
}

std::string_view SeriesFile::LineAt(size_t position) const {
    const size_t end = NextLine(position);
    std::string_view line = m_text.substr(position, end - position);
    if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
    return line;
}

int64_t SeriesFile::TimeFrom(size_t position) const {
    for (size_t at = position; at < m_text.size(); at = NextLine(at)) {
        if (const std::optional<SeriesRow> row = ParseLine(LineAt(at), m_kind)) return row->time;
    }
    return kEndTime;
}

size_t SeriesFile::LowerBound(int64_t time) const {
    // Both ends are always line starts (or the file's end): the answer lies in [low, high].
    size_t low = m_dataStart;
    size_t high = m_text.size();
    while (low < high) {
        const size_t middle = low + (high - low) / 2;
        const size_t line = middle <= low ? low : NextLine(middle - 1);
        if (line >= high) {
            // No line starts in [middle, high): decide on the line at `low` itself.
            if (TimeFrom(low) >= time)
                high = low;
            else
                low = NextLine(low);
            continue;
        }
        if (TimeFrom(line) >= time)
            high = line;
        else
            low = NextLine(line);
    }
    return low;
}

void SeriesFile::Forward(int64_t first, int64_t last, const Visitor& visit) const {
    if (first > last) return;
    if (m_outOfOrder) {
        auto it = std::lower_bound(m_sorted.begin(), m_sorted.end(), first,
                                   [](const Entry& e, int64_t t) { return e.time < t; });
        for (; it != m_sorted.end() && it->time <= last; ++it) {
            if (!visit(*ParseLine(LineAt(it->offset), m_kind))) return;
        }
        return;
    }
    for (size_t at = LowerBound(first); at < m_text.size(); at = NextLine(at)) {
        const std::optional<SeriesRow> row = ParseLine(LineAt(at), m_kind);
        if (!row) continue;
        if (row->time > last || !visit(*row)) return;
    }
}

void SeriesFile::Backward(int64_t first, int64_t last, const Visitor& visit) const {
    if (first > last) return;
    if (m_outOfOrder) {
        auto it = std::upper_bound(m_sorted.begin(), m_sorted.end(), last,
                                   [](int64_t t, const Entry& e) { return t < e.time; });
        while (it != m_sorted.begin()) {
            --it;
            if (it->time < first) return;
            if (!visit(*ParseLine(LineAt(it->offset), m_kind))) return;
        }
        return;
    }
    const size_t end = last == kEndTime ? m_text.size() : LowerBound(last + 1);
    size_t at = end;
    while (at > m_dataStart) {
        at = LineStartBefore(at);
        const std::optional<SeriesRow> row = ParseLine(LineAt(at), m_kind);
        if (!row) continue;
        if (row->time < first || !visit(*row)) return;
    }
}

std::optional<SeriesRow> SeriesFile::AtOrBefore(int64_t time) const {
    std::optional<SeriesRow> found;
    Backward(std::numeric_limits<int64_t>::min(), time, [&found](const SeriesRow& row) {
        found = row;
        return false;
    });
    return found;
}

}  // namespace qvnreplay
