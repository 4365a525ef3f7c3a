// SPDX-License-Identifier: MIT
// What discovery makes of the files of an adapter's driver: the machine has one Nimba K3 without
// any, and each test adds its own.
#include "machine_fixture.hpp"
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

TEST_F(DriverFiles, TheHwmonDirectoryIsADirectoryWhoseNameBeginsWithHwmon)
{
    // Some file systems list the oldest entry first, some the newest.
    const auto add_others = [](const std::string& suffix) {
        add_directory(kPci + "/hwmon/device" + suffix);
        add_directory(kPci + "/hwmon/xhwmon" + suffix);
        add_directory(kPci + "/hwmon/hwmo" + suffix);
        add_directory(kPci + "/hwmon/HWMON" + suffix);
        add_file(kPci + "/hwmon/hwmon" + suffix, "a file");
    };
    add_others("1");
    add_directory(kPci + "/hwmon/hwmon47");
    add_others("2");
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

TEST_F(DriverFiles, OneOfSeveralHwmonDirectoriesIsOpened)
{
    add_directory(kPci + "/hwmon/hwmon1");
    add_directory(kPci + "/hwmon/hwmon2");
    discover();
    EXPECT_NE(is_open_on(hwmon(), kPci + "/hwmon/hwmon1"),
              is_open_on(hwmon(), kPci + "/hwmon/hwmon2"));
    EXPECT_EQ(opened_.size(), 3U);
}

TEST_F(DriverFiles, WithoutAFittingDirectoryTheHwmonDescriptorStaysAndTheListingIsClosed)
{
    add_directory(kPci + "/hwmon/device");
    add_file(kPci + "/hwmon/hwmon3", "a file");
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
                    Info{std::string(120, '-') + "VA=1\n", 1, "NearTheEndOfThe128Bytes"},
                    Info{"VA=1" + std::string(500, '-'), 1, "BeforeMoreThan128Bytes"},
                    Info{"VA=0\n", 0, "Of0"}, Info{"va=1\n", 0, "InLowerCase"},
                    Info{"VA = 1\n", 0, "WithBlanks"}, Info{"", 0, "OfAnEmptyNode"},
                    Info{std::string(126, '-') + "VA=1\n", 0, "CutByThe128Bytes"},
                    Info{std::string(128, '-') + "VA=1\n", 0, "BehindThe128Bytes"}),
    [](const testing::TestParamInfo<Info>& row) { return row.param.name; });

}  // namespace
}  // namespace nimba::test
