// SPDX-License-Identifier: MIT
// What one pass over the devices collects.
#include "collector_fixture.hpp"

#include <cstring>
#include <filesystem>

namespace nimba::test {
namespace {

using PageTablePass = CollectorTest;

TEST_F(PageTablePass, OverNoDevicesCollectsNothing)
{
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(output_, "");
}

TEST_F(PageTablePass, DoesNotLookAtTheDevicesOfNoProcess)
{
    driver_.list_device("00000000");
    driver_.list_device("02000000");
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_TRUE(devices_.empty());
    EXPECT_EQ(output_, "");
    EXPECT_EQ(ps_.take_calls(), "");
}

TEST_F(PageTablePass, TakesEveryOtherNameForADevice)
{
    const Texts names{"0000000", "000000000", "0200000", "020000000", "01000000",
                      "2000000", ".hidden",   "...",     "02000000 ", "a device"};
    int pid = 100;
    for (const std::string& name : names) {
        add(name, std::to_string(++pid));
    }
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(),
              (Texts{"101: process 101", "102: process 102", "103: process 103", "104: process 104",
                     "105: process 105", "106: process 106", "107: process 107", "108: process 108",
                     "109: process 109", "110: process 110"}));
}

TEST_F(PageTablePass, KeepsTheOrderOfTheListing)
{
    add("3", "103");
    add("1", "101");
    driver_.list_device("00000000");
    add("2", "102");
    collect_once();
    EXPECT_EQ(processes(), (Texts{"103: process 103", "101: process 101", "102: process 102"}));
    EXPECT_EQ(ps_.take_calls(), "-p 103 -o comm=\n-p 101 -o comm=\n-p 102 -o comm=\n");
    EXPECT_EQ(output_, "");
}

TEST_F(PageTablePass, CollectsAllThatTheDumpShows)
{
    driver_.add_device("1", "handle = 1\npid = 101\n",
                       "0:2: entry addr:10000000, buffer:pt0\n"
                       "0:5 Snoop:1 Segment:2 LargePage:1 Addr:40000000\n"
                       "1:1024: entry addr:10001000, buffer:pt1\n"
                       "1:7 Snoop:0 Segment:3 LargePage:1 Addr:200000\n"
                       "1:8 Snoop:0 Segment:4 LargePage:1 Addr:400000\n"
                       "2:524288: entry addr:10002000, buffer:pt2\n"
                       "2:17 Snoop:1 Segment:0 LargePage:0 Addr:1a2b3000\n"
                       "2:18 Snoop:0 Segment:1 LargePage:0 Addr:1a2b4000\n"
                       "2:524289: entry addr:10003000, buffer:pt2b\n"
                       "2:0 Snoop:1 Segment:2 LargePage:16 Addr:1a2c0000\n"
                       "1:1025: entry addr:10004000, buffer:pt1b\n");
    ps_.answer("101", "viewer\n");
    collect_once();
    EXPECT_EQ(status_, 0);
    ASSERT_EQ(devices_.size(), 1U);
    const data_vectors& device = devices_.front();
    EXPECT_STREQ(device.pid, "101");
    EXPECT_STREQ(device.app_name, "viewer");
    EXPECT_EQ(device.note, "");
    EXPECT_EQ(in_short(device.pt_level0), (Texts{"0:2 10000000 pt0"}));
    EXPECT_EQ(in_short(device.pt_level1), (Texts{"1:1024 10001000 pt1", "1:1025 10004000 pt1b"}));
    EXPECT_EQ(in_short(device.pt_level2),
              (Texts{"2:524288 10002000 pt2", "2:524289 10003000 pt2b"}));
    EXPECT_EQ(in_short(device.st_level0), (Texts{"0:5 1,2,1 40000000 of 0:2"}));
    EXPECT_EQ(in_short(device.st_level1),
              (Texts{"1:7 0,3,1 200000 of 1:1024", "1:8 0,4,1 400000 of 1:1024"}));
    EXPECT_EQ(in_short(device.st_level2),
              (Texts{"2:17 1,0,0 1a2b3000 of 2:524288", "2:18 0,1,0 1a2b4000 of 2:524288",
                     "2:0 1,2,16 1a2c0000 of 2:524289"}));
}

TEST_F(PageTablePass, KeepsADeviceWithAnEmptyDump)
{
    driver_.add_device("1", "pid = 101\n", "");
    collect_once();
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
    EXPECT_TRUE(devices_.front().pt_level0.empty());
    EXPECT_TRUE(devices_.front().st_level2.empty());
}

TEST_F(PageTablePass, ReadsADeviceOfProcessZeroAndDoesNotKeepIt)
{
    add("1", "101");
    add("2", "0");
    add("3", "103");
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: process 101", "103: process 103"}));
    EXPECT_EQ(ps_.take_calls(), "-p 101 -o comm=\n-p 103 -o comm=\n");

    std::filesystem::remove(driver_.devices() / "2" / "vm_info");
    collect_once();
    EXPECT_EQ(status_, -1);
}

TEST_F(PageTablePass, DoesNotKeepADeviceWhoseProcessIsNamedZero)
{
    add("1", "101");
    add("2", "102");
    add("3", "103");
    add("4", "104");
    add("5", "105");
    ps_.answer("101", "0\n");
    ps_.answer("102", "00\n");
    ps_.answer("103", "0 \n");
    ps_.answer("104", "0");
    ps_.answer("105", "0\n\n");
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"102: 00", "103: 0 ", "105: 0\n"}));
}

TEST_F(PageTablePass, KeepsADeviceWhoseProcessIdOnlyLooksLikeZero)
{
    add("1", "00");
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"00: process 00"}));
}

TEST_F(PageTablePass, AppendsToTheList)
{
    devices_.resize(1);
    std::strcpy(devices_.front().pid, "7");
    std::strcpy(devices_.front().app_name, "before");
    add("1", "101");
    collect_once();
    EXPECT_EQ(processes(), (Texts{"7: before", "101: process 101"}));
}

TEST_F(PageTablePass, GivesADeviceWithoutAProcessIdNotThatOfTheDeviceBefore)
{
    add("1", "101");
    driver_.add_device("2", "handle = 2\n", kOneEntry);
    add("3", "103");
    collect_once();
    EXPECT_EQ(status_, 0);
    ASSERT_EQ(devices_.size(), 3U);
    EXPECT_STREQ(devices_[0].pid, "101");
    EXPECT_STREQ(devices_[1].pid, "");
    EXPECT_STREQ(devices_[2].pid, "103");
}

TEST_F(PageTablePass, KeepsADeviceWithoutAProcessIdBehindOneOfProcessZero)
{
    add("1", "0");
    driver_.add_device("2", "handle = 2\n", kOneEntry);
    collect_once();
    EXPECT_EQ(status_, 0);
    ASSERT_EQ(devices_.size(), 1U);
    EXPECT_STREQ(devices_[0].pid, "");
    EXPECT_STRNE(devices_[0].app_name, "0");
}

TEST_F(PageTablePass, GivesADeviceWithoutANameNotThatOfTheDeviceBefore)
{
    add("1", "101");
    add("2", "102");
    ps_.answer("102", "");
    collect_once();
    EXPECT_EQ(processes(), (Texts{"101: process 101", "102: "}));
}

TEST_F(PageTablePass, GivesADeviceNoEntryOfTheDeviceBefore)
{
    driver_.add_device("1", "pid = 101\n",
                       "0:1: entry addr:1000, buffer:a\n"
                       "1:2: entry addr:2000, buffer:b\n"
                       "2:3: entry addr:3000, buffer:c\n"
                       "2:4 Snoop:1 Segment:1 LargePage:1 Addr:4000\n");
    // Behind the dump above its second line would be kept, and its first not be the first of a run.
    driver_.add_device("2", "pid = 102\n",
                       "2:5 Snoop:0 Segment:0 Addr:5000\n"
                       "2:6: entry addr:6000, buffer:d\n"
                       "1:7: entry addr:7000, buffer:e\n");
    collect_once();
    EXPECT_EQ(status_, 0);
    ASSERT_EQ(devices_.size(), 2U);
    const data_vectors& device = devices_[1];
    EXPECT_TRUE(device.pt_level0.empty());
    EXPECT_TRUE(device.st_level0.empty());
    EXPECT_TRUE(device.st_level1.empty());
    EXPECT_EQ(in_short(device.st_level2), (Texts{"2:5 0,0,0 5000 of 0:0"}));
    EXPECT_TRUE(device.pt_level2.empty());
    EXPECT_EQ(in_short(device.pt_level1), (Texts{"1:7 7000 e"}));
}

TEST_F(PageTablePass, NeedsNoProcessNames)
{
    ps_.remove_command();
    add("1", "101");
    add("2", "102");
    collect_once();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(processes(), (Texts{"101: ", "102: "}));
    EXPECT_EQ(output_, "");
}

TEST_F(PageTablePass, IsMadeForTheFirstAdapterWhicheverIsCurrent)
{
    const TempDirectory other;
    std::strcpy(sys_kernel_debug_ID_dri_ADAPTER_path, other.path().c_str());
    add("1", "101");
    collect_once();
    sys_kernel_debug_ID_dri_ADAPTER_path[0] = '\0';
    EXPECT_EQ(processes(), (Texts{"101: process 101"}));
}

}  // namespace
}  // namespace nimba::test
