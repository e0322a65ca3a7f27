// The program's output pieces: columns fitted to a width, and rows as CSV and JSON lines.
#include <cstdio>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "cli/OutputSink.h"
#include "cli/Table.h"

namespace qvnrt::cli {
namespace {

// A board's columns: rank 0 stays, higher ranks go first, the last one takes what is left.
const std::vector<Column> kColumns = {
    {"SYMBOL", 6, false, 0, false}, {"LAST", 7, true, 0, false}, {"CHANGE", 7, true, 3, false},
    {"BID", 7, true, 4, false},     {"DATE", 10, false, 5, false}, {"NAME", 8, false, 7, true},
};
const std::vector<int> kWanted = {10, 9, 8, 9, 10, 30};

int Used(const std::vector<int>& widths) {
    int used = 0, shown = 0;
    for (int width : widths) {
        used += width;
        shown += width > 0;
    }
    return used + shown - 1;
}

class FitColumnsTest : public ::testing::TestWithParam<int> {};

TEST_P(FitColumnsTest, NeverWiderThanTheTerminalAndDropsByRank) {
    const int total = GetParam();
    const std::vector<int> widths = FitColumns(kColumns, kWanted, total);
    EXPECT_LE(Used(widths), total);
    for (size_t i = 0; i < kColumns.size(); ++i) {
        if (!kColumns[i].flexible) {
            EXPECT_LE(widths[i], kWanted[i]) << kColumns[i].header;
        }
        if (widths[i] > 0) continue;
        // A dropped column takes every column of a higher rank with it.
        for (size_t j = 0; j < kColumns.size(); ++j) {
            if (kColumns[j].dropRank > kColumns[i].dropRank) {
                EXPECT_EQ(0, widths[j]) << kColumns[j].header << " stayed, " << kColumns[i].header
                                        << " went";
            }
        }
    }
    if (total >= Used(kWanted)) {
        EXPECT_EQ(kWanted, widths) << "room for all";
    }
    if (total >= 20) {
        EXPECT_EQ(kWanted[0], widths[0]) << "the symbol stays whole";
    }
}

INSTANTIATE_TEST_SUITE_P(Widths, FitColumnsTest, ::testing::Values(200, 81, 80, 60, 40, 25, 12));

// What a sink writes, read back through a memory stream.
std::string Written(Format format, const std::vector<Row>& rows) {
    char* buffer = nullptr;
    size_t size = 0;
    FILE* memory = ::open_memstream(&buffer, &size);
    {
        OutputSink sink(format, memory, {{"SYMBOL", 4}, {"NAME", 4}});
        EXPECT_TRUE(sink.WriteBatch(rows));
    }
    std::fclose(memory);
    std::string text(buffer, size);
    std::free(buffer);
    return text;
}

struct FormatCase {
    Format format;
    std::string expected;
};

class SinkFormatTest : public ::testing::TestWithParam<FormatCase> {};

TEST_P(SinkFormatTest, QuotesWhatTheFormatNeedsAndMarksWhatIsMissing) {
    const std::vector<Row> rows = {{{"A,B"}, {"say \"hi\"\tnow"}}, {{"C"}, {}}};
    EXPECT_EQ(GetParam().expected, Written(GetParam().format, rows));
}

INSTANTIATE_TEST_SUITE_P(
    Formats, SinkFormatTest,
    ::testing::Values(
        FormatCase{Format::kCsv, "SYMBOL,NAME\n\"A,B\",\"say \"\"hi\"\"\tnow\"\nC,\n"},
        FormatCase{Format::kJson,
                   "{\"symbol\":\"A,B\",\"name\":\"say \\\"hi\\\"\\tnow\"}\n"
                   "{\"symbol\":\"C\",\"name\":null}\n"},
        FormatCase{Format::kTable, "SYMBOL NAME\nA,B    say \"hi\"\tnow\nC      -\n"}));

}  // namespace
}  // namespace qvnrt::cli
