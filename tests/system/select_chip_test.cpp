// SPDX-License-Identifier: MIT
#include "nimba_mgmt_interface.h"
#include "support/loaded_library.hpp"
#include "support/messages.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace nimba::test {
namespace {

class SelectChip : public testing::Test {
  protected:
    SelectChip()
    {
        library_.symbol<decltype(set_print_callback)>("set_print_callback")(keep_message);
        take_messages();
        std::strcpy(record_.gpu_infos[1].busid, "9a01:0b:1c.3");
        std::strcpy(record_.header.chip_name[1], "Gpu1:QV M-30");
        std::strcpy(record_.gpu_infos[2].busid, "0000:02:00.0");
        std::strcpy(record_.header.chip_name[2], "Gpu2:NimbaK5");
    }

    std::int32_t select(std::int32_t slot)
    {
        record_.chip_id_idx = slot;
        return library_.symbol<decltype(gpuinfo_select_new_chip)>("gpuinfo_select_new_chip")(
            &record_);
    }
    gpu_infos* current() const { return library_.symbol<gpu_infos*>("pCurrent_gpu_infos"); }
    const char* path() const { return library_.symbol<char[60]>("sys_bus_pci_devices_BUSID_path"); }

    LoadedLibrary library_;
    find_adapter record_{};
};

TEST_F(SelectChip, NothingIsCurrentAtLoad)
{
    EXPECT_EQ(current(), nullptr);
    EXPECT_STREQ(path(), "");
}

TEST_F(SelectChip, PointsIntoTheCallersRecordAndNamesThePciDirectory)
{
    EXPECT_EQ(select(1), 0);
    EXPECT_EQ(current(), &record_.gpu_infos[1]);
    EXPECT_STREQ(path(), "/sys/bus/pci/devices/9a01:0b:1c.3");
    EXPECT_EQ(take_messages(), Texts{"gpuinfo_select_new_chip index: 1, name: Gpu1:QV M-30 \n"});
}

TEST_F(SelectChip, ReplacesTheCurrentSlot)
{
    select(1);
    take_messages();
    EXPECT_EQ(select(2), 0);
    EXPECT_EQ(current(), &record_.gpu_infos[2]);
    EXPECT_STREQ(path(), "/sys/bus/pci/devices/0000:02:00.0");
    EXPECT_EQ(take_messages(), Texts{"gpuinfo_select_new_chip index: 2, name: Gpu2:NimbaK5 \n"});
}

TEST_F(SelectChip, ReadsNoFurtherThanTextsThatFillTheirFields)
{
    std::memset(record_.gpu_infos[1].busid, 'b', 20);
    record_.gpu_infos[1].pci_dir_fd = 0x63636363;
    std::memset(record_.header.chip_name[1], 'n', 20);
    std::memset(record_.header.chip_name[2], 'm', 20);
    EXPECT_EQ(select(1), 0);
    EXPECT_STREQ(path(), "/sys/bus/pci/devices/bbbbbbbbbbbbbbbbbbbb");
    EXPECT_EQ(take_messages(),
              Texts{"gpuinfo_select_new_chip index: 1, name: nnnnnnnnnnnnnnnnnnnn \n"});
}

TEST_F(SelectChip, TakesAZeroedSlotAsItIs)
{
    EXPECT_EQ(select(0), 0);
    EXPECT_EQ(current(), &record_.gpu_infos[0]);
    EXPECT_STREQ(path(), "/sys/bus/pci/devices/");
    EXPECT_EQ(take_messages(), Texts{"gpuinfo_select_new_chip index: 0, name:  \n"});
}

}  // namespace
}  // namespace nimba::test
