// The security cache: write-through of every field, reads, offline replay, sharing,
// persistence and growth.
#include <sys/wait.h>
#include <csignal>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qvnrt/RTSecurity.h>

#include "store/SecCache.h"
#include "store/SecCacheEntry.h"
#include "store/StoreTestSupport.h"
#include "support/FakeSession.h"
#include "support/RecordingSecurity.h"

namespace {

using qvnrt::test::ClogCapture;
using qvnrt::test::RecordingSecurity;

enum class Kind { Text, Byte, U16, S16, I32, Float };
struct Place {
    int field;
    int file;  // 1 or 2
    int offset;
    Kind kind;
};

// Where each field lies in the records, as the file format documents it.
const Place kPlaces[] = {
    {2, 1, 20, Kind::Text},    {3, 1, 52, Kind::Byte},    {7, 1, 53, Kind::Byte},
    {8, 1, 54, Kind::Byte},    {58, 1, 55, Kind::Byte},   {10, 1, 96, Kind::Float},
    {11, 1, 100, Kind::Float}, {12, 1, 104, Kind::Float}, {5, 1, 112, Kind::Float},
    {15, 1, 116, Kind::I32},   {27, 1, 120, Kind::Float}, {28, 1, 124, Kind::Float},
    {49, 1, 128, Kind::Byte},  {50, 1, 129, Kind::Byte},  {51, 1, 130, Kind::Byte},
    {52, 1, 131, Kind::Byte},  {4, 1, 132, Kind::Float},  {16, 1, 136, Kind::I32},
    {57, 1, 140, Kind::I32},   {9, 1, 144, Kind::Byte},   {21, 1, 146, Kind::U16},
    {26, 1, 148, Kind::I32},   {6, 1, 152, Kind::I32},    {13, 1, 156, Kind::Float},
    {14, 1, 160, Kind::Float}, {19, 1, 164, Kind::Byte},  {20, 1, 165, Kind::Byte},
    {17, 1, 166, Kind::U16},   {18, 1, 168, Kind::U16},   {59, 1, 170, Kind::S16},
    {33, 1, 176, Kind::Float}, {31, 1, 180, Kind::Float}, {53, 1, 184, Kind::Float},
    {32, 1, 188, Kind::Float}, {55, 1, 192, Kind::Float}, {34, 1, 196, Kind::Float},
    {35, 1, 200, Kind::Byte},  {36, 1, 201, Kind::Byte},  {38, 1, 202, Kind::Byte},
    {54, 1, 204, Kind::Float}, {56, 1, 208, Kind::I32},   {46, 1, 212, Kind::Byte},
    {41, 2, 4, Kind::Text},    {42, 2, 24, Kind::Text},   {47, 2, 44, Kind::I32},
    {37, 2, 48, Kind::Float},  {40, 2, 52, Kind::Float},  {39, 2, 56, Kind::I32},
    {43, 2, 60, Kind::I32},    {44, 2, 64, Kind::Byte},   {45, 2, 66, Kind::U16},
    {48, 2, 68, Kind::I32},
};

int32_t IntValue(const Place& p) {
    switch (p.kind) {
        case Kind::Byte: return 100 + p.field;
        case Kind::U16: return 40000 + p.field;
        case Kind::S16: return -10 * p.field;
        default: return 1000 * p.field + 7;
    }
}
float FloatValue(int field) { return static_cast<float>(field) + 0.25f; }
std::string TextValue(int field) { return "T" + std::to_string(field); }

const RTSecurityType kStock = static_cast<RTSecurityType>(1);

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

class SecCacheTest : public ::testing::Test {
protected:
    void SetUp() override {
        RTServer::InitCache(true, session.cacheDir.path().c_str(), 5, 0);
        ASSERT_TRUE(session.Connect());
    }

    // Sends one field the way a driver does, with the data type of its kind.
    void Send(unsigned long handle, const Place& p) {
        if (p.kind == Kind::Text) {
            session.fake.fireSecurityText(handle, p.field, TextValue(p.field));
        } else if (p.kind == Kind::Float) {
            if (p.field == 4) {
                session.fake.fireSecurityDouble(handle, 4, FloatValue(4));
            } else {
                session.fake.fireSecurityFloat(handle, p.field, FloatValue(p.field));
            }
        } else {
            session.fake.fireSecurityInt(handle, p.field, IntValue(p));
        }
    }

    // The slot of `symbol` in Sec1.dat as it is on disk, or -1.
    int SlotOf(const std::string& sec1, const std::string& symbol) {
        for (size_t at = 4096; at + 260 <= sec1.size(); at += 260) {
            if (std::strcmp(sec1.data() + at, symbol.c_str()) == 0) {
                return static_cast<int>((at - 4096) / 260);
            }
        }
        return -1;
    }

    // Opens `symbol` and has the driver send its name (field 2) in one batch.
    void OpenWithName(RTSecurity& security, const char* symbol, const char* name) {
        security.OpenSecurity(symbol, kStock, 1, 0);
        session.fake.fireSecurityText(security.m_request, 2, name);
        session.fake.fireSecurityEnd(security.m_request);
    }

    // Reads `symbol`'s name offline after the session is gone; returns what clog was told.
    std::string ReadNameOffline(RecordingSecurity& reader, const char* symbol) {
        ClogCapture log;
        RTServer::Disconnect();
        char fields[] = {2, 0};
        reader.ReqSecurity(symbol, fields, kStock, 1, 0);
        return log.text();
    }

    std::string CacheFile(const char* name) { return session.cacheDir.file(name); }

    qvnrt::test::FakeSession session;
};

TEST_F(SecCacheTest, EveryFieldIsStoredAtItsPlaceAndReadBack) {
    RecordingSecurity security;
    std::string allFields;
    for (const Place& p : kPlaces) allFields += static_cast<char>(p.field);
    security.ReqSecurity("IBM", allFields.data(), kStock, 1, 0);
    const unsigned long handle = security.m_request;
    for (const Place& p : kPlaces) Send(handle, p);
    session.fake.fireSecurityEnd(handle);
    ASSERT_TRUE(security.IsOpen());

    for (const Place& p : kPlaces) {
        SCOPED_TRACE("field " + std::to_string(p.field));
        long error = 99;
        switch (p.kind) {
            case Kind::Text:
                EXPECT_STREQ(TextValue(p.field).c_str(), security.GetSecString(p.field, &error));
                break;
            case Kind::Float:
                EXPECT_EQ(FloatValue(p.field), security.GetSecFloat(p.field, &error));
                break;
            default:
                EXPECT_EQ(IntValue(p) & (p.kind == Kind::Byte ? 0xFF : -1),
                          security.GetSecInt(p.field, &error));
        }
        EXPECT_EQ(0, error);
    }
    long error = 0;
    EXPECT_EQ(15007.0f, security.GetSecFloat(15, &error));  // the integer, as a float
    EXPECT_STREQ("IBM", security.GetSecString(1, &error));

    // The bytes on disk, at the documented offsets and widths.
    const std::string sec1 = ReadFile(CacheFile("Sec1.dat"));
    const std::string sec2 = ReadFile(CacheFile("Sec2.dat"));
    const int slot = SlotOf(sec1, "IBM");
    ASSERT_GE(slot, 0);
    const char* record1 = sec1.data() + 4096 + slot * 260;
    int32_t index2 = -1;
    std::memcpy(&index2, record1 + 224, 4);
    ASSERT_GE(index2, 0);
    ASSERT_LE(4096 + (index2 + 1) * 72, static_cast<int>(sec2.size()));
    const char* record2 = sec2.data() + 4096 + index2 * 72;
    for (const Place& p : kPlaces) {
        SCOPED_TRACE("field " + std::to_string(p.field));
        const char* at = (p.file == 1 ? record1 : record2) + p.offset;
        switch (p.kind) {
            case Kind::Text: EXPECT_STREQ(TextValue(p.field).c_str(), at); break;
            case Kind::Float: {
                float value;
                std::memcpy(&value, at, 4);
                EXPECT_EQ(FloatValue(p.field), value);
                break;
            }
            case Kind::Byte: EXPECT_EQ(IntValue(p) & 0xFF, static_cast<unsigned char>(*at)); break;
            case Kind::U16:
            case Kind::S16: {
                int16_t value;
                std::memcpy(&value, at, 2);
                EXPECT_EQ(static_cast<int16_t>(IntValue(p)), value);
                break;
            }
            case Kind::I32: {
                int32_t value;
                std::memcpy(&value, at, 4);
                EXPECT_EQ(IntValue(p), value);
                break;
            }
        }
    }
    uint64_t presence;
    std::memcpy(&presence, record1 + 216, 8);
    for (const Place& p : kPlaces) EXPECT_TRUE(presence & (uint64_t{1} << p.field)) << p.field;
    EXPECT_FALSE(presence & 1u);  // not closed
}

// Only field 4 (a float) was received. Fields outside the presence bits leave the error alone.
TEST_F(SecCacheTest, ReadErrors) {
    RTSecurity security;
    security.OpenSecurity("IBM", kStock, 1, 0);
    session.fake.fireSecurityDouble(security.m_request, 4, 12.5);
    session.fake.fireSecurityEnd(security.m_request);
    const struct {
        int field;
        char read;  // 'i' GetSecInt, 'f' GetSecFloat, 's' GetSecString
        long error;
    } kCases[] = {{9, 'i', -4}, {4, 'i', -4}, {4, 's', -4}, {22, 'i', -4}, {60, 'i', 99},
                  {200, 'f', 99}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(std::to_string(c.field) + c.read);
        long error = 99;
        if (c.read == 's') {
            EXPECT_EQ(nullptr, security.GetSecString(c.field, &error));
        } else if (c.read == 'f') {
            EXPECT_EQ(0.0f, security.GetSecFloat(c.field, &error));
        } else {
            EXPECT_EQ(0, security.GetSecInt(c.field, &error));
        }
        EXPECT_EQ(c.error, error);
    }
}

TEST_F(SecCacheTest, RejectionHidesEverythingUntilTheNextBatch) {
    RTSecurity security;
    OpenWithName(security, "IBM", "name");
    ASSERT_TRUE(security.IsOpen());

    session.fake.fireSecurity(security.m_request, -1, 0, 0, nullptr);  // rejected
    EXPECT_FALSE(security.IsOpen());
    long error = 0;
    EXPECT_EQ(nullptr, security.GetSecString(2, &error));
    EXPECT_EQ(-4, error);

    security.OpenSecurity("IBM", kStock, 1, 0);
    session.fake.fireSecurityFloat(security.m_request, 5, 2.5f);
    session.fake.fireSecurityEnd(security.m_request);
    EXPECT_TRUE(security.IsOpen());
    EXPECT_EQ(2.5f, security.GetSecFloat(5, &error));
    EXPECT_EQ(nullptr, security.GetSecString(2, &error));  // only the new fields are back
    EXPECT_EQ(-4, error);
}

TEST_F(SecCacheTest, LongSymbolsAreCutTo19Characters) {
    RTSec_Base security;
    ASSERT_TRUE(security.OpenRTSec("ABCDEFGHIJKLMNOPQRSTUVWXYZ"));
    EXPECT_STREQ("ABCDEFGHIJKLMNOPQRS", security.GetSecString(1, nullptr));
    RTSec_Base cut;
    ASSERT_TRUE(cut.OpenRTSec("ABCDEFGHIJKLMNOPQRS"));
    EXPECT_EQ(security.m_pCacheEntry, cut.m_pCacheEntry);
    RTSec_Base other;
    ASSERT_TRUE(other.OpenRTSec("ABCDEFGHIJKLMNOPQR"));
    EXPECT_NE(security.m_pCacheEntry, other.m_pCacheEntry);
}

TEST_F(SecCacheTest, TwoSecuritiesShareOneEntry) {
    auto first = std::make_unique<RTSecurity>();
    RTSecurity second;
    first->OpenSecurity("IBM", kStock, 1, 0);
    second.OpenSecurity("IBM", kStock, 1, 0);
    ASSERT_EQ(first->m_pCacheEntry, second.m_pCacheEntry);
    EXPECT_EQ(2, second.m_pCacheEntry->m_refCount);
    session.fake.fireSecurityText(first->m_request, 2, "shared");
    session.fake.fireSecurityEnd(first->m_request);
    first.reset();
    EXPECT_EQ(1, second.m_pCacheEntry->m_refCount);
    EXPECT_STREQ("shared", second.GetSecString(2, nullptr));
}

TEST_F(SecCacheTest, OfflineOpenReplaysTheRecord) {
    {
        RTSecurity writer;
        writer.OpenSecurity("IBM", kStock, 1, 0);
        session.fake.fireSecurityInt(writer.m_request, 8, 3);
        session.fake.fireSecurityText(writer.m_request, 2, "Machines");
        session.fake.fireSecurityFloat(writer.m_request, 5, 99.5f);
        session.fake.fireSecurityDouble(writer.m_request, 4, 101.25);
        session.fake.fireSecurityEnd(writer.m_request);
    }
    RTServer::Disconnect();

    RecordingSecurity reader;
    char fields[] = {8, 2, 5, 4, 9, 0};  // 9 was never received: skipped
    reader.ReqSecurity("IBM", fields, kStock, 1, 0);
    EXPECT_EQ(-1, reader.GetLastError());
    ASSERT_EQ(4u, reader.fields.size());
    EXPECT_EQ(8, reader.fields[0].field);
    EXPECT_EQ(RTDATA_INT, reader.fields[0].dataType);
    EXPECT_EQ(RTDATA_TEXT, reader.fields[1].dataType);
    EXPECT_EQ(RTDATA_FLOAT, reader.fields[2].dataType);
    EXPECT_EQ(4, reader.fields[3].field);
    EXPECT_EQ(RTDATA_DOUBLE, reader.fields[3].dataType);
    EXPECT_EQ(1, reader.changed);
    EXPECT_EQ(3, reader.m_exchange);
    EXPECT_STREQ("Machines", reader.m_strName);
    EXPECT_EQ(101.25f, reader.m_lastTrade);

    // An empty field string still ends with OnSecChanged.
    RecordingSecurity empty;
    empty.SetDefaultFields("");
    empty.ReqSecurity("IBM", nullptr, kStock, 1, 0);
    EXPECT_TRUE(empty.fields.empty());
    EXPECT_EQ(1, empty.changed);
    EXPECT_EQ(1, session.fake.count("clientReqSecurities"));  // the writer's only
}

TEST_F(SecCacheTest, OfflineOpenOfAClosedRecordCallsOnSecClosed) {
    {
        RTSecurity writer;
        writer.OpenSecurity("BAD", kStock, 1, 0);
        session.fake.fireSecurity(writer.m_request, -2, 0, 0, nullptr);
    }
    RTServer::Disconnect();
    RecordingSecurity reader;
    reader.OpenSecurity("BAD", kStock, 1, 0);
    EXPECT_EQ(1, reader.closed);
    EXPECT_EQ(0, reader.changed);
}

TEST_F(SecCacheTest, RecordSurvivesTheProcess) {
    // A child process writes through the cache and ends; this one then reads offline.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        RTSecurity writer;
        OpenWithName(writer, "KEPT", "from the child");
        writer.CloseSecurity();
        std::exit(0);  // runs the unload: the files are flushed and their lock released
    }
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);

    RecordingSecurity reader;
    EXPECT_EQ("", ReadNameOffline(reader, "KEPT"));  // closed cleanly: no lock count to report
    EXPECT_STREQ("from the child", reader.m_strName);
}

TEST_F(SecCacheTest, GrowthKeepsEveryOpenRecordValid) {
    std::vector<std::unique_ptr<RTSec_Base>> open;
    for (int i = 0; i < 1100; ++i) {
        open.push_back(std::make_unique<RTSec_Base>());
        ASSERT_TRUE(open.back()->OpenRTSec(("S" + std::to_string(i)).c_str()));
    }
    for (int i = 0; i < 1100; ++i) {
        ASSERT_STREQ(("S" + std::to_string(i)).c_str(), open[i]->GetSecString(1, nullptr));
    }
    const std::string sec1 = ReadFile(CacheFile("Sec1.dat"));
    EXPECT_EQ(4096u + 2048u * 260u, sec1.size());
}

TEST_F(SecCacheTest, CacheThatCannotBeMappedTurnsItselfOff) {
    session.cacheDir.write("file", "not a directory");
    RTServer::InitCache(true, session.cacheDir.file("file/cache").c_str(), 5, 0);
    ClogCapture log;
    RTSec_Base first, second;
    EXPECT_FALSE(first.OpenRTSec("IBM"));
    EXPECT_FALSE(second.OpenRTSec("MSFT"));
    const std::string text = log.text();
    EXPECT_FALSE(RTServer::IsCacheEnabled());
    const std::string notice = "disabled for this session";
    ASSERT_NE(std::string::npos, text.find(notice));
    EXPECT_EQ(text.find(notice), text.rfind(notice));  // said once
    long error = 0;
    EXPECT_EQ(0, first.GetSecInt(3, &error));
    EXPECT_EQ(-2, error);
}

TEST_F(SecCacheTest, AnEmptySymbolGetsNoRecord) {
    RTSecurity security;
    security.ReqSecurity(nullptr, nullptr, kStock, 1, 0);
    EXPECT_EQ(nullptr, security.m_pCacheEntry);
    RTSec_Base other;
    EXPECT_FALSE(other.OpenRTSec(""));
    EXPECT_TRUE(other.OpenRTSec("IBM"));  // the cache itself is fine
}

TEST_F(SecCacheTest, NameNeedsAnOpenRecordAndMayFillTheBuffer) {
    RTSecurity security;
    OpenWithName(security, "IBM", "ABCDEFGH");
    char buffer[8];
    std::memset(buffer, 'z', sizeof(buffer));
    long error = 99;
    // The name fills the buffer: copied without a terminator, and its whole length returned.
    EXPECT_EQ(8, security.GetSecName(buffer, 4, &error));
    EXPECT_EQ(0, error);
    EXPECT_EQ(0, std::memcmp(buffer, "ABCDz", 5));
    // The description always terminates at buffer[length] and returns what stands there.
    EXPECT_EQ(4, security.GetSecCurrDesc(buffer, 4, &error));
    EXPECT_STREQ("ABCD", buffer);

    session.fake.fireSecurity(security.m_request, -1, 0, 0, nullptr);  // closed: not open
    EXPECT_EQ(0, security.GetSecName(buffer, 4, &error));
    EXPECT_EQ(-2, error);
    EXPECT_EQ(4, security.GetSecCurrDesc(buffer, 4, &error));  // still the object's name
    EXPECT_EQ(0, error);
}

// The start-up scan over a file written by hand: slots in use and free ones interleaved,
// stale links in the free ones, and a key that runs to the end of its field.
TEST_F(SecCacheTest, StartUpRebuildsTheFreeListInIndexOrderAndEndsEveryKey) {
    const std::vector<std::string> slots = {"AAA", "", "BBBBBBBBBBBBBBBBBBBBBBBB", "", "", "CCC"};
    std::vector<RTSecCache::SecData1> records(slots.size());
    for (size_t i = 0; i < slots.size(); ++i) {
        std::memset(&records[i], 0, sizeof(records[i]));
        std::memcpy(records[i].symbol, slots[i].data(), std::min(slots[i].size(), size_t{20}));
        records[i].tikSize = 99;  // a stale link in the free slots
    }
    RTSecCache::CacheFileHeader header = {};
    header.signature = RTSecCache::kSec1Signature;
    header.version = 1;
    header.capacity = static_cast<int32_t>(slots.size());
    {
        std::ofstream out(session.cacheDir.file("Sec1.dat"), std::ios::binary);
        out.write(reinterpret_cast<const char*>(&header), sizeof(header));
        out.write(reinterpret_cast<const char*>(records.data()),
                  static_cast<std::streamsize>(records.size() * sizeof(records[0])));
    }
    RTSecCache::SecCache cache;
    ASSERT_TRUE(cache.ensureOpen());

    EXPECT_EQ(3, cache.header()->freeCount);
    EXPECT_EQ(1, cache.header()->freeHead);
    EXPECT_EQ(3, cache.link(1));
    EXPECT_EQ(4, cache.link(3));
    EXPECT_EQ(3u, cache.map().size());
    for (const char* symbol : {"AAA", "BBBBBBBBBBBBBBBBBBB", "CCC"}) {
        EXPECT_TRUE(cache.map().find(symbol)) << symbol;
    }
    // Taking a slot takes the head and counts it: a count left behind would hand the last
    // slot's stale link out as a free slot.
    ASSERT_NE(nullptr, cache.allocate());
    EXPECT_EQ(2, cache.header()->freeCount);
    EXPECT_EQ(3, cache.header()->freeHead);
}

// A second process on the directory of a running one: it says so and runs without a cache,
// and the first one's records are as it left them.
TEST_F(SecCacheTest, ASecondProcessOnTheDirectoryRunsWithItsCacheOff) {
    int toParent[2], toChild[2];
    ASSERT_EQ(0, ::pipe(toParent));
    ASSERT_EQ(0, ::pipe(toChild));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        RTSecurity holder;
        OpenWithName(holder, "HELD", "the holder's");
        char go = 0;
        const bool synced = ::write(toParent[1], "r", 1) == 1 && ::read(toChild[0], &go, 1) == 1;
        const char* name = holder.GetSecString(2, nullptr);
        std::_Exit(synced && name && std::strcmp(name, "the holder's") == 0 ? 0 : 3);
    }
    char ready = 0;
    ASSERT_EQ(1, ::read(toParent[0], &ready, 1));
    ClogCapture log;
    RTSec_Base second;
    const bool opened = second.OpenRTSec("OTHER");
    ASSERT_EQ(1, ::write(toChild[1], "g", 1));
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));

    EXPECT_FALSE(opened);
    EXPECT_FALSE(RTServer::IsCacheEnabled());
    EXPECT_NE(std::string::npos, log.text().find("in use by another process"));
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(-1, SlotOf(ReadFile(CacheFile("Sec1.dat")), "OTHER"));
}

// The holder killed outright: the next process takes the directory at once, reports the
// unclean file, and finds what the holder had stored.
TEST_F(SecCacheTest, AKilledHoldersDirectoryIsTakenWithItsData) {
    int ready[2];
    ASSERT_EQ(0, ::pipe(ready));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        RTSecurity holder;
        OpenWithName(holder, "KILLED", "stored before the kill");
        if (::write(ready[1], "r", 1) != 1) std::_Exit(3);
        for (;;) ::pause();
    }
    char byte = 0;
    ASSERT_EQ(1, ::read(ready[0], &byte, 1));
    ASSERT_EQ(0, ::kill(child, SIGKILL));
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));

    RecordingSecurity reader;
    EXPECT_NE(std::string::npos, ReadNameOffline(reader, "KILLED").find("Lock count 1"));
    EXPECT_TRUE(RTServer::IsCacheEnabled());
    EXPECT_STREQ("stored before the kill", reader.m_strName);
}

}  // namespace
