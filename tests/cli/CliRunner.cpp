#include "cli/CliRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <stdexcept>

namespace qvnrt::test {
namespace {

constexpr auto kRunLimit = std::chrono::seconds(40);  // a hung program fails, not hangs

// In the child: the directory, the environment, then the program. Never returns.
[[noreturn]] void Exec(const std::vector<std::string>& arguments,
                       const CliEnvironment& environment) {
    if (::chdir(environment.workDirectory.c_str()) != 0) ::_exit(126);
    if (environment.home.empty()) {
        ::unsetenv("QVNRT_HOME");
    } else {
        ::setenv("QVNRT_HOME", environment.home.c_str(), 1);
    }
    for (const std::string& variable : environment.variables) {
        const size_t equals = variable.find('=');
        ::setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
    }
    std::vector<char*> argv;
    static std::string program = QVNRT_CLI_PATH;
    argv.push_back(program.data());
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);
    ::execv(program.c_str(), argv.data());
    ::_exit(127);
}

int StatusOf(int waitStatus) {
    if (WIFEXITED(waitStatus)) return WEXITSTATUS(waitStatus);
    if (WIFSIGNALED(waitStatus)) return 128 + WTERMSIG(waitStatus);
    return -1;
}

// Reads every descriptor to its end (a pty's end reads as EIO), doing `action` on its time,
// then reaps the child.
int Collect(pid_t pid, const std::vector<std::pair<int, std::string*>>& outputs,
            const TerminalAction& action = {}) {
    const auto start = std::chrono::steady_clock::now();
    const auto deadline = start + kRunLimit;
    bool acted = !action.act;
    std::vector<pollfd> open;
    for (const auto& output : outputs) open.push_back({output.first, POLLIN, 0});
    size_t remaining = open.size();
    while (remaining > 0 && std::chrono::steady_clock::now() < deadline) {
        if (!acted && std::chrono::steady_clock::now() - start >= action.after) {
            action.act(outputs[0].first);
            acted = true;
        }
        if (::poll(open.data(), open.size(), 20) < 0 && errno != EINTR) break;
        for (size_t i = 0; i < open.size(); ++i) {
            if (open[i].fd < 0 || open[i].revents == 0) continue;
            char buffer[4096];
            const ssize_t got = ::read(open[i].fd, buffer, sizeof(buffer));
            if (got > 0) {
                outputs[i].second->append(buffer, static_cast<size_t>(got));
            } else if (got == 0 || errno != EINTR) {
                ::close(open[i].fd);
                open[i].fd = -1;
                --remaining;
            }
        }
    }
    for (const pollfd& descriptor : open) {
        if (descriptor.fd >= 0) ::close(descriptor.fd);
    }
    if (remaining > 0) ::kill(pid, SIGKILL);
    int waitStatus = 0;
    ::waitpid(pid, &waitStatus, 0);
    return StatusOf(waitStatus);
}

}  // namespace

CliResult RunCli(const std::vector<std::string>& arguments, const CliEnvironment& environment) {
    int out[2], err[2];
    if (::pipe2(out, O_CLOEXEC) != 0 || ::pipe2(err, O_CLOEXEC) != 0) {
        throw std::runtime_error("pipe");
    }
    const pid_t pid = ::fork();
    if (pid == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        ::dup2(err[1], STDERR_FILENO);
        Exec(arguments, environment);
    }
    ::close(out[1]);
    ::close(err[1]);
    CliResult result;
    result.status = Collect(pid, {{out[0], &result.out}, {err[0], &result.err}});
    return result;
}

void TypeCtrlC(int master) {
    const char interrupt = '\x03';  // the terminal turns it into SIGINT
    [[maybe_unused]] const ssize_t written = ::write(master, &interrupt, 1);
}

void ResizeTerminal(int master, int columns, int rows) {
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(rows);
    ::ioctl(master, TIOCSWINSZ, &size);  // the terminal sends SIGWINCH
}

CliResult RunCliInTerminal(const std::vector<std::string>& arguments,
                           const CliEnvironment& environment, int columns, int rows,
                           const TerminalAction& action) {
    winsize size{};
    size.ws_col = static_cast<unsigned short>(columns);
    size.ws_row = static_cast<unsigned short>(rows);
    int terminal = -1;
    const pid_t pid = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (pid < 0) throw std::runtime_error("forkpty");
    if (pid == 0) Exec(arguments, environment);
    CliResult result;
    result.status = Collect(pid, {{terminal, &result.out}}, action);
    return result;
}

CliProcess::CliProcess(const std::vector<std::string>& arguments,
                       const CliEnvironment& environment) {
    int out[2];
    if (::pipe2(out, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    m_pid = ::fork();
    if (m_pid == 0) {
        ::dup2(out[1], STDOUT_FILENO);
        Exec(arguments, environment);
    }
    ::close(out[1]);
    m_out = out[0];
}

CliProcess::~CliProcess() {
    if (Running()) {
        ::kill(m_pid, SIGKILL);
        ::waitpid(m_pid, nullptr, 0);
    }
    if (m_out >= 0) ::close(m_out);
}

bool CliProcess::ReadLine(std::string& line, std::chrono::milliseconds wait) {
    const auto deadline = std::chrono::steady_clock::now() + wait;
    for (;;) {
        const size_t end = m_buffer.find('\n');
        if (end != std::string::npos) {
            line = m_buffer.substr(0, end);
            m_buffer.erase(0, end + 1);
            return true;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd ready{m_out, POLLIN, 0};
        if (left.count() <= 0 || ::poll(&ready, 1, static_cast<int>(left.count())) <= 0) {
            return false;
        }
        char buffer[4096];
        const ssize_t got = ::read(m_out, buffer, sizeof(buffer));
        if (got <= 0) return false;
        m_buffer.append(buffer, static_cast<size_t>(got));
    }
}

bool CliProcess::Running() {
    if (m_status >= 0) return false;
    int waitStatus = 0;
    if (::waitpid(m_pid, &waitStatus, WNOHANG) != m_pid) return true;
    m_status = StatusOf(waitStatus);
    return false;
}

int CliProcess::Interrupt() {
    if (Running()) {
        ::kill(m_pid, SIGINT);
        int waitStatus = 0;
        ::waitpid(m_pid, &waitStatus, 0);
        m_status = StatusOf(waitStatus);
    }
    return m_status;
}

}  // namespace qvnrt::test
