// The ordinary user of the machine, in a test that runs as root.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace test_support {

/// The test goes on as the ordinary user of the machine, for as long as this lives.
class OrdinaryUser {
  public:
    OrdinaryUser() {
        constexpr uid_t user = 1000;
        EXPECT_EQ(setgroups(0, nullptr), 0);
        EXPECT_EQ(setegid(user), 0);
        EXPECT_EQ(seteuid(user), 0);
    }
    ~OrdinaryUser() {
        EXPECT_EQ(seteuid(0), 0);
        EXPECT_EQ(setegid(0), 0);
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
};

}  // namespace test_support
