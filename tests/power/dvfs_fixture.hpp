// SPDX-License-Identifier: MIT
// The power and DVFS settings of an adapter whose driver a test makes up, through a library that is
// loaded anew for each test: nothing was read or written before.
#pragma once

#include "adapter_nodes.hpp"
#include "node_journal.hpp"
#include "support/loaded_library.hpp"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iomanip>
#include <ostream>
#include <string>
#include <string_view>

inline bool operator==(const DvfsRegisterState& a, const DvfsRegisterState& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

// The record as its words, each with its offset.
inline void PrintTo(const DvfsRegisterState& state, std::ostream* out)
{
    const auto words = std::bit_cast<std::array<std::uint32_t, 27>>(state);
    *out << "{" << std::hex;
    for (std::size_t word = 0; word < words.size(); ++word) {
        *out << std::dec << 4 * word << ": " << std::hex << words[word] << ", ";
    }
    *out << "}" << std::dec;
}

namespace nimba::test {

using StateBytes = std::array<unsigned char, 108>;

// Settings that nothing was read into. The clocks that are whole nodes are always read: as 0 when
// there is no such node.
inline DvfsRegisterState untouched_state()
{
    DvfsRegisterState state;
    std::memset(&state, 0xEE, sizeof state);
    return state;
}
inline DvfsRegisterState untouched_state_without_clocks()
{
    DvfsRegisterState state = untouched_state();
    state.video_clock = 0;
    state.memory_clock = 0;
    return state;
}

class DvfsTest : public testing::Test {
  protected:
    DvfsTest()
    {
        function<decltype(set_print_callback)>("set_print_callback")(keep_message);
        function<decltype(gpuinfo_select_new_chip)>("gpuinfo_select_new_chip")(&adapter_.record());
        take_messages();
    }

    template <class Function>
    Function& function(const char* name) const
    {
        return library_.symbol<Function>(name);
    }

    void node(const std::string& name, std::string_view text) const
    {
        adapter_.info().write(name, text);
    }
    void remove_node(const std::string& name) const
    {
        std::filesystem::remove(adapter_.info().path() / name);
    }

    // What a record becomes when the settings are read into it.
    DvfsRegisterState read(DvfsRegisterState state = {}) const
    {
        std::uint32_t valid = 4242;
        EXPECT_EQ(function<decltype(get_data_from_dvfs_register)>("get_data_from_dvfs_register")(
                      &state, &valid),
                  0);
        EXPECT_EQ(valid, 1U);
        return state;
    }

    // What reaches the nodes, in order, when the settings are written.
    Texts write(const DvfsRegisterState& state) const
    {
        NodeJournal journal{adapter_.handles().jw_info_dir_fd};
        write_to_nodes(state);
        return journal.written();
    }
    void write_to_nodes(const DvfsRegisterState& state) const
    {
        EXPECT_EQ(
            function<decltype(set_data_to_dvfs_register)>("set_data_to_dvfs_register")(&state), 0);
    }

    std::int32_t flushed() const
    {
        return library_.symbol<decltype(dvfs_register_state_data_flushed)>(
            "dvfs_register_state_data_flushed");
    }

    // Makes every node that is written, empty.
    void show_empty_nodes() const
    {
        for (const char* name : {"power_mode", "pwm_wait_count", "dvfs_mode", "dvfs_level",
                                 "dvfs_control_params", "dvfs_clk_voltage"}) {
            node(name, "");
        }
    }

    LoadedLibrary library_;
    AdapterNodes adapter_;
};

}  // namespace nimba::test
