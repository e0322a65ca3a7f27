// Record files seen from two processes, and growth that the system refuses. Each case
// forks, so that a second process, a file-size limit or a private tmpfs stays away from the
// test runner itself.
#include "store/cache.h"

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <string>

#include <gtest/gtest.h>

#include "store/StoreTestSupport.h"
#include "support/TempDir.h"

using qvnrt::test::ClogCapture;
using qvnrt::test::RunInChild;

namespace {

struct Quote {
    Quote() : value(-1) {}
    int32_t value, tail;
};
using QuoteCache = RTSecCache::cache<Quote>;
constexpr uint32_t kSignature = 0x9432e105;
constexpr unsigned FileBytes(unsigned capacity) {
    return 4096 + capacity * sizeof(Quote);
}

// Fills 1024 slots, then expects the growth to 2048 to be refused: allocate gives null and
// says so once, and everything stored stays in the view and in the file.
std::string FillUntilGrowthFails(const std::string& path) {
    ClogCapture log;
    {
        QuoteCache file(kSignature);
        if (!file.open(path.c_str())) return "cannot open";
        for (int i = 0; i < 1024; ++i) file.allocate()->value = i;
        void* const view = file.view();
        if (file.allocate() || file.allocate()) return "growth did not fail";
        if (log.text() != "\n !!! Cache : Can't grow " + file.fullPath() + " past 1024 records\n")
            return "logged: " + log.text();
        if (file.view() != view || file.mappedSize() != FileBytes(1024) ||
            file.fileSize() != FileBytes(1024) || file.header()->capacity != 1024)
            return "the old view and size were not kept";
        for (int i = 0; i < 1024; ++i)  // every page is still backed: no SIGBUS here
            if (static_cast<Quote*>(file.slot(i))->value != i) return "record lost";
    }
    QuoteCache again(kSignature);
    if (!again.open(path.c_str()) || static_cast<Quote*>(again.slot(1023))->value != 1023)
        return "the records did not reach the file";
    return log.text().find("Lock count") == std::string::npos ? "" : "not closed cleanly";
}

}  // namespace

TEST(cacheProcesses, ASecondProcessReportsTheHoldersLockCountAndNothingCrashes) {
    qvnrt::test::TempDir dir;
    const std::string path = dir.file("Sec1.dat");
    QuoteCache holder(kSignature);
    ASSERT_TRUE(holder.open(path.c_str()));
    holder.allocate()->value = 1;

    const std::string report = RunInChild([&]() -> std::string {
        ClogCapture log;
        QuoteCache second(kSignature);
        if (!second.open(path.c_str()) || second.hasFileHandle()) return "did not attach";
        if (log.text() != "\n !!! Cache : " + path + " Lock count 1") return log.text();
        // It sees one page and no file size, so it restamps the shared header as too short.
        if (second.mappedSize() != 4096 || second.header()->capacity != 0) return "no restamp";
        // Its growth attaches to the holder's 1024 slots, and can go no further.
        for (int i = 0; i < 1024; ++i) second.allocate()->value = 2;
        return second.allocate() ? "mapped past the holder's file" : "";
    });
    EXPECT_EQ("", report);
    // One view for both: the child's writes, its header and its close are the holder's too.
    EXPECT_EQ(2, static_cast<Quote*>(holder.slot(0))->value);
    EXPECT_EQ(0, holder.header()->lockCount);
    EXPECT_NE(nullptr, holder.allocate());
}

TEST(cacheProcesses, GrowthBeyondTheFileSizeLimitFailsWithoutLosingAnything) {
    qvnrt::test::TempDir dir;
    const std::string report = RunInChild([&] {
        ::signal(SIGXFSZ, SIG_IGN);  // the limit raises it as well as failing the call
        const struct rlimit limit = {FileBytes(1024), FileBytes(1024)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        return FillUntilGrowthFails(dir.file("Sec2.dat"));
    });
    EXPECT_EQ("", report);
}

TEST(cacheProcesses, GrowthOnAFullTmpfsFailsWithoutLosingAnything) {
    qvnrt::test::TempDir dir;
    const std::string report = RunInChild([&]() -> std::string {
        // A private mount namespace, so that the small tmpfs is this child's alone.
        if (::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
            return "SKIP: no mount namespace";
        if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("tmpfs", dir.path().c_str(), "tmpfs", 0, "size=16k") != 0)
            return "SKIP: cannot mount a tmpfs";
        return FillUntilGrowthFails(dir.file("Sec2.dat"));  // 12 KiB fits, 20 KiB does not
    });
    if (report.rfind("SKIP:", 0) == 0) GTEST_SKIP() << report;
    EXPECT_EQ("", report);
}
