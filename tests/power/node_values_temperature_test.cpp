// SPDX-License-Identifier: MIT
#include "adapter_nodes.hpp"
#include "support/captured_stdout.hpp"

#include <cstdint>
#include <filesystem>
#include <string>

namespace nimba::test {
namespace {

struct Scan {
    std::int32_t value;
    std::uint32_t count;

    bool operator==(const Scan&) const = default;
};

void PrintTo(const Scan& scan, std::ostream* out)
{
    *out << scan.value << ", " << scan.count << " values";
}

Scan temperature()
{
    std::uint32_t count = 4242;
    const std::int32_t value = gpuinfo_get_temparature_value_int(&count);
    return {value, count};
}

class Temperature : public AdapterNodesTest {
  protected:
    Scan temperature_of(std::string_view text) const
    {
        hwmon("temp1_input", text);
        return temperature();
    }
};

TEST_F(Temperature, IsTheNumberThatBeginsTheNodeWhateverItsUnit)
{
    EXPECT_EQ(temperature_of("45 *C\n"), (Scan{45, 1}));
    EXPECT_EQ(temperature_of("45000\n"), (Scan{45000, 1}));
    EXPECT_EQ(temperature_of("45"), (Scan{45, 1}));
    EXPECT_EQ(temperature_of("45*C\n"), (Scan{45, 1}));
    EXPECT_EQ(temperature_of("45 F\n"), (Scan{45, 1}));
    EXPECT_EQ(temperature_of("45.5 *C\n"), (Scan{45, 1}));
    EXPECT_EQ(temperature_of("0 *C\n"), (Scan{0, 1}));
    EXPECT_EQ(temperature_of(" \n\t7 *C\n"), (Scan{7, 1}));
    EXPECT_EQ(temperature_of("45 *C\n99 *C\n"), (Scan{45, 1}));
}

TEST_F(Temperature, IsReadAsAnUnsignedNumber)
{
    EXPECT_EQ(temperature_of("2147483647\n"), (Scan{2147483647, 1}));
    EXPECT_EQ(temperature_of("4294967295\n"), (Scan{-1, 1}));
    EXPECT_EQ(temperature_of("4294967286 *C\n"), (Scan{-10, 1}));
    EXPECT_EQ(temperature_of("-5 *C\n"), (Scan{-5, 1}));
}

TEST_F(Temperature, IsNoValueInANodeWithoutANumber)
{
    EXPECT_EQ(temperature_of(""), (Scan{0, 0}));
    EXPECT_EQ(temperature_of("\n"), (Scan{0, 0}));
    EXPECT_EQ(temperature_of("x"), (Scan{0, 0}));
    EXPECT_EQ(temperature_of("*C 45\n"), (Scan{0, 0}));
    EXPECT_EQ(temperature_of("- 5"), (Scan{0, 0}));
    EXPECT_EQ(temperature_of("\xff"), (Scan{0, 0}));
    EXPECT_EQ(temperature_of({"\00045", 3}), (Scan{0, 0}));
}

TEST_F(Temperature, EndsAtANulInTheText)
{
    EXPECT_EQ(temperature_of({"4\0005", 3}), (Scan{4, 1}));
}

TEST_F(Temperature, IsNoValueWithoutTheNode)
{
    EXPECT_EQ(temperature(), (Scan{0, 0}));
    info("temp1_input", "45 *C\n");
    EXPECT_EQ(temperature(), (Scan{0, 0}));
}

TEST_F(Temperature, IsNoValueWhenTheNodeCannotBeRead)
{
    std::filesystem::create_directory(adapter_.hwmon().path() / "temp1_input");
    EXPECT_EQ(temperature(), (Scan{0, 0}));
}

TEST_F(Temperature, IsNoValueWithoutTheDirectory)
{
    hwmon("temp1_input", "45 *C\n");
    adapter_.handles().hwmon_dir_fd = -1;
    EXPECT_EQ(temperature(), (Scan{0, 0}));
}

TEST_F(Temperature, IsNoValueBeforeAnAdapterIsCurrent)
{
    hwmon("temp1_input", "45 *C\n");
    pCurrent_gpu_infos = nullptr;
    EXPECT_EQ(temperature(), (Scan{0, 0}));
}

TEST_F(Temperature, IsReadAnewEachTime)
{
    EXPECT_EQ(temperature_of("45 *C\n"), (Scan{45, 1}));
    EXPECT_EQ(temperature_of("x"), (Scan{0, 0}));
    EXPECT_EQ(temperature_of("46 *C\n"), (Scan{46, 1}));
    std::filesystem::remove(adapter_.hwmon().path() / "temp1_input");
    EXPECT_EQ(temperature(), (Scan{0, 0}));
}

TEST_F(Temperature, LeavesNoDescriptorOpenAndIsSilent)
{
    const auto descriptors = open_descriptors();
    const std::string output = stdout_of([this] {
        temperature();
        temperature_of("45 *C\n");
        temperature_of("");
    });
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(output, "");
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
