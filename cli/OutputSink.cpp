#include "cli/OutputSink.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>

#include "cli/LogLines.h"
#include "cli/Terminal.h"

namespace qvnrt::cli {
namespace {

const char kMissing[] = "-";
const char kRise[] = "\x1b[32m";
const char kFall[] = "\x1b[31m";
const char kPlain[] = "\x1b[0m";

std::string Pad(const std::string& text, int width, bool alignRight) {
    if (static_cast<int>(text.size()) >= width) return text.substr(0, width);
    const std::string fill(width - text.size(), ' ');
    return alignRight ? fill + text : text + fill;
}

std::string CsvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
    std::string quoted = "\"";
    for (char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

std::string JsonString(const std::string& text) {
    std::string out = "\"";
    for (unsigned char c : text) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (c < 0x20) {
                    char escaped[8];
                    std::snprintf(escaped, sizeof(escaped), "\\u%04x", c);
                    out += escaped;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    return out + '"';
}

std::string Key(std::string header) {
    for (char& c : header) {
        c = c == ' ' ? '_' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return header;
}

}  // namespace

std::string TableLine(const std::vector<Column>& columns, const std::vector<int>& widths,
                      const Row& row, bool colour) {
    std::string line;
    for (size_t i = 0; i < columns.size(); ++i) {
        if (widths[i] == 0) continue;
        if (!line.empty()) line += ' ';
        const Cell empty;
        const Cell& cell = i < row.size() ? row[i] : empty;
        const std::string text = Pad(cell.text.value_or(kMissing), widths[i],
                                     columns[i].alignRight);
        if (colour && cell.move != 0 && cell.text) {
            line += (cell.move > 0 ? kRise : kFall) + text + kPlain;
        } else {
            line += text;
        }
    }
    // Trailing blanks only cost a terminal its last column.
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

std::string TableHeader(const std::vector<Column>& columns, const std::vector<int>& widths) {
    Row headers;
    for (const Column& column : columns) headers.push_back({column.header, 0});
    return TableLine(columns, widths, headers, false);
}

OutputSink::OutputSink(Format format, FILE* out, std::vector<Column> columns, int fitWidth)
    : m_format(format), m_out(out), m_columns(std::move(columns)), m_fitWidth(fitWidth) {
    for (const Column& column : m_columns) {
        m_widths.push_back(std::max<int>(column.width, column.header.size()));
    }
    if (m_fitWidth > 0) m_widths = FitColumns(m_columns, m_widths, m_fitWidth);
}

OutputSink OutputSink::ToStdout(Format format, std::vector<Column> columns) {
    return OutputSink(format, stdout, std::move(columns),
                      IsTerminal(stdout) ? TerminalWidth(stdout) : 0);
}

bool OutputSink::WriteBatch(const std::vector<Row>& rows) {
    EndOpenLogLine();
    if (m_format == Format::kTable && !m_headerWritten) {
        std::vector<int> wanted;
        for (const Column& column : m_columns) {
            wanted.push_back(std::max<int>(column.width, column.header.size()));
        }
        for (const Row& row : rows) {
            for (size_t i = 0; i < row.size() && i < wanted.size(); ++i) {
                if (row[i].text) wanted[i] = std::max<int>(wanted[i], row[i].text->size());
            }
        }
        m_widths = m_fitWidth > 0 ? FitColumns(m_columns, wanted, m_fitWidth) : wanted;
    }
    for (const Row& row : rows) Write(row);
    return Flush();
}

void OutputSink::WriteHeader() {
    m_headerWritten = true;
    if (m_format == Format::kTable) {
        std::fprintf(m_out, "%s\n", TableHeader(m_columns, m_widths).c_str());
    } else if (m_format == Format::kCsv) {
        std::string line;
        for (const Column& column : m_columns) {
            line += (line.empty() ? "" : ",") + CsvField(column.header);
        }
        std::fprintf(m_out, "%s\n", line.c_str());
    }
}

void OutputSink::Write(const Row& row) {
    if (!m_headerWritten) WriteHeader();
    std::string line;
    switch (m_format) {
        case Format::kTable: {
            // Not on a terminal, nothing is cut: a longer value widens its row instead.
            std::vector<int> widths = m_widths;
            for (size_t i = 0; m_fitWidth == 0 && i < row.size() && i < widths.size(); ++i) {
                if (row[i].text) widths[i] = std::max<int>(widths[i], row[i].text->size());
            }
            line = TableLine(m_columns, widths, row, false);
            break;
        }
        case Format::kCsv:
            for (size_t i = 0; i < m_columns.size(); ++i) {
                if (i > 0) line += ',';
                if (i < row.size() && row[i].text) line += CsvField(*row[i].text);
            }
            break;
        case Format::kJson:
            line = "{";
            for (size_t i = 0; i < m_columns.size(); ++i) {
                if (i > 0) line += ',';
                line += JsonString(Key(m_columns[i].header)) + ':';
                line += i < row.size() && row[i].text ? JsonString(*row[i].text) : "null";
            }
            line += '}';
            break;
    }
    std::fprintf(m_out, "%s\n", line.c_str());
}

bool OutputSink::Flush() {
    return std::fflush(m_out) == 0 && !std::ferror(m_out);
}

bool ReportOutputFailure(FILE* stream, const char* name) {
    errno = 0;
    if (std::fflush(stream) == 0 && !std::ferror(stream)) return false;
    // A reader that went away (EPIPE) is the normal end of `| head`; anything else, such as
    // EFBIG past `ulimit -f`, is a loss the user must hear of.
    if (errno != EPIPE) {
        std::fprintf(stderr, "qvnrt-cli: %s: %s\n", name,
                     errno != 0 ? std::strerror(errno) : "write failed");
    }
    return true;
}

}  // namespace qvnrt::cli
