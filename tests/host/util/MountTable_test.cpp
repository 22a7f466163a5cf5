#include "MountTable.h"

#include <gmock/gmock.h>

using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(MountTable, TheFieldsOfALineArePartedByBlanks)
{
    const std::vector<MountEntry> entries = ParseMountTable(
        "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw,errors=remount-ro\n"
        "24 22 0:40 /sub /mnt ro,nosuid master:2 shared:3 - tmpfs none rw,size=4k\n");
    ASSERT_THAT(entries, SizeIs(2));
    EXPECT_EQ(entries[0].point, "/");
    EXPECT_EQ(entries[0].type, "ext4");
    EXPECT_EQ(entries[0].source, "/dev/sda1");
    EXPECT_EQ(entries[0].superOptions, "rw,errors=remount-ro");
    EXPECT_EQ(entries[1].device, "0:40");
    EXPECT_EQ(entries[1].root, "/sub");
    EXPECT_EQ(entries[1].options, "ro,nosuid");
    EXPECT_EQ(entries[1].source, "none");
}

TEST(MountTable, TheNumberOfADeviceIsThatOfItsText)
{
    EXPECT_EQ(DeviceNumber("253:1048575"), makedev(253, 1048575));
    EXPECT_EQ(DeviceNumber("0:40"), makedev(0, 40));
    for (const char* text : {"", "8", "8:", ":1", "8:x", "8:1x", "-8:1", "8:99999999999"}) {
        EXPECT_EQ(DeviceNumber(text), 0u) << text;
    }
}

TEST(MountTable, EscapedCharactersArePlain)
{
    const std::vector<MountEntry> entries =
        ParseMountTable("25 22 0:41 / /a\\040b\\011c\\012x\\134e\\043 rw - fuse.x a\\040b rw\n");
    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_EQ(entries[0].point, "/a b\tc\nx\\e#");
    EXPECT_EQ(entries[0].source, "a b");
    EXPECT_EQ(UnescapedMountName("\\04"), "\\04");
    EXPECT_EQ(UnescapedMountName("\\089\\"), "\\089\\");
}

TEST(MountTable, AnEmptySourceIsAnEmptyField)
{
    const std::vector<MountEntry> entries = ParseMountTable("25 22 0:41 / /mnt rw - tmpfs  rw,size=4k\n");
    ASSERT_THAT(entries, SizeIs(1));
    EXPECT_EQ(entries[0].source, "");
    EXPECT_EQ(entries[0].superOptions, "rw,size=4k");
}

TEST(MountTable, LinesOfAnotherFormAreLeftOut)
{
    EXPECT_THAT(ParseMountTable("truncated\n22 1 8:1 / / rw\n22 1 8:1 / / rw - ext4\n\n - - - \n"), IsEmpty());
    EXPECT_THAT(ParseMountTable(""), IsEmpty());
}

TEST(MountTable, TheLastMountAtAPlaceIsSeen)
{
    const std::vector<MountEntry> entries = ParseMountTable(
        "24 22 8:2 / /boot rw - ext4 /dev/sda2 rw\n"
        "25 22 8:3 / /boot rw - ext4 /dev/sda3 rw\n");
    ASSERT_NE(FindMount(entries, "/boot"), nullptr);
    EXPECT_EQ(FindMount(entries, "/boot")->source, "/dev/sda3");
    EXPECT_EQ(FindMount(entries, "/bo"), nullptr);
}
