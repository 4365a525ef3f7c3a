// SPDX-License-Identifier: MIT
#include "tools/smi/worker/driver_files.hpp"

#include "ordinary_user.hpp"
#include "support/temp_directory.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

TEST(DriverInfo, PathGoesByCardAndVendor)
{
    EXPECT_EQ(driver_info_path(0, 0x4E4D), "/sys/kernel/debug/dri/0/jw/info");
    EXPECT_EQ(driver_info_path(12, 0x5156), "/sys/kernel/debug/dri/12/qv/info");
}

TEST(DriverInfo, AccessTellsDeniedFromAbsent)
{
    const test::TempDirectory directory;
    fs::permissions(directory.path(), fs::perms{0755});
    const std::string open = directory.write("open", "");
    const std::string closed = directory.write("closed", "");
    const std::string absent = (directory.path() / "absent").string();
    const std::string under_file = open + "/info";
    fs::permissions(open, fs::perms{0644});
    fs::permissions(closed, fs::perms{0});
    EXPECT_TRUE(holds_for_ordinary_user([&] { return read_access(open) == Access::kOpen; }));
    EXPECT_TRUE(holds_for_ordinary_user([&] { return read_access(closed) == Access::kDenied; }));
    EXPECT_EQ(read_access(absent), Access::kAbsent);
    EXPECT_EQ(read_access(under_file), Access::kAbsent);
}

TEST(DriverKind, IsLegacyOnlyWhenTheInfoNodeCouldBeRead)
{
    EXPECT_EQ(driver_kind_without_va(Access::kOpen), DriverKind::kLegacy);
    EXPECT_EQ(driver_kind_without_va(Access::kDenied), DriverKind::kUnknown);
    EXPECT_EQ(driver_kind_without_va(Access::kAbsent), DriverKind::kUnknown);
}

// A PCI directory with this text in "device".
std::optional<uint32_t> device_id_from(const std::string& text)
{
    const test::TempDirectory directory;
    directory.write("device", text);
    const tools::Descriptor fd{
        ::open(directory.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    return pci_id_in(fd.get(), "device");
}

TEST(PciDirectory, DeviceIdentifierIsReadFromItsFile)
{
    EXPECT_EQ(device_id_from("0x1013\n"), 0x1013U);
    EXPECT_EQ(device_id_from("0xfFfF"), 0xFFFFU);
    EXPECT_EQ(device_id_from(""), std::nullopt);
    EXPECT_EQ(device_id_from("1013\n"), std::nullopt);
    EXPECT_EQ(device_id_from("0x\n"), std::nullopt);
    EXPECT_EQ(device_id_from("0x10g3\n"), std::nullopt);
    EXPECT_EQ(pci_id_in(-1, "device"), std::nullopt);
}

TEST(PciDirectory, CardIsTheOneInItsListing)
{
    const test::TempDirectory directory;
    const tools::Descriptor fd{
        ::open(directory.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    EXPECT_EQ(card_in(fd.get()), std::nullopt);
    fs::create_directories(directory.path() / "drm" / "renderD140");
    fs::create_directories(directory.path() / "drm" / "card12-HDMI-A-1");
    EXPECT_EQ(card_in(fd.get()), std::nullopt);
    fs::create_directories(directory.path() / "drm" / "card12");
    EXPECT_EQ(card_in(fd.get()), 12);
    EXPECT_EQ(card_in(-1), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
