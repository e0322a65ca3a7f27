// Runs qvnrt-cli as a user would: in a directory of the test's (where its cache goes), with
// a configuration directory and simulation settings of the test's, on pipes or on a
// pseudo-terminal of a given size.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace qvnrt::test {

struct CliResult {
    int status = -1;  // the exit status; 128 + n after signal n
    std::string out;
    std::string err;
};

struct CliEnvironment {
    std::string workDirectory;
    std::string home;                    // QVNRT_HOME; empty: unset
    std::vector<std::string> variables;  // NAME=value, added to (or replacing) the test's
};

// Runs to the end, capturing standard output and standard error apart.
CliResult RunCli(const std::vector<std::string>& arguments, const CliEnvironment& environment);

// What a user does at the terminal while the program runs, given the terminal's master side.
struct TerminalAction {
    std::chrono::milliseconds after{0};
    std::function<void(int master)> act;
};
void TypeCtrlC(int master);
void ResizeTerminal(int master, int columns, int rows);

// Runs on a pseudo-terminal of `columns` x `rows`, doing `action` (if any) on the way;
// everything the program wrote to it, as the terminal received it.
CliResult RunCliInTerminal(const std::vector<std::string>& arguments,
                           const CliEnvironment& environment, int columns, int rows,
                           const TerminalAction& action = {});

// A run whose standard output is read while it goes on.
class CliProcess {
public:
    CliProcess(const std::vector<std::string>& arguments, const CliEnvironment& environment);
    ~CliProcess();
    CliProcess(const CliProcess&) = delete;
    CliProcess& operator=(const CliProcess&) = delete;

    // The next line of standard output, without its end; false when none came in `wait`.
    bool ReadLine(std::string& line, std::chrono::milliseconds wait);
    bool Running();
    // Sends SIGINT (Ctrl-C) and waits for the exit status.
    int Interrupt();

private:
    pid_t m_pid = -1;
    int m_out = -1;
    std::string m_buffer;
    int m_status = -1;
};

}  // namespace qvnrt::test
