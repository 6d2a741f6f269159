#include "platform/linux/MountTable.hpp"

#include <string>

#include <gtest/gtest.h>

namespace tav {
namespace {

TEST(MountTable, KnowsMountsByTheirIdentifiers) {
    const MountTable table(
        "21 1 8:2 / / rw,relatime shared:1 - ext4 /dev/sda2 rw\n"
        "36 21 98:0 /mnt1 /mnt2 rw,noatime master:1 shared:7 propagate_from:2 - ext3 /dev/root rw\n"
        "40 21 0:38 / /proc rw - proc proc rw\n"
        "41 21 8:2 /home /bind ro,relatime - ext4 /dev/sda2 rw\n");
    ASSERT_EQ(table.size(), 4U);
    EXPECT_EQ(table.find(21)->path, "/");
    EXPECT_EQ(table.find(21)->device, "8:2");
    EXPECT_EQ(table.find(36)->path, "/mnt2");
    EXPECT_EQ(table.find(36)->typeName, "ext3");
    EXPECT_TRUE(table.find(36)->hasBlockDevice());
    EXPECT_FALSE(table.find(40)->hasBlockDevice());
    EXPECT_EQ(table.find(41)->path, "/bind");
    EXPECT_EQ(table.find(42), nullptr);
}

TEST(MountTable, WhatTheKernelEscapesComesBack) {
    const MountTable table("1 0 8:1 / /a\\040b\\011c\\012d\\134e\\043 rw - fuse.x\\040y z rw\n"
                           "2 0 8:1 / /\xFF\\377\\47\\8888\\ rw - ext4 x rw\n"
                           "3 0 8:1 / /a\\400\\04 rw - ext4 x rw\n");
    EXPECT_EQ(table.find(1)->path, "/a b\tc\nd\\e#");
    EXPECT_EQ(table.find(1)->typeName, "fuse.x y");
    EXPECT_EQ(table.find(2)->path, "/\xFF\xFF\\47\\8888\\"); // not all of it is an escape
    EXPECT_EQ(table.find(3)->path, "/a\\400\\04");
}

TEST(MountTable, LinesThatAreNoneAreLeftOut) {
    for (const char* const line :
         {"", "\n", "\n\n", " ", "x", "1", "1 ", "1 2 3 4 5 6", "1 2 8:1 / /p rw", "- - - - - -",
          "1 2 8:1 / p rw - ext4 x rw", "x 2 8:1 / /p rw - ext4 x rw",
          "1x 2 8:1 / /p rw - ext4 x rw", "-1 2 8:1 / /p rw - ext4 x rw",
          "99999999999999999999 2 8:1 / /p rw - ext4 x rw", "1 2 8:1 /  rw - ext4 x rw"}) {
        EXPECT_EQ(MountTable(line).size(), 0U) << line;
        const MountTable table(std::string(line) + "\n7 0 8:1 / /p rw - ext4 x rw");
        ASSERT_EQ(table.size(), 1U) << line;
        EXPECT_EQ(table.find(7)->path, "/p");
    }
    const MountTable twice("7 0 8:1 / /a rw - ext4 x rw\n7 0 8:1 / /b rw - ext4 x rw\n");
    EXPECT_EQ(twice.find(7)->path, "/a");
}

} // namespace
} // namespace tav
