// The library writes its diagnostics to std::clog, and some of them (" Lock count ") end
// without a line end, as the library defines them. The program keeps its own output off
// the end of such a line: it routes std::clog through a buffer that remembers the last
// character written, and ends an open line before it writes its own output or exits.
#pragma once

namespace qvnrt::cli {

// Routes std::clog through the tracking buffer; once, at the start of the program.
void TrackLogLines();
// Writes a line end to standard error when the library's last diagnostic left one open.
void EndOpenLogLine();

}  // namespace qvnrt::cli
