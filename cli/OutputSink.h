// Where a command's rows go when they are not a live board: standard output as a table, as
// CSV or as JSON lines, written as they come and flushed at the end of every batch, so that
// a pipe (`| head`, `| jq`) sees each batch at once.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "cli/Table.h"

namespace qvnrt::cli {

enum class Format { kTable, kCsv, kJson };

// One line of a table: each shown cell padded to its width (cut when longer), "-" for a
// missing value, rises in green and falls in red when `colour` is set. A width of 0 hides
// its column.
std::string TableLine(const std::vector<Column>& columns, const std::vector<int>& widths,
                      const Row& row, bool colour);
// The header line of a table in the same widths.
std::string TableHeader(const std::vector<Column>& columns, const std::vector<int>& widths);

class OutputSink {
public:
    // Table: a header, then rows in the columns' own widths (a longer value widens its row,
    // never cut: the output is not a terminal). CSV: a header line, then RFC 4180 rows, a
    // missing value empty. JSON: one object a line, keyed by the headers in lower case, a
    // missing value null, every value a string as shown (prices may be fractions).
    // `fitWidth` above 0 (a terminal's width) fits a table's batches to it, as a board.
    OutputSink(Format format, FILE* out, std::vector<Column> columns, int fitWidth = 0);
    // Standard output in `format`, fitted to the terminal when it is one.
    static OutputSink ToStdout(Format format, std::vector<Column> columns);

    // One row as it comes, in the widths known so far.
    void Write(const Row& row);
    // Rows known together: a table sizes its columns to them first (when the header is
    // still to come), then the batch is flushed. False once the reader has gone.
    bool WriteBatch(const std::vector<Row>& rows);
    // Ends a batch: what was written reaches the reader now. False once the reader has gone
    // (a closed pipe), or the output failed otherwise.
    bool Flush();

private:
    void WriteHeader();

    Format m_format;
    FILE* m_out;
    std::vector<Column> m_columns;
    std::vector<int> m_widths;
    int m_fitWidth;
    bool m_headerWritten = false;
};

// Flushes `stream` and, when it failed for any reason but a reader that went away, says so
// on standard error under `name`. True when the stream failed.
bool ReportOutputFailure(FILE* stream, const char* name);

}  // namespace qvnrt::cli
