// SPDX-License-Identifier: MIT
#include "adapter_states.hpp"
#include "tools/smi/overview/csv.hpp"
#include "tools/smi/text/csv.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(OverviewCsv, HasAColumnForEachFigureOfAnAdapter)
{
    EXPECT_EQ(csv_text({overview_csv_header()}),
              "slot,bus_id,name,card,driver,driver_version,firmware_version,pcie_generation,"
              "pcie_lanes,memory_used_bytes,memory_total_bytes,devices,engine_clock,video_clock,"
              "memory_clock,core_clock,gfx_clock,gfx_voltage,dvfs_level,temperature_celsius,fan0,"
              "fan1,fan_speed,flips_per_second,blits_per_second,frames_per_second,"
              "average_per_second,engine_3d_percent,engine_vcp_percent,engine_vpp_percent,"
              "bandwidth_words_0,bandwidth_words_1,bandwidth_words_2,bandwidth_words_3,"
              "bandwidth_words_4,bandwidth_words_5,bandwidth_words_6,bandwidth_words_7,"
              "bandwidth_words_8,bandwidth_words_9,bandwidth_words_10,bandwidth_words_11,"
              "busy_words_0,busy_words_1,busy_words_2,busy_words_3,busy_words_4,busy_words_5,"
              "busy_words_6,busy_words_7,busy_words_8,busy_words_9\n");
    EXPECT_EQ(csv_text({overview_csv_row(busy_adapter())}),
              "0,0000:01:00.0,Gpu0:Nimba-K6,1,va,1.2.a,8.f.0.1c,4,16,3000000000,4000000000,2,550,"
              "350,1000,600,550,800,balance,72,1600,1650,,,,,,95,30,0,,,,,,,,,,,,,,,,,,,,,,\n");
}

TEST(OverviewCsv, IsEmptyWhereNothingIsKnown)
{
    EXPECT_EQ(csv_text({overview_csv_row(unknown_adapter())}),
              "1,0000:02:00.0,,,unknown,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,,\n");
    EXPECT_EQ(overview_csv_row(unknown_adapter()).size(), overview_csv_header().size());
}

}  // namespace
}  // namespace nimba::smi
