// SPDX-License-Identifier: MIT
// An adapter whose driver parses each command and answers the next read from its new state.
#pragma once

#include "machine_fixture.hpp"

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

namespace nimba::test {

inline bool operator==(const DvfsRegisterState& one, const DvfsRegisterState& other)
{
    return std::memcmp(&one, &other, sizeof one) == 0;
}

inline constexpr std::uint32_t kUntouched = 0xA5A5A5A5;

// What a shell command writes.
inline std::string output_of(const std::string& command)
{
    struct Close {
        void operator()(std::FILE* pipe) const { ::pclose(pipe); }
    };
    const std::unique_ptr<std::FILE, Close> pipe{::popen(command.c_str(), "r")};
    std::string output;
    std::array<char, 4096> part{};
    std::size_t length = 0;
    while ((length = std::fread(part.data(), 1, part.size(), pipe.get())) > 0) {
        output.append(part.data(), length);
    }
    return output;
}

// A Nimba K5 under a load that never changes.
class SteadyAdapter : public MachineTest {
  protected:
    SteadyAdapter()
    {
        discover();
        EXPECT_GT(init(0), 0);
        live_ = drivers_are_live();
        if (live_) {
            EXPECT_EQ(output_of("nimba-sim commands --clear 2>&1"), "");
        }
    }
    ~SteadyAdapter() override
    {
        if (live_) {
            EXPECT_EQ(output_of("nimba-sim fault --clear 2>&1"), "");
        }
        exit(0);
    }

    void SetUp() override
    {
        if (!live_) {
            GTEST_SKIP() << "needs live drivers";
        }
    }

    static void fault(const std::string& arguments)
    {
        ASSERT_EQ(output_of("nimba-sim fault " + arguments + " 2>&1"), "");
    }

    DvfsRegisterState read() const
    {
        DvfsRegisterState state{};
        state.dvfs_level = kUntouched;
        state.reserved0[0] = 0;
        read_into(state);
        return state;
    }

    void read_into(DvfsRegisterState& state) const
    {
        auto& get =
            library_.symbol<decltype(get_data_from_dvfs_register)>("get_data_from_dvfs_register");
        std::uint32_t valid = 0;
        EXPECT_EQ(get(&state, &valid), 0);
        EXPECT_EQ(valid, 1U);
    }

    void write(const DvfsRegisterState& state) const
    {
        auto& set =
            library_.symbol<decltype(set_data_to_dvfs_register)>("set_data_to_dvfs_register");
        EXPECT_EQ(set(&state), 0);
    }

    std::int32_t info_value(info_node node) const
    {
        return library_.symbol<decltype(gpuinfo_get_jwinfoFD_value_int)>(
            "gpuinfo_get_jwinfoFD_value_int")(node);
    }

    // The temperature, or nothing where none could be read.
    std::string temperature() const
    {
        std::uint32_t count = kUntouched;
        const std::int32_t value = library_.symbol<decltype(gpuinfo_get_temparature_value_int)>(
            "gpuinfo_get_temparature_value_int")(&count);
        return count == 1 ? std::to_string(value) : "";
    }

    std::int32_t segments(SegmentInfo& info) const
    {
        return library_.symbol<decltype(get_segment_info)>("get_segment_info")(&info);
    }

    std::int32_t init_segments()
    {
        return library_.symbol<decltype(segment_init)>("segment_init")(&record_);
    }

    bool live_ = false;
};

// What the driver shows at the start, with a clock and a voltage of its own while it is automatic.
inline DvfsRegisterState steady_state()
{
    DvfsRegisterState state{};
    state.power_mode = 1;
    state.power_gating_3d = 0x64;
    state.clock_gating_3d = 0x10;
    state.power_gating_vcp = 0x64;
    state.clock_gating_vcp = 0x10;
    state.power_gating_vpp = 0x64;
    state.clock_gating_vpp = 0x10;
    state.dvfs_mode = 1;
    state.gfx_check_size = state.vcp0_check_size = 0x40;
    state.vcp1_check_size = state.vpp_check_size = 0x40;
    state.gfx_high_threshold = state.vcp0_high_threshold = 0x50;
    state.vcp1_high_threshold = state.vpp_high_threshold = 0x50;
    state.gfx_low_threshold = state.vcp0_low_threshold = 0x1E;
    state.vcp1_low_threshold = state.vpp_low_threshold = 0x1E;
    state.gfx_clock = 550;
    state.video_clock = 350;
    state.gfx_voltage = 800;
    state.memory_clock = 1000;
    state.dvfs_level = DVFS_LEVEL_BALANCE;
    return state;
}

}  // namespace nimba::test
