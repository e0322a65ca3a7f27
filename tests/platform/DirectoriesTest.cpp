#include "platform/Directories.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace qvnrt::platform {
namespace {

class DirectoriesTest : public ::testing::Test {
protected:
    void SetUp() override {
        ::unsetenv("QVNRT_HOME");
        ::unsetenv("XDG_CONFIG_HOME");
        ::unsetenv("QVNRT_APP_DIR");
        ::setenv("HOME", root.file("home").c_str(), 1);
    }
    test::TempDir root;
};

TEST_F(DirectoriesTest, ConfigDirectoryPrefersQvnrtHomeThenXdgThenHome) {
    EXPECT_EQ(root.file("home/.config/quorvane"), ConfigDirectory());
    EXPECT_TRUE(FileExists(root.file("home/.config/quorvane")));  // made with its parents

    ::setenv("XDG_CONFIG_HOME", root.file("xdg/").c_str(), 1);
    EXPECT_EQ(root.file("xdg/quorvane"), ConfigDirectory());

    ::setenv("QVNRT_HOME", root.file("own//").c_str(), 1);
    EXPECT_EQ(root.file("own"), ConfigDirectory());
    EXPECT_TRUE(FileExists(root.file("own")));

    ::setenv("QVNRT_HOME", "", 1);  // empty counts as unset
    EXPECT_EQ(root.file("xdg/quorvane"), ConfigDirectory());
}

TEST_F(DirectoriesTest, HostDirectoryIsQvnrtAppDirElseTheProgramsDirectory) {
    const std::string program = HostDirectory();
    ASSERT_FALSE(program.empty());
    EXPECT_TRUE(FileExists(JoinPath(program, "platform_test")));

    ::setenv("QVNRT_APP_DIR", root.file("app/").c_str(), 1);
    EXPECT_EQ(root.file("app"), HostDirectory());
}

}  // namespace
}  // namespace qvnrt::platform
