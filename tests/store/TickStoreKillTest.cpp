// A writer of a long tick history killed with SIGKILL at random moments: the next open finds
// every block the writer had reported committed, intact, and asks only for the rest.

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <random>

#include "store/IntradayTestSupport.h"

namespace {

using namespace qvnrt::test;
using RTSecCache::BlockHeader;
using RTSecCache::CompoundFile;
using RTSecCache::TickStore;

constexpr uint32_t kStart = 1763000000;
constexpr uint32_t kSpan = 10000;  // seconds per request of the writer
constexpr int kSpans = 400;
constexpr uint32_t kEnd = kStart + kSpan * kSpans - 1;

// The driver's answer to span k: a tick every 2 seconds down to one second above its start,
// so that its end proves [start, start] empty and commits.
std::vector<TICKREC> SpanTicks(int k) {
    const uint32_t to = kStart + kSpan * static_cast<uint32_t>(k + 1) - 1;
    return TicksDown(to, static_cast<int>(kSpan / 2), 2);
}

[[noreturn]] void Writer(const std::string& path, int report) {
    auto file = CompoundFile::open(path);
    if (!file) _exit(2);
    RecordingLink link;
    TickStore store(*file, link);
    uint32_t handle = 1;
    int owner = 0;
    for (int k = 0; k < kSpans; ++k) {
        const uint32_t from = kStart + kSpan * static_cast<uint32_t>(k);
        RecordingRequester driver(link, &owner, handle);
        store.request(&owner, RequestTime(from), RequestTime(from + kSpan - 1), 0, driver);
        std::vector<TICKREC> ticks = SpanTicks(k);
        store.onDriverReply(link.handles[&owner], static_cast<int>(ticks.size()), 0, RTREC_TICKREC,
                            ticks.data());
        store.onDriverReply(link.handles[&owner], 0, 0, RTREC_TICKREC, nullptr);  // commits
        store.unsubscribe(&owner, nullptr);
        link.handles[&owner] = 0;
        if (write(report, &k, sizeof(k)) != sizeof(k)) _exit(3);
    }
    _exit(0);
}

TEST(TickStoreKill, EveryReportedBlockSurvivesAndOnlyTheRestIsAskedAgain) {
    std::mt19937 random(std::random_device{}());
    for (int run = 0; run < 6; ++run) {
        TempDir dir;
        ManualClock clock{kStart + 86400};
        RTSecCache::Store().configure(true, dir.path().c_str(), 5);
        RTSecCache::Store().refreshClock();
        const std::string path = dir.file("K.tik");
        int pipeEnds[2];
        ASSERT_EQ(0, pipe(pipeEnds));
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(pipeEnds[0]);
            Writer(path, pipeEnds[1]);
        }
        close(pipeEnds[1]);
        usleep(std::uniform_int_distribution<useconds_t>(20000, 400000)(random));
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        int reported = -1;
        for (int k; read(pipeEnds[0], &k, sizeof(k)) == sizeof(k);) reported = k;
        close(pipeEnds[0]);
        SCOPED_TRACE("run " + std::to_string(run) + ", spans reported: " + std::to_string(reported + 1));

        auto file = CompoundFile::open(path);
        ASSERT_TRUE(file);
        RecordingLink link;
        TickStore store(*file, link);
        for (int k = 0; k <= reported; ++k) {
            const std::vector<TICKREC> ticks = SpanTicks(k);
            const uint32_t first = ticks.back().time;
            char name[16];
            std::snprintf(name, sizeof(name), "%x", first);
            std::vector<unsigned char> block;
            ASSERT_TRUE(file->read("T", name, block)) << "span " << k;
            ASSERT_EQ(sizeof(BlockHeader) + ticks.size() * sizeof(TICKREC), block.size());
            EXPECT_EQ(0, std::memcmp(block.data() + sizeof(BlockHeader), ticks.data(),
                                     ticks.size() * sizeof(TICKREC)));
        }
        const uint32_t covered = store.index().empty() ? kStart - 1 : store.index().back().last;
        EXPECT_GE(covered + 1, kStart + kSpan * static_cast<uint32_t>(reported + 1));
        uint32_t handle = 1;
        int owner = 0;
        RecordingRequester driver(link, &owner, handle);
        store.request(&owner, RequestTime(kStart), RequestTime(kEnd), 0, driver);
        if (covered == kEnd) {
            EXPECT_TRUE(driver.asked.empty());
        } else {
            ASSERT_EQ(1u, driver.asked.size());
            EXPECT_EQ(std::make_pair(covered + 1, kEnd), driver.asked[0]);
        }
    }
}

}  // namespace
