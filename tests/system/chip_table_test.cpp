// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <array>
#include <ostream>

namespace nimba::test {
namespace {

struct Chip {
    std::uint16_t vendor;
    std::uint16_t device;
    std::array<const char*, 3> names;  // in the slots 0, 1 and 2
    const char* message;
    const char* name;
};

void PrintTo(const Chip& row, std::ostream* out)
{
    *out << row.name;
}

constexpr Chip kChips[] = {
    {QV_VENDOR_ID,
     DEVICE_ID_QV_M30,
     {"Gpu0:QV M-30", "Gpu1:QV M-30", "Gpu2:QV M-30"},
     "find chip mv9\n",
     "QvM30"},
    {QV_VENDOR_ID,
     DEVICE_ID_QV_M20,
     {"Gpu0:QV M-20", "Gpu1:QV M-20", "Gpu2:QV M-20"},
     "find chip kpl310\n",
     "QvM20"},
    {QV_VENDOR_ID,
     DEVICE_ID_QV_M40,
     {"Gpu0:QV M-40", "Gpu1:QV M-40", "Gpu2:QV M-40"},
     "find chip rsd520\n",
     "QvM40"},
    {NIMBA_VENDOR_ID,
     DEVICE_ID_NIMBA_K1,
     {"Gpu0:Nimba-K1", "Gpu1:Nimba-K1", "Gpu2:Nimba-K1"},
     "find chip nimbak1\n",
     "NimbaK1"},
    {NIMBA_VENDOR_ID,
     DEVICE_ID_NIMBA_K2,
     {"Gpu0:NimbaK2", "Gpu1:NimbaK2", "Gpu2:NimbaK2"},
     "find chip nimbak2\n",
     "NimbaK2"},
    {NIMBA_VENDOR_ID,
     DEVICE_ID_NIMBA_K3,
     {"Gpu0:Nimba-GT-K3", "Gpu1:Nimba-GT-K3", "Gpu2:Nimba-GT-K3"},
     "find chip nimbak3\n",
     "NimbaK3"},
    {NIMBA_VENDOR_ID,
     DEVICE_ID_NIMBA_K3T,
     {"Gpu0:Nimba-GT-K3t", "Gpu1:Nimba-GT-K3t", "Gpu2:Nimba-GT-K3t"},
     "find chip nimbak3t\n",
     "NimbaK3t"},
    {NIMBA_VENDOR_ID,
     DEVICE_ID_NIMBA_K5,
     {"Gpu0:NimbaK5", "Gpu1:NimbaK5", "Gpu2:NimbaK5"},
     "find chip nimbak5\n",
     "NimbaK5"},
    {NIMBA_VENDOR_ID,
     DEVICE_ID_NIMBA_K6,
     {"Gpu0:Nimba-K6", "Gpu1:Nimba-K6", "Gpu2:Nimba-K6"},
     "find chip nimbak6\n",
     "NimbaK6"},
};

class ChipTable : public StubDiscoveryTest, public testing::WithParamInterface<Chip> {};

TEST_P(ChipTable, NamesTheChipByItsSlot)
{
    const Chip& chip = GetParam();
    for (std::uint8_t i = 0; i < 3; ++i) {
        devices_.plug_card(chip.vendor, chip.device, {0x9a01, i, 0, 0}, 71 + i);
    }
    discover_with();
    ASSERT_EQ(record_.header.chip_num, 3);
    for (std::size_t slot = 0; slot < 3; ++slot) {
        EXPECT_STREQ(record_.header.chip_name[slot], chip.names[slot]);
        EXPECT_EQ(record_.header.chip_id[slot], chip.device);
        EXPECT_EQ(record_.gpu_infos[slot].vendor_id, chip.vendor);
        EXPECT_EQ(cache().vendor_id[slot], chip.vendor);
        EXPECT_EQ(messages_.at(6 * slot), check_line(chip.vendor, chip.device));
        EXPECT_EQ(messages_.at(6 * slot + 1), chip.message);
    }
}

INSTANTIATE_TEST_SUITE_P(, ChipTable, testing::ValuesIn(kChips),
                         [](const testing::TestParamInfo<Chip>& row) { return row.param.name; });

}  // namespace
}  // namespace nimba::test
