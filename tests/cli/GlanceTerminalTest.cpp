// `qvnrt-cli glance` in a pseudo-terminal against the simulation driver, driven by keys as
// a user drives it.
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <regex>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace {

using namespace std::chrono_literals;

class GlanceTerminal : public ::testing::Test {
protected:
    void TearDown() override {
        if (m_child > 0) {
            ::kill(m_child, SIGKILL);
            ::waitpid(m_child, nullptr, 0);
        }
        if (m_terminal >= 0) ::close(m_terminal);
    }

    // Starts the program on a terminal of 100 columns, in the test's own directories.
    void Start(const std::string& symbol) {
        winsize size{};
        size.ws_row = 30;
        size.ws_col = 100;
        m_child = ::forkpty(&m_terminal, nullptr, nullptr, &size);
        ASSERT_GE(m_child, 0);
        if (m_child == 0) {
            if (::chdir(work.path().c_str()) != 0) ::_exit(127);
            ::setenv("QVNRT_HOME", home.path().c_str(), 1);
            ::setenv("QVNSIM_SEED", "7", 1);
            ::setenv("NO_COLOR", "1", 1);
            ::execl(QVNRT_CLI_PATH, "qvnrt-cli", "glance", symbol.c_str(), nullptr);
            ::_exit(127);
        }
    }

    // Reads the screen until `pattern` matches what the program has drawn since the last
    // clear, or the time is up. Returns that latest screen.
    std::string WaitFor(const std::regex& pattern, std::chrono::seconds limit = 10s) {
        const auto end = std::chrono::steady_clock::now() + limit;
        while (std::chrono::steady_clock::now() < end) {
            pollfd ready{m_terminal, POLLIN, 0};
            if (::poll(&ready, 1, 100) > 0) {
                char buffer[4096];
                const ssize_t got = ::read(m_terminal, buffer, sizeof(buffer));
                if (got <= 0) break;
                m_output.append(buffer, static_cast<size_t>(got));
            }
            const size_t clear = m_output.rfind("\x1b[2J");
            const std::string screen =
                clear == std::string::npos ? m_output : m_output.substr(clear);
            if (std::regex_search(screen, pattern)) return screen;
        }
        ADD_FAILURE() << "the screen never matched; it shows:\n" << m_output;
        return {};
    }

    void Type(const std::string& keys) {
        ASSERT_EQ(static_cast<ssize_t>(keys.size()), ::write(m_terminal, keys.data(), keys.size()));
    }

    int ExitStatus() {
        for (int tries = 0; tries < 100; ++tries) {
            int status = 0;
            if (::waitpid(m_child, &status, WNOHANG) == m_child) {
                m_child = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            char drain[4096];
            if (::read(m_terminal, drain, sizeof(drain)) < 0) std::this_thread::sleep_for(50ms);
        }
        return -1;
    }

    qvnrt::test::TempDir work;
    qvnrt::test::TempDir home;
    pid_t m_child = -1;
    int m_terminal = -1;
    std::string m_output;
};

// A number as the price renderer writes it: decimals, or a whole and a fraction.
const std::string kPrice = R"([0-9]+(\.[0-9]+| [0-9]+/[0-9]+)?)";

TEST_F(GlanceTerminal, ShowsTheQuoteLiveAndFollowsATypedSymbol) {
    Start("ACME");
    const std::string screen = WaitFor(std::regex("Symbol: ACME[^\\n]*\\n[\\s\\S]*Last: " + kPrice +
                                                  "[\\s\\S]*Change: [+-]?" + kPrice));
    EXPECT_NE(std::string::npos, screen.find("Exchange: ")) << screen;

    Type("ust10y\r");
    WaitFor(std::regex("Symbol: UST10Y[\\s\\S]*Last: [0-9]+ [0-9]+/32"));

    Type("q");
    EXPECT_EQ(0, ExitStatus());
}

}  // namespace
