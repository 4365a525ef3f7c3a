// SPDX-License-Identifier: MIT
#include "tools/smi/prefer/gpu.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

// Two adapters and the GPU of another vendor.
Discovery three_gpus()
{
    Discovery discovery;
    discovery.slots = {{0, "0000:01:00.0", "Gpu0:Nimba-K1"}, {1, "0001:af:00.0", std::nullopt}};
    discovery.foreign_gpu = ForeignGpu{"Gpu2:Nvidia-GPU", "0000:03:00.0", 2, 0x10de, 0x2684, {}};
    discovery.drm_devices = 3;
    return discovery;
}

TEST(ChosenGpu, IsAnAdapterBySlotOrBusId)
{
    std::vector<Problem> problems;
    EXPECT_EQ(chosen_gpu(three_gpus(), 0, problems),
              (PreferredGpu{"0000:01:00.0", "Gpu0:Nimba-K1"}));
    EXPECT_EQ(chosen_gpu(three_gpus(), "0001:af:00.0", problems),
              (PreferredGpu{"0001:af:00.0", std::nullopt}));
    EXPECT_TRUE(problems.empty());
}

TEST(ChosenGpu, OfAnotherVendorIsChosenByItsBusIdAlone)
{
    std::vector<Problem> problems;
    EXPECT_EQ(chosen_gpu(three_gpus(), "0000:03:00.0", problems),
              (PreferredGpu{"0000:03:00.0", "Gpu2:Nvidia-GPU"}));
    EXPECT_TRUE(problems.empty());
    EXPECT_EQ(chosen_gpu(three_gpus(), 2, problems), std::nullopt);
    ASSERT_EQ(problems.size(), 1U);
    EXPECT_EQ(problems[0].status, ExitStatus::kNoAdapter);
    EXPECT_EQ(problems[0].message,
              "there is no adapter in slot 2; nimba-smi list shows those that are there");
}

TEST(CarriedName, HasFifteenBytes)
{
    EXPECT_EQ(carried_name("Gpu0:Nimba-GT-K3t"), "Gpu0:Nimba-GT-K");
    EXPECT_EQ(carried_name("Gpu2:Nvidia-GPU"), "Gpu2:Nvidia-GPU");
    EXPECT_EQ(carried_name("Gpu1:QV M-30"), "Gpu1:QV M-30");
    EXPECT_EQ(carried_name(""), "");
}

TEST(CarriedName, KeepsNoPartThatTheFileWouldChange)
{
    EXPECT_EQ(carried_name("Gpu2:Long name of it"), "Gpu2:Long name");
    EXPECT_EQ(carried_name(" Gpu2 "), "Gpu2");
    EXPECT_EQ(carried_name("Gpu2;x"), "Gpu2");
    EXPECT_EQ(carried_name("Gpu2\nx"), "Gpu2");
    EXPECT_EQ(carried_name("01234567890123\xc3\xa9t"), "01234567890123");
    EXPECT_EQ(carried_name("0123456789012\xc3\xa9t"), "0123456789012\xc3\xa9");
    EXPECT_EQ(carried_name("\t \t"), "");
}

TEST(Presence, OfAGpuIsWhatDiscoverySaw)
{
    EXPECT_EQ(is_present(three_gpus(), {0, 1, 0, 0}), true);
    EXPECT_EQ(is_present(three_gpus(), {1, 0xaf, 0, 0}), true);
    EXPECT_EQ(is_present(three_gpus(), {0, 3, 0, 0}), true);
    EXPECT_EQ(is_present(three_gpus(), {0, 1, 0, 1}), false);
    EXPECT_EQ(is_present(Discovery{}, {0, 1, 0, 0}), false);
    Discovery unlisted;
    unlisted.unlisted = {"0000:04:00.0"};
    unlisted.drm_devices = 1;
    EXPECT_EQ(is_present(unlisted, {0, 4, 0, 0}), true);
}

TEST(Presence, IsUnknownWhenDiscoveryDoesNotTell)
{
    EXPECT_EQ(is_present(std::nullopt, {0, 1, 0, 0}), std::nullopt);
    Discovery other_device = three_gpus();
    other_device.drm_devices = 4;
    EXPECT_EQ(is_present(other_device, {0, 1, 0, 0}), true);
    EXPECT_EQ(is_present(other_device, {0, 4, 0, 0}), std::nullopt);
    Discovery denied;
    denied.denied_directory = DeniedFile{"/dev/dri", "render"};
    EXPECT_EQ(is_present(denied, {0, 1, 0, 0}), std::nullopt);
}

TEST(Location, HasTheBusIdsNumbers)
{
    EXPECT_EQ(location_in("0001:af:1f.7"), (PciLocation{1, 0xaf, 0x1f, 7}));
    EXPECT_EQ(location_in("ffff:ff:1f.7"), (PciLocation{0xffff, 0xff, 0x1f, 7}));
    EXPECT_EQ(location_in("10000:01:00.0"), std::nullopt);
    EXPECT_EQ(bus_id_text({1, 0xaf, 0x1f, 7}), "0001:af:1f.7");
}

}  // namespace
}  // namespace nimba::smi
