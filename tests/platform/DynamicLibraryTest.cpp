#include "platform/DynamicLibrary.h"

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace qvnrt::platform {
namespace {

// Two builds of one plugin under one file name: one in the directory that QVNRT_APP_DIR
// names (the host directory), one on the test program's run path (dlopen's own search).
constexpr char kPluginName[] = "libqvnplugin.so";

std::string IdentityOf(void* library) {
    using Identity = const char* (*)();
    auto identity = reinterpret_cast<Identity>(GetProcAddress(library, "plugin_identity"));
    return identity ? identity() : std::string("<no entry>");
}

// A bare name is looked for in the host directory, then by the loader's own search, then
// among the installed drivers; a host file that is no library hides nothing.
TEST(DynamicLibrary, BareNamesAreFoundInOrder) {
    test::TempDir emptyHost, junkHost;
    junkHost.write(kPluginName, "not an ELF file");
    const struct {
        std::string hostDir;
        const char* name;
        const char* identity;
    } cases[] = {{QVNPLUGIN_HOST_DIR, kPluginName, "host"},
                 {emptyHost.path(), kPluginName, "search"},
                 {junkHost.path(), kPluginName, "search"},
                 {emptyHost.path(), "libqvninstalled.so", "installed"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.hostDir + " " + c.name);
        ::setenv("QVNRT_APP_DIR", c.hostDir.c_str(), 1);
        void* library = LoadLibrary(c.name);
        ASSERT_NE(nullptr, library) << LastLoadError();
        EXPECT_EQ(c.identity, IdentityOf(library));
        FreeLibrary(library);
    }
}

TEST(DynamicLibrary, PathIsLoadedAsGivenAndFailuresAreExplained) {
    void* library = LoadLibrary(std::string(QVNPLUGIN_HOST_DIR) + "/" + kPluginName);
    ASSERT_NE(nullptr, library) << LastLoadError();
    EXPECT_EQ("host", IdentityOf(library));
    EXPECT_EQ(nullptr, GetProcAddress(library, "no_such_entry"));
    EXPECT_EQ(nullptr, GetProcAddress(library, nullptr));
    EXPECT_EQ(nullptr, GetProcAddress(nullptr, "plugin_identity"));
    FreeLibrary(library);
    FreeLibrary(nullptr);

    test::TempDir host;
    ::setenv("QVNRT_APP_DIR", host.path().c_str(), 1);
    host.write("broken.so", "not an ELF file");
    EXPECT_EQ(nullptr, LoadLibrary("broken.so"));
    // Both attempts are told: the host file that would not load, and the failed search.
    EXPECT_NE(std::string::npos, LastLoadError().find(host.file("broken.so")))
        << LastLoadError();
    EXPECT_EQ(nullptr, LoadLibrary(host.file("missing.so")));
    EXPECT_NE(std::string::npos, LastLoadError().find("missing.so"));
    EXPECT_EQ(nullptr, LoadLibrary(""));
    EXPECT_FALSE(LastLoadError().empty());
}

}  // namespace
}  // namespace qvnrt::platform
