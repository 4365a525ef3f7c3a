// SPDX-License-Identifier: MIT
// What discovery makes of the files of an adapter's driver: the machine has one Nimba K3 without
// any, and each test adds its own.
#include "machine_fixture.hpp"
#include "ordinary_permissions.hpp"
#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <cstdlib>
#include <filesystem>
#include <ostream>

namespace nimba::test {
namespace {

namespace fs = std::filesystem;

const std::string kPci = "/sys/bus/pci/devices/0000:01:00.0";

class DriverFiles : public MachineTest {
  protected:
    ~DriverFiles() override
    {
        for (const std::string& directory : {kPci + "/hwmon", kPci + "/jw_info", kPci + "/qv_info",
                                             std::string{"/sys/kernel/debug"}}) {
            fs::remove_all(in_test_bed(directory));
        }
    }

    static fs::path in_test_bed(const std::string& path)
    {
        return std::getenv("UMOCKDEV_DIR") + path;
    }
    static void add_directory(const std::string& path)
    {
        fs::create_directories(in_test_bed(path));
    }
    static void add_file(const std::string& path, const std::string& text)
    {
        fs::create_directories(in_test_bed(path).parent_path());
        write_file(in_test_bed(path), text);
    }
    // The path of the entry that the directory lists first.
    static std::string first_listed(const std::string& directory)
    {
        const fs::directory_iterator listing{in_test_bed(directory)};
        return directory + "/" + listing->path().filename().string();
    }
    int hwmon() const { return record_.gpu_infos[0].hwmon_dir_fd; }
    int info() const { return record_.gpu_infos[0].jw_info_dir_fd; }
};

TEST_F(DriverFiles, TheInfoDirectoryIsThatOfTheVendor)
{
    add_directory(kPci + "/qv_info");
    add_directory(kPci + "/jw_info");
    discover();
    EXPECT_TRUE(is_open_on(info(), kPci + "/jw_info"));
    EXPECT_TRUE(closes_on_exec(info()));
}

TEST_F(DriverFiles, TheInfoDirectoryOfTheOtherVendorIsNotTaken)
{
    add_directory(kPci + "/qv_info");
    discover();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(info(), 0);
    EXPECT_EQ(opened_.size(), 2U);
}

TEST_F(DriverFiles, TheHwmonDirectoryIsFoundAmongOtherEntries)
{
    add_directory(kPci + "/hwmon/device");
    add_file(kPci + "/hwmon/hwmon1", "a file");
    add_directory(kPci + "/hwmon/hwmon47");
    add_file(kPci + "/hwmon/hwmon2", "a file");
    discover();
    EXPECT_TRUE(is_open_on(hwmon(), kPci + "/hwmon/hwmon47"));
    EXPECT_TRUE(closes_on_exec(hwmon()));
    EXPECT_EQ(opened_.size(), 3U);
}

TEST_F(DriverFiles, TheHwmonDirectoryMayHaveNoNumber)
{
    add_directory(kPci + "/hwmon/hwmon");
    discover();
    EXPECT_TRUE(is_open_on(hwmon(), kPci + "/hwmon/hwmon"));
}

TEST_F(DriverFiles, TheHwmonDirectoryIsTheFirstListed)
{
    // Whichever entry a file system lists first, the oldest or the newest, it is neither the first
    // nor the last by name.
    for (const char* name : {"hwmon2", "hwmon1", "hwmon4", "hwmon3"}) {
        add_directory(kPci + "/hwmon/" + name);
    }
    discover();
    EXPECT_TRUE(is_open_on(hwmon(), first_listed(kPci + "/hwmon")));
    EXPECT_EQ(opened_.size(), 3U);
}

TEST_F(DriverFiles, NoOtherDirectoryIsTakenForTheFirstListedThatDoesNotOpen)
{
    add_directory(kPci + "/hwmon/hwmon1");
    add_directory(kPci + "/hwmon/hwmon2");
    record_.gpu_infos[0].hwmon_dir_fd = 77;
    const fs::path closed = in_test_bed(first_listed(kPci + "/hwmon"));
    fs::permissions(closed, fs::perms::none);
    {
        const OrdinaryPermissions ordinary;
        discover();
    }
    fs::permissions(closed, fs::perms::owner_all);
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(hwmon(), 77);
    EXPECT_EQ(opened_.size(), 2U);
}

TEST_F(DriverFiles, AnEmptyHwmonDirectoryLeavesTheDescriptor)
{
    add_directory(kPci + "/hwmon");
    record_.gpu_infos[0].hwmon_dir_fd = 77;
    discover();
    EXPECT_EQ(hwmon(), 77);
    EXPECT_EQ(opened_.size(), 2U);
}

TEST_F(DriverFiles, AHwmonFileInPlaceOfTheDirectoryIsNoDirectory)
{
    add_file(kPci + "/hwmon", "a file");
    record_.gpu_infos[0].hwmon_dir_fd = 77;
    discover();
    EXPECT_EQ(hwmon(), 77);
    EXPECT_EQ(opened_.size(), 2U);
}

TEST_F(DriverFiles, TheDriverKindIsReadInTheVendorsDirectoryOfTheCard)
{
    add_file("/sys/kernel/debug/dri/0/qv/info", "VA=1\n");
    add_file("/sys/kernel/debug/dri/1/jw/info", "VA=1\n");
    add_file("/sys/kernel/debug/dri/0/info", "VA=1\n");
    discover();
    EXPECT_EQ(record_.header.IS_VA_driver[0], 0);
    add_file("/sys/kernel/debug/dri/0/jw/info", "VA=1\n");
    discover();
    EXPECT_EQ(record_.header.IS_VA_driver[0], 1);
    EXPECT_EQ(messages_.at(5), "find_adapter->header.IS_VA_driver[0] = 1\n");
}

struct Decoy {
    enum Kind { kDirectory, kFile, kLinkToDirectory } kind;
    const char* entry;
    const char* name;
};

void PrintTo(const Decoy& row, std::ostream* out)
{
    *out << row.name;
}

class HwmonDecoy : public DriverFiles, public testing::WithParamInterface<Decoy> {
  protected:
    static void add_decoy()
    {
        const std::string path = kPci + "/hwmon/" + GetParam().entry;
        switch (GetParam().kind) {
            case Decoy::kDirectory:
                add_directory(path);
                break;
            case Decoy::kFile:
                add_file(path, "a file");
                break;
            case Decoy::kLinkToDirectory:
                add_directory(kPci + "/hwmon/device");
                fs::create_directory_symlink("device", in_test_bed(path));
                break;
        }
    }
};

TEST_P(HwmonDecoy, IsNotOpenedAndTheListingIsClosed)
{
    add_decoy();
    record_.gpu_infos[0].hwmon_dir_fd = 77;
    discover();
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(hwmon(), 77);
    EXPECT_EQ(opened_.size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    , HwmonDecoy,
    testing::Values(Decoy{Decoy::kDirectory, "device", "WithAnotherName"},
                    Decoy{Decoy::kDirectory, "hwmo", "WithAShorterName"},
                    Decoy{Decoy::kDirectory, "hwmo1", "WithAnotherFifthCharacter"},
                    Decoy{Decoy::kDirectory, "xhwmon2", "WithTheNameFurtherBehind"},
                    Decoy{Decoy::kDirectory, "HWMON2", "InUpperCase"},
                    Decoy{Decoy::kFile, "hwmon3", "AsAFile"},
                    Decoy{Decoy::kLinkToDirectory, "hwmon4", "AsALinkToADirectory"}),
    [](const testing::TestParamInfo<Decoy>& row) { return row.param.name; });

struct Info {
    std::string text;
    int is_va;
    const char* name;
};

void PrintTo(const Info& row, std::ostream* out)
{
    *out << row.name;
}

class DriverInfo : public DriverFiles, public testing::WithParamInterface<Info> {};

TEST_P(DriverInfo, TellsTheDriverKind)
{
    add_file("/sys/kernel/debug/dri/0/jw/info", GetParam().text);
    record_.header.IS_VA_driver[0] = GetParam().is_va == 1 ? 0 : 7;
    discover();
    EXPECT_EQ(record_.header.IS_VA_driver[0], GetParam().is_va == 1 ? 1 : 7);
    EXPECT_EQ(opened_.size(), 2U);
}

INSTANTIATE_TEST_SUITE_P(
    , DriverInfo,
    testing::Values(Info{"VA=1", 1, "TheTextAlone"}, Info{"VA=1\n", 1, "ALine"},
                    Info{"Driver Version : 2.0\nVA=1\nmore\n", 1, "AmongOtherLines"},
                    Info{"xVA=10", 1, "WithinAWord"},
                    Info{std::string{"text\0VA=1\n", 10}, 1, "BehindANul"},
                    Info{std::string(124, '-') + "VA=1\n", 1, "AsTheLastOfThe128Bytes"},
                    Info{"VA=1" + std::string(500, '-'), 1, "BeforeMoreThan128Bytes"},
                    Info{"VA=0\n", 0, "Of0"}, Info{"va=1\n", 0, "InLowerCase"},
                    Info{"VA = 1\n", 0, "WithBlanks"}, Info{"", 0, "OfAnEmptyNode"},
                    Info{std::string(125, '-') + "VA=1\n", 0, "CutByThe128Bytes"},
                    Info{std::string(128, '-') + "VA=1\n", 0, "BehindThe128Bytes"}),
    [](const testing::TestParamInfo<Info>& row) { return row.param.name; });

}  // namespace
}  // namespace nimba::test
