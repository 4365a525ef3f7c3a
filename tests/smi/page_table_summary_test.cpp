// SPDX-License-Identifier: MIT
#include "page_table_spaces.hpp"
#include "tools/smi/pagetable/summary.hpp"

#include <gtest/gtest.h>

#include <vector>

namespace nimba::smi {
namespace {

TEST(SpaceSums, CountMappedBytesByPageSizeAndSegment)
{
    const ProcessSpace process = viewer(
        {page(2048, 0, "1000"), page(2048, 1, "2000"), page(2048, 2, "3000", 900),
         PageRecord{1, 1, 1, 4, 1, 0, 4, "40000000"}, PageRecord{2, 9, 2, 2048, 1, 0, 1, "0"}});
    const SpaceSums sums = sums_of(process.device, process.space);
    const SpaceSums expected{{1, 1, 1},
                             {0, 0, 5},
                             {{4096, 12288}, {65536, 65536}, {2097152, 2097152}},
                             {8192, 65536, 0, 0, 2101248},
                             2174976};
    EXPECT_EQ(sums, expected);
}

TEST(Summary, HasColumnsForWhatIsThere)
{
    const std::vector<ProcessSums> processes{
        {{0, "4100001", "viewer", {}, {}},
         {{1, 2, 3}, {0, 0, 10}, {{4096, 40960}}, {40960, 0, 0, 0, 0}, 40960}},
        {{1, "x\n", "", {}, {}},
         {{1, 1, 1}, {0, 0, 1}, {{65536, 65536}}, {0, 0, 0, 0, 65536}, 65536}}};
    EXPECT_EQ(summary_text(processes),
              "PID      L0  L1  L2  PAGES   4 KiB  64 KiB   SEG 0  SEG 4+   MAPPED  PROCESS\n"
              "4100001   1   2   3     10  40 KiB     0 B  40 KiB     0 B   40 KiB  viewer\n"
              "x\\x0a     1   1   1      1     0 B  64 KiB     0 B  64 KiB   64 KiB  -\n"
              "all       2   3   4     11  40 KiB  64 KiB  40 KiB  64 KiB  104 KiB\n");
}

TEST(Summary, TellsPagesByLevelWhenNotAllAreOfLevel2)
{
    const std::vector<ProcessSums> processes{
        {{0, "7", "maze", {}, {}}, {{1, 2, 3}, {4, 5, 6}, {}, {}, 0}}};
    EXPECT_EQ(summary_text(processes),
              "PID  L0  L1  L2  PAGES L0  PAGES L1  PAGES L2  MAPPED  PROCESS\n"
              "7     1   2   3         4         5         6     0 B  maze\n"
              "all   1   2   3         4         5         6     0 B\n");
}

}  // namespace
}  // namespace nimba::smi
