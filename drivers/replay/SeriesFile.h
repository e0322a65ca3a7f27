// One time-ordered data file of a symbol: its ticks, its one-minute bars or its days.
//
// The file stays mapped and is never copied: opening reads it once, front to back, to report
// malformed lines and times out of order; a request then finds its span by binary search on
// time and walks it in place. Only a file with times out of order costs memory: an index of
// its good lines, sorted by time, so that it is still served in order.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "MappedFile.h"

namespace qvnreplay {

enum class SeriesKind {
    kTicks,    // time,price,volume[,flag]
    kMinutes,  // time,open,high,low,close,volume
    kDays,     // date,open,high,low,close,volume
};

struct SeriesRow {
    int64_t time = 0;  // seconds since 1970
    // Ticks: price, volume, flag. Bars and days: open, high, low, close, volume.
    double values[5] = {};
};

class SeriesFile {
public:
    // Null when the file is missing: no data of that kind.
    static std::unique_ptr<SeriesFile> Open(const std::string& path, SeriesKind kind);

    // The rows whose time lies in [first, last], oldest first or newest first. `visit`
    // returns false to stop.
    using Visitor = std::function<bool(const SeriesRow&)>;
    void Forward(int64_t first, int64_t last, const Visitor& visit) const;
    void Backward(int64_t first, int64_t last, const Visitor& visit) const;
    // The newest row at or before `time`.
    std::optional<SeriesRow> AtOrBefore(int64_t time) const;

    size_t Rows() const { return m_rows; }
    size_t SkippedLines() const { return m_skipped; }
    bool WasOutOfOrder() const { return m_outOfOrder; }

    // One line of the kind's format; nullopt when malformed.
    static std::optional<SeriesRow> ParseLine(std::string_view line, SeriesKind kind);

private:
    SeriesFile(std::unique_ptr<MappedFile> file, SeriesKind kind);
    void Scan();

    // In a file in order: the start of the first good line at or after `position` whose
    // time is `time` or later, or the file's end.
    size_t LowerBound(int64_t time) const;
    size_t NextLine(size_t position) const;
    size_t LineStartBefore(size_t position) const;
    std::string_view LineAt(size_t position) const;
    // The time of the first good line at or after `position`; the largest time at the end.
    int64_t TimeFrom(size_t position) const;

    std::unique_ptr<MappedFile> m_file;
    std::string_view m_text;
    SeriesKind m_kind;
    size_t m_dataStart = 0;  // after the header line
    size_t m_rows = 0;
    size_t m_skipped = 0;
    bool m_outOfOrder = false;
    struct Entry {
        int64_t time;
        size_t offset;
    };
    std::vector<Entry> m_sorted;  // only for a file out of order
};

}  // namespace qvnreplay
