// Side-by-side runs: the library's own code and what a user would pick instead, timed in
// one program so that both see the same machine at the same moment.
//
// Each benchmark is registered under "<comparison>/<contender>", the library's own with the
// contender "qvnrt". After Google Benchmark's usual report, RunComparisons prints for every
// other contender its rate, the library's, and the library's rate over it (above 1: the
// library is faster). With QVNRT_PEER_TABLE set it also appends one line a pair to that
// file, tab-separated: comparison, contender, library rate, contender rate, ratio (rates in
// items a second). `make bench` gathers those lines into its closing table.
#pragma once

namespace qvnrt::bench {

inline constexpr const char* kOwnContender = "qvnrt";

// Runs every registered benchmark (command-line flags as Google Benchmark's) and reports the
// pairs. The process's exit status.
int RunComparisons(int argc, char** argv);

}  // namespace qvnrt::bench
