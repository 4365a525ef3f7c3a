// SPDX-License-Identifier: MIT
#include "tools/smi/worker/progress.hpp"

#include <gtest/gtest.h>

#include <string_view>

namespace nimba::smi {
namespace {

void add_adapter(DiscoveryProgress& progress, std::string_view bus_id)
{
    const int slot = progress.adapters.header.chip_num++;
    bus_id.copy(progress.adapters.gpu_infos[slot].busid, 19);
    std::string_view{"Gpu:Nimba-K1"}.copy(progress.adapters.header.chip_name[slot], 19);
    progress.adapters.gpu_infos[slot].vendor_id = 0x4E4D;
    progress.adapters.header.chip_id[slot] = 0x1001;
    progress.adapters.header.drm_card_idx[slot] = slot;
}

TEST(ProgressMessage, TellsTheBusId)
{
    EXPECT_EQ(bus_id_in_message("gpu_busid: 0x0000:01:00.0\n"), "0000:01:00.0");
    EXPECT_EQ(bus_id_in_message("gpu_busid: 0xffff:ff:1f.7\n"), "ffff:ff:1f.7");
}

TEST(ProgressMessage, OthersTellNothing)
{
    for (const char* const message :
         {"", "gpu_luid: 0x00000000:0x00010000\n", "gpu_busid: 0x", "gpu_busid: 0x\n"}) {
        EXPECT_EQ(bus_id_in_message(message), std::nullopt) << message;
    }
}

TEST(Progress, NotedMessagesAreSeenThroughAnotherMapping)
{
    const tools::Descriptor memory = make_progress_memory();
    ASSERT_TRUE(memory);
    const SharedProgress worker = map_progress(memory.get());
    const SharedProgress parent = map_progress(memory.get());
    ASSERT_TRUE(worker && parent);
    EXPECT_EQ(unfinished_adapter(*parent), std::nullopt);
    note_messages_in(*worker);
    note_message("gpu_busid: 0x0000:01:00.0\n");
    note_message("something else\n");
    EXPECT_EQ(unfinished_adapter(*parent), "0000:01:00.0");
}

TEST(Progress, NeedsMemory)
{
    EXPECT_EQ(map_progress(-1), nullptr);
}

TEST(Progress, AdapterThatWasCompletedIsNotUnfinished)
{
    DiscoveryProgress progress{};
    std::string_view{"0000:03:00.0"}.copy(progress.reached, 19);
    EXPECT_EQ(unfinished_adapter(progress), "0000:03:00.0");
    add_adapter(progress, "0000:03:00.0");
    EXPECT_EQ(unfinished_adapter(progress), std::nullopt);
}

TEST(Progress, FinishedAdaptersHaveWhatTheRecordTells)
{
    DiscoveryProgress progress{};
    EXPECT_TRUE(finished_adapters(progress).empty());
    add_adapter(progress, "0000:03:00.0");
    progress.adapters.header.IS_VA_driver[0] = 1;
    EXPECT_EQ(finished_adapters(progress), (std::vector<Adapter>{{0,
                                                                  "Gpu:Nimba-K1",
                                                                  "0000:03:00.0",
                                                                  0,
                                                                  0x4E4D,
                                                                  0x1001,
                                                                  DriverKind::kVa,
                                                                  {0, 0x30000}}}));
}

TEST(Progress, ThirdAdapterMayHaveBeenOverwritten)
{
    DiscoveryProgress progress{};
    add_adapter(progress, "0000:03:00.0");
    add_adapter(progress, "0000:04:00.0");
    add_adapter(progress, "0000:05:00.0");
    const auto adapters = finished_adapters(progress);
    ASSERT_EQ(adapters.size(), 3U);
    EXPECT_EQ(adapters[1].name, "Gpu:Nimba-K1");
    EXPECT_EQ(adapters[2], (Adapter{2,
                                    std::nullopt,
                                    "0000:05:00.0",
                                    std::nullopt,
                                    0x4E4D,
                                    std::nullopt,
                                    DriverKind::kUnknown,
                                    {0, 0x50000}}));
}

}  // namespace
}  // namespace nimba::smi
