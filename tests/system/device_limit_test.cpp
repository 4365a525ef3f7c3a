// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <ostream>

namespace nimba::test {
namespace {

// P: an adapter of the product, F: another vendor's GPU, B: a device on another bus.
struct Row {
    const char* devices;
    int adapters;
    int foreign;
    const char* output;
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.devices;
}

constexpr const char* kOnce = "exceed  MAX_CHIP_NUM. \n";
constexpr const char* kTwice = "exceed  MAX_CHIP_NUM. \nexceed  MAX_CHIP_NUM. \n";

constexpr Row kRows[] = {
    {"P", 1, 0, ""},         {"PPP", 3, 0, ""},          {"PPF", 2, 1, ""},
    {"FFF", 0, 1, ""},       {"BBB", 0, 0, ""},          {"PPPP", 3, 0, kTwice},
    {"PPPF", 3, 0, kTwice},  {"FPPP", 2, 1, kOnce},      {"PFPP", 2, 1, kOnce},
    {"PPFP", 2, 1, kOnce},   {"PPFF", 2, 1, kOnce},      {"FFFP", 0, 1, kOnce},
    {"BBBP", 0, 0, kTwice},  {"BBBF", 0, 0, kTwice},     {"BPBPF", 1, 0, kTwice},
    {"BPFPPF", 1, 1, kOnce}, {"PPPPPPPP", 3, 0, kTwice},
};

class DeviceLimit : public StubDiscoveryTest, public testing::WithParamInterface<Row> {};

TEST_P(DeviceLimit, EachPassExaminesThreeDevicesAndSaysSoWhenAFourthIsLeft)
{
    std::uint8_t bus = 0;
    for (const char kind : std::string{GetParam().devices}) {
        const PciLocation location{0x9a01, ++bus, 0, 0};
        drmDevice& device =
            kind == 'F' ? devices_.plug_card(0x8086, 0x56a0, location, 70 + bus)
                        : devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M40, location, 70 + bus);
        if (kind == 'B') {
            device.bustype = DRM_BUS_PLATFORM;
        }
    }
    discover_with();
    EXPECT_EQ(output_, GetParam().output);
    EXPECT_EQ(record_.header.chip_num, GetParam().adapters);
    EXPECT_EQ(cache().other_vendor_chip_num, GetParam().foreign);
    EXPECT_EQ(messages_.back(),
              "find chip num:" + std::to_string(GetParam().adapters) +
                  ", other vendor chip num:" + std::to_string(GetParam().foreign) + "\n");
    EXPECT_EQ(control_enable(), 1);
    EXPECT_EQ(opened_.size(), static_cast<std::size_t>(GetParam().adapters + GetParam().foreign));
    EXPECT_EQ(stub_->freed_devices, stub_->device_count);
}

INSTANTIATE_TEST_SUITE_P(, DeviceLimit, testing::ValuesIn(kRows),
                         [](const testing::TestParamInfo<Row>& row) { return row.param.devices; });

TEST_F(StubDiscoveryTest, TheLimitIsSaidOnStandardOutputWithoutACallback)
{
    library_.symbol<decltype(set_print_callback)>("set_print_callback")(nullptr);
    for (std::uint8_t i = 0; i < 4; ++i) {
        devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M40, {0x9a01, i, 0, 0}, 71 + i);
    }
    discover_with();
    EXPECT_EQ(output_, "exceed  MAX_CHIP_NUM. \nexceed  MAX_CHIP_NUM. \n");
    EXPECT_EQ(messages_, Texts{});
    EXPECT_EQ(record_.header.chip_num, 3);
}

}  // namespace
}  // namespace nimba::test
