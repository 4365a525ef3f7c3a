// SPDX-License-Identifier: MIT
#include "driver/adapter_path.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

using Components = std::vector<std::string>;

TEST(AdapterPath, TellsCardDirectoryAndWhatIsInIt)
{
    const AdapterPath path = parse_adapter_path("dri/3/jw/allocations/7/info", {});
    EXPECT_EQ(path.card, 3);
    EXPECT_TRUE(path.in_driver);
    EXPECT_EQ(path.directory, NodeDirectory::kDebug);
    EXPECT_EQ(path.components, (Components{"allocations", "7", "info"}));
    const AdapterPath proc = parse_adapter_path("proc/gpuinfo_12", {});
    EXPECT_EQ(proc.card, 12);
    EXPECT_TRUE(proc.in_driver);
    EXPECT_EQ(proc.directory, NodeDirectory::kProc);
    EXPECT_EQ(proc.components, Components{});
}

TEST(AdapterPath, DirectoryAboveTheDriversIsTheAdaptersButNotInTheDriver)
{
    for (const char* text : {"dri/3", "hwmon/3"}) {
        const AdapterPath path = parse_adapter_path(text, {});
        EXPECT_EQ(path.card, 3) << text;
        EXPECT_FALSE(path.in_driver) << text;
    }
}

TEST(AdapterPath, OtherPathsAreOfNoAdapter)
{
    for (const char* text : {"", "dri", "other/3/jw", "info/x/eclk", "info/3x/eclk", "proc/3"}) {
        const AdapterPath path = parse_adapter_path(text, {});
        EXPECT_LT(path.card, 0) << text;
        EXPECT_FALSE(path.in_driver) << text;
    }
}

TEST(AdapterPath, DirectoryBesideTheDebugDirectoryIsQvInIt)
{
    EXPECT_EQ(parse_adapter_path("dri/2/qv/devices", {2}).components,
              (Components{"qv", "devices"}));
    EXPECT_EQ(parse_adapter_path("dri/3/qv/devices", {2}).components, (Components{"devices"}));
    EXPECT_EQ(parse_adapter_path("dri/2/jw/devices", {2}).components, (Components{"devices"}));
}

TEST(PathComponents, AreWhatIsBetweenSlashes)
{
    EXPECT_EQ(path_components(""), Components{});
    EXPECT_EQ(path_components("info"), (Components{"info"}));
    EXPECT_EQ(path_components("a//b/"), (Components{"a", "", "b"}));
}

TEST(PathPattern, IsForWhatIsBelowToo)
{
    EXPECT_TRUE(starts_with({"allocations", "7", "info"}, {"allocations", "*"}));
    EXPECT_TRUE(starts_with({"info"}, {}));
    EXPECT_FALSE(starts_with({"allocations"}, {"allocations", "*"}));
    EXPECT_FALSE(starts_with({"devices", "7"}, {"allocations", "*"}));
}

}  // namespace
}  // namespace nimba::sim::test
