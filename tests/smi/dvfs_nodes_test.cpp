// SPDX-License-Identifier: MIT
#include "tools/smi/worker/dvfs_nodes.hpp"

#include "dvfs_readings.hpp"
#include "tools/descriptor.hpp"

#include <fcntl.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace nimba::smi {
namespace {

class InfoNodes : public ::testing::Test {
  protected:
    void SetUp() override
    {
        std::string name = std::filesystem::temp_directory_path() / "dvfs-nodes.XXXXXX";
        ASSERT_NE(::mkdtemp(name.data()), nullptr);
        path_ = name;
        descriptor_ = tools::Descriptor{::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    }
    void TearDown() override { std::filesystem::remove_all(path_); }

    void make_node(const char* name, std::string_view text) const
    {
        std::ofstream{path_ / name} << text;
    }
    [[nodiscard]] InfoDirectory directory() const { return {descriptor_.get(), "/info"}; }

    std::filesystem::path path_;
    tools::Descriptor descriptor_;
};

TEST_F(InfoNodes, CanBeReadAndWritten)
{
    make_node("vclk", "600\n");
    EXPECT_EQ(access_to(directory(), "vclk"), (NodeAccess{"vclk", "/info/vclk", 0, 0}));
}

TEST_F(InfoNodes, MayBeMissingOrUnreadable)
{
    EXPECT_EQ(access_to(directory(), "vclk"), (NodeAccess{"vclk", "/info/vclk", ENOENT, ENOENT}));
    std::filesystem::create_directory(path_ / "mclk");
    EXPECT_EQ(access_to(directory(), "mclk").read_error, EISDIR);
}

TEST_F(InfoNodes, AreMissingWithTheirDirectory)
{
    EXPECT_EQ(access_to({-1, "/nonexistent/jw_info"}, "vclk"),
              (NodeAccess{"vclk", "/nonexistent/jw_info", ENOENT, ENOENT}));
    EXPECT_EQ(access_to({-1, "/dev/null"}, "vclk"),
              (NodeAccess{"vclk", "/dev/null", ENOTDIR, ENOTDIR}));
    EXPECT_EQ(access_to({-1, "/"}, "vclk"), (NodeAccess{"vclk", "/", ENOENT, ENOENT}));
}

TEST_F(InfoNodes, GiveANumberOnlyWhenTheyBeginWithOne)
{
    make_node("vclk", "600 MHz\n");
    make_node("mclk", "");
    EXPECT_TRUE(begins_with_number(directory(), "vclk"));
    EXPECT_FALSE(begins_with_number(directory(), "mclk"));
    EXPECT_FALSE(begins_with_number(directory(), "eclk"));
}

TEST(DvfsReading, TravelsAndComesBack)
{
    DvfsReading reading = reading_of({{"gfx_clock", -800}, {"dvfs_mode", 4294967295}});
    reading.nodes.front().read_error = EIO;
    const DvfsWriting writing{reading.bus_id, reading, reading_of({})};
    EXPECT_EQ(payload_from<DvfsWriting>(to_json_value(writing)), writing);
    EXPECT_EQ(payload_from<DvfsReading>(to_json_value(reading)), reading);
    EXPECT_EQ(payload_from<DvfsReading>(nlohmann::json::parse(R"({"values": 1})")), std::nullopt);
}

TEST(DvfsReading, GivesTheValuesOfItsFields)
{
    const DvfsReading reading = reading_of({{"dvfs_mode", 0}});
    EXPECT_EQ(value_of(reading, *find_field("dvfs_mode")), 0);
    EXPECT_EQ(value_of(reading, *find_field("dvfs_level")), std::nullopt);
    EXPECT_EQ(value_of(DvfsReading{}, *find_field("dvfs_mode")), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
