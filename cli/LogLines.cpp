#include "cli/LogLines.h"

#include <cstdio>
#include <iostream>
#include <streambuf>

namespace qvnrt::cli {
namespace {

// Unbuffered, straight to stderr as std::clog is by default, so diagnostics keep their
// place among the program's own messages.
class TrackingBuffer : public std::streambuf {
public:
    bool lineOpen() const { return m_lineOpen; }
    void endLine() {
        std::fputc('\n', stderr);
        m_lineOpen = false;
    }

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        if (std::fputc(c, stderr) == EOF) return traits_type::eof();
        m_lineOpen = c != '\n';
        return c;
    }
    std::streamsize xsputn(const char* text, std::streamsize count) override {
        if (count <= 0) return 0;
        const std::streamsize written =
            static_cast<std::streamsize>(std::fwrite(text, 1, static_cast<size_t>(count), stderr));
        if (written > 0) m_lineOpen = text[written - 1] != '\n';
        return written;
    }
    int sync() override { return std::fflush(stderr) == 0 ? 0 : -1; }

private:
    bool m_lineOpen = false;
};

// Never destroyed: std::clog keeps pointing at it until the very end of the process, when
// the C++ library's own teardown (in whichever shared object runs it last) flushes clog.
TrackingBuffer& Buffer() {
    static TrackingBuffer* const buffer = new TrackingBuffer;
    return *buffer;
}

}  // namespace

void TrackLogLines() {
    std::clog.rdbuf(&Buffer());
}

void EndOpenLogLine() {
    if (std::clog.rdbuf() == &Buffer() && Buffer().lineOpen()) Buffer().endLine();
}

}  // namespace qvnrt::cli
