// Spans found by binary search on a mapped file are the spans a plain scan of the same rows
// finds, whatever the file's layout: line ends, a missing final newline, blank and bad lines,
// times out of order.
#include <algorithm>
#include <cstdint>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "SeriesFile.h"
#include "support/TempDir.h"

namespace qvnreplay {
namespace {

struct Layout {
    const char* name;
    const char* lineEnd;
    bool finalNewline;
    int badEvery;       // a malformed line after every this many rows; 0 for none
    bool shuffled;      // rows written out of time order
};

void PrintTo(const Layout& layout, std::ostream* out) {
    *out << layout.name;
}

class SeriesSearch : public testing::TestWithParam<Layout> {
protected:
    // Times with repeats and gaps, so that bounds fall on, between and beside rows.
    std::vector<int64_t> MakeTimes() const {
        std::vector<int64_t> times;
        int64_t t = 1720186200;
        for (int i = 0; i < 300; ++i) {
            t += (i % 7 == 0) ? 0 : (i % 5) * 13;
            times.push_back(t);
        }
        return times;
    }

    std::string Write(const std::vector<int64_t>& times) const {
        const Layout& layout = GetParam();
        std::vector<int64_t> order = times;
        if (layout.shuffled) std::reverse(order.begin() + 100, order.begin() + 200);
        std::string text = std::string("time,price,volume,flag") + layout.lineEnd;
        for (size_t i = 0; i < order.size(); ++i) {
            if (layout.badEvery > 0 && i % layout.badEvery == 0) {
                text += std::string("not,a,row") + layout.lineEnd + layout.lineEnd;
            }
            text += std::to_string(order[i]) + "," + std::to_string(i) + ",1,0";
            if (i + 1 < order.size() || layout.finalNewline) text += layout.lineEnd;
        }
        m_dir.write("X.ticks.csv", text);
        return m_dir.file("X.ticks.csv");
    }

    qvnrt::test::TempDir m_dir;
};

TEST_P(SeriesSearch, ForwardAndBackwardSpansMatchAScan) {
    const std::vector<int64_t> times = MakeTimes();
    testing::internal::CaptureStderr();
    const std::unique_ptr<SeriesFile> file = SeriesFile::Open(Write(times), SeriesKind::kTicks);
    const std::string reports = testing::internal::GetCapturedStderr();
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->Rows(), times.size());
    EXPECT_EQ(file->WasOutOfOrder(), GetParam().shuffled);
    EXPECT_EQ(reports.find("X.ticks.csv:") != std::string::npos,
              GetParam().shuffled || GetParam().badEvery > 0);

    std::vector<int64_t> sorted = times;
    std::sort(sorted.begin(), sorted.end());
    const int64_t lowest = sorted.front() - 5;
    const int64_t highest = sorted.back() + 5;
    for (int64_t first = lowest; first <= highest; first += 37) {
        for (const int64_t span : {0, 1, 13, 200, 5000}) {
            const int64_t last = first + span;
            std::vector<int64_t> expected;
            for (const int64_t t : sorted) {
                if (t >= first && t <= last) expected.push_back(t);
            }
            std::vector<int64_t> forward, backward;
            file->Forward(first, last, [&](const SeriesRow& row) {
                forward.push_back(row.time);
                return true;
            });
            file->Backward(first, last, [&](const SeriesRow& row) {
                backward.push_back(row.time);
                return true;
            });
            std::reverse(backward.begin(), backward.end());
            ASSERT_EQ(forward, expected) << first << ".." << last;
            ASSERT_EQ(backward, expected) << first << ".." << last;
        }
    }
    const std::optional<SeriesRow> beforeAll = file->AtOrBefore(lowest);
    EXPECT_FALSE(beforeAll.has_value());
    ASSERT_TRUE(file->AtOrBefore(highest).has_value());
    EXPECT_EQ(file->AtOrBefore(highest)->time, sorted.back());
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, SeriesSearch,
    testing::Values(Layout{"Plain", "\n", true, 0, false},
                    Layout{"NoFinalNewline", "\n", false, 0, false},
                    Layout{"CrLf", "\r\n", true, 0, false},
                    Layout{"BadAndBlankLines", "\n", true, 9, false},
                    Layout{"BadLinesNoFinalNewline", "\n", false, 4, false},
                    Layout{"OutOfOrder", "\n", true, 0, true},
                    Layout{"OutOfOrderWithBadLines", "\r\n", false, 11, true}),
    [](const testing::TestParamInfo<Layout>& info) { return std::string(info.param.name); });

struct TimeCase {
    const char* name;
    const char* text;
    std::optional<int64_t> seconds;
};

void PrintTo(const TimeCase& time, std::ostream* out) {
    *out << time.name;
}

class TimeText : public testing::TestWithParam<TimeCase> {};

TEST_P(TimeText, ReadsEveryDocumentedForm) {
    const std::optional<SeriesRow> row =
        SeriesFile::ParseLine(std::string(GetParam().text) + ",1,1", SeriesKind::kTicks);
    ASSERT_EQ(row.has_value(), GetParam().seconds.has_value());
    if (row) {
        EXPECT_EQ(row->time, *GetParam().seconds);
    }
}

// 2024-07-05 13:30:00 UTC is 1720186200.
INSTANTIATE_TEST_SUITE_P(
    Forms, TimeText,
    testing::Values(TimeCase{"Seconds", "1720186200", 1720186200},
                    TimeCase{"Utc", "2024-07-05T13:30:00Z", 1720186200},
                    TimeCase{"NegativeOffset", "2024-07-05T09:30:00-04:00", 1720186200},
                    TimeCase{"BlankAndCompactOffset", "2024-07-05 15:30:00+0200", 1720186200},
                    TimeCase{"NoSeconds", "2024-07-05T09:30-04:00", 1720186200},
                    TimeCase{"DayAlone", "2024-07-05", 1720180800},  // a day alone: its noon, UTC
                    TimeCase{"NoOffset", "2024-07-05T09:30:00", std::nullopt},  // no offset: refused
                    TimeCase{"NoSuchDay", "2024-02-30", std::nullopt},
                    TimeCase{"TimeAlone", "12:00", std::nullopt},
                    TimeCase{"NoSuchHour", "2024-07-05T25:00:00Z", std::nullopt}),
    [](const testing::TestParamInfo<TimeCase>& info) { return std::string(info.param.name); });

// Lines refused whole, rather than read into values that no record can carry.
class RefusedLine : public testing::TestWithParam<std::pair<SeriesKind, const char*>> {};

TEST_P(RefusedLine, IsMalformed) {
    EXPECT_FALSE(SeriesFile::ParseLine(GetParam().second, GetParam().first).has_value());
}

INSTANTIATE_TEST_SUITE_P(
    Lines, RefusedLine,
    testing::Values(std::pair{SeriesKind::kTicks, "1720186200,nan,1"},
                    std::pair{SeriesKind::kTicks, "1720186200,inf,1"},
                    std::pair{SeriesKind::kTicks, "1720186200,10,1e300"},
                    std::pair{SeriesKind::kTicks, "1720186200,10,1,256"},
                    std::pair{SeriesKind::kTicks, "1720186200,10,1,0,0"},
                    std::pair{SeriesKind::kTicks, "-5,10,1"},
                    std::pair{SeriesKind::kTicks, "99999999999,10,1"},
                    std::pair{SeriesKind::kMinutes, "1720186200,1,2,0.5,1.5"},
                    std::pair{SeriesKind::kDays, "2024-07-05,1,2,0.5,1.5,100,7"}));

}  // namespace
}  // namespace qvnreplay
