// SPDX-License-Identifier: MIT
#include "tools/smi/worker/discovery.hpp"

#include <gtest/gtest.h>

#include <string_view>

namespace nimba::smi {
namespace {

template <std::size_t Size>
void put(char (&field)[Size], std::string_view text)
{
    field[text.copy(field, Size - 1)] = '\0';
}

// Three adapters in the slots.
DiscoveryRecords three_adapters()
{
    DiscoveryRecords records;
    find_adapter_header& header = records.adapters.header;
    header.chip_num = 3;
    const char* const names[] = {"Gpu0:Nimba-K1", "Gpu1:QV M-30", "Gpu2:NimbaK5"};
    const char* const bus_ids[] = {"0000:03:00.0", "0000:04:00.0", "0001:05:1f.7"};
    const uint32_t devices[] = {0x1001, 0x2030, 0x1005};
    const uint16_t vendors[] = {0x4E4D, 0x5156, 0x4E4D};
    const gfx_luid luids[] = {{0, 0x30000}, {0, 0x40000}, {1, 0x51F07}};
    for (int slot = 0; slot < 3; ++slot) {
        put(header.chip_name[slot], names[slot]);
        put(records.adapters.gpu_infos[slot].busid, bus_ids[slot]);
        header.chip_id[slot] = devices[slot];
        header.drm_card_idx[slot] = slot + 4;
        records.adapters.gpu_infos[slot].vendor_id = vendors[slot];
        records.identity.luid[slot] = luids[slot];
    }
    header.IS_VA_driver[0] = 1;
    return records;
}

void add_foreign_gpu(DiscoveryRecords& records)
{
    records.identity.other_vendor_chip_num = 1;
    records.identity.vendor_id[2] = 0x8086;
    records.identity.busid_info[2] = {0, 0, 2, 1, 0};
    records.identity.luid[2] = {0, 0x201};
    put(records.adapters.header.chip_name[2], "Gpu2:Intel-GPU");
    records.adapters.header.chip_id[2] = 0x56A0;
    records.adapters.header.drm_card_idx[2] = 9;
}

TEST(DiscoveryRecords, SlotCountStaysWithinTheSlots)
{
    DiscoveryRecords records;
    EXPECT_EQ(slot_count(records), 0);
    records.adapters.header.chip_num = 2;
    EXPECT_EQ(slot_count(records), 2);
    records.adapters.header.chip_num = 4;
    EXPECT_EQ(slot_count(records), 3);
    records.adapters.header.chip_num = -1;
    EXPECT_EQ(slot_count(records), 0);
}

TEST(DiscoveryRecords, UnfilledRecordAsksForBothVendorsAndHasNoCardOrDirectory)
{
    const find_adapter adapters = unfilled_adapters();
    EXPECT_EQ(adapters.header.vendor_id_filter, 0xFFFFU);
    EXPECT_EQ(adapters.header.chip_num, 0);
    for (int slot = 0; slot < 3; ++slot) {
        EXPECT_EQ(adapters.header.drm_card_idx[slot], -1);
        EXPECT_EQ(adapters.gpu_infos[slot].jw_info_dir_fd, -1);
        EXPECT_EQ(adapters.gpu_infos[slot].hwmon_dir_fd, -1);
    }
}

TEST(DiscoveryRecords, CardThatWasNotFilledIsAbsent)
{
    DiscoveryRecords records = three_adapters();
    records.adapters.header.drm_card_idx[1] = -1;
    EXPECT_EQ(adapter_in_slot(records, 0).card, 4);
    EXPECT_EQ(adapter_in_slot(records, 1).card, std::nullopt);
    add_foreign_gpu(records);
    records.adapters.header.drm_card_idx[2] = -1;
    EXPECT_EQ(foreign_gpu(records)->card, std::nullopt);
}

TEST(DiscoveryRecords, IdentitiesComeInSlotOrder)
{
    DiscoveryRecords records = three_adapters();
    records.adapters.header.chip_num = 2;
    EXPECT_EQ(slot_identities(records),
              (std::vector<SlotIdentity>{{0, "0000:03:00.0", "Gpu0:Nimba-K1"},
                                         {1, "0000:04:00.0", "Gpu1:QV M-30"}}));
}

TEST(DiscoveryRecords, AdapterHasTheFieldsOfItsSlot)
{
    const DiscoveryRecords records = three_adapters();
    EXPECT_EQ(
        adapter_in_slot(records, 0),
        (Adapter{
            0, "Gpu0:Nimba-K1", "0000:03:00.0", 4, 0x4E4D, 0x1001, DriverKind::kVa, {0, 0x30000}}));
    EXPECT_EQ(adapter_in_slot(records, 1), (Adapter{1,
                                                    "Gpu1:QV M-30",
                                                    "0000:04:00.0",
                                                    5,
                                                    0x5156,
                                                    0x2030,
                                                    DriverKind::kUnknown,
                                                    {0, 0x40000}}));
}

TEST(DiscoveryRecords, TextsThatFillTheirFieldEndWithIt)
{
    DiscoveryRecords records = three_adapters();
    std::string_view{"12345678901234567890"}.copy(records.adapters.header.chip_name[0], 20);
    EXPECT_EQ(adapter_in_slot(records, 0).name, "12345678901234567890");
}

TEST(DiscoveryRecords, NoForeignGpuUnlessDiscoveryNotedOne)
{
    DiscoveryRecords records = three_adapters();
    EXPECT_EQ(foreign_gpu(records), std::nullopt);
    EXPECT_FALSE(is_overwritten(records, 2));
}

TEST(DiscoveryRecords, ForeignGpuIsReadFromTheLastSlot)
{
    DiscoveryRecords records;
    add_foreign_gpu(records);
    EXPECT_EQ(foreign_gpu(records),
              (ForeignGpu{"Gpu2:Intel-GPU", "0000:00:02.1", 9, 0x8086, 0x56A0, {0, 0x201}}));
    EXPECT_TRUE(slot_identities(records).empty());
}

TEST(DiscoveryRecords, ForeignGpuHidesWhatItOverwroteOfTheThirdAdapter)
{
    DiscoveryRecords records = three_adapters();
    add_foreign_gpu(records);
    EXPECT_TRUE(is_overwritten(records, 2));
    EXPECT_FALSE(is_overwritten(records, 1));
    EXPECT_EQ(adapter_in_slot(records, 2), (Adapter{2,
                                                    std::nullopt,
                                                    "0001:05:1f.7",
                                                    std::nullopt,
                                                    0x4E4D,
                                                    std::nullopt,
                                                    DriverKind::kUnknown,
                                                    {1, 0x51F07}}));
    EXPECT_EQ(slot_identities(records)[2], (SlotIdentity{2, "0001:05:1f.7", std::nullopt}));
    EXPECT_EQ(foreign_gpu(records)->name, "Gpu2:Intel-GPU");
}

TEST(DiscoveryRecords, LuidIsMadeFromTheBusId)
{
    EXPECT_EQ(luid_of("0000:03:00.0"), (Luid{0, 0x30000}));
    EXPECT_EQ(luid_of("ffff:ff:1f.7"), (Luid{0xFFFF, 0xFF1F07}));
    EXPECT_EQ(luid_of(""), Luid{});
    EXPECT_EQ(luid_of("0000:03"), Luid{});
}

}  // namespace
}  // namespace nimba::smi
