// SPDX-License-Identifier: MIT
#pragma once

#include "adapter_power.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nimba::sim {

// An adapter's power settings, and the clocks that come of them and of the load. The texts are
// those of nodes; a writer carries out one command of a node, and returns whether it understood it.
class Dvfs {
  public:
    explicit Dvfs(const AdapterClocks& description);

    void set_load(double percent) { load_ = percent; }

    ClockSet clocks() const;
    int64_t core_clock() const { return description_.core; }

    std::string power_mode_text() const;
    std::string gating_text() const;
    std::string mode_text() const;
    std::string parameters_text() const;
    std::string clock_voltage_text() const;
    std::string level_text() const;

    bool write_power_mode(std::string_view command);
    bool write_gating(std::string_view command);
    bool write_mode(std::string_view command);
    bool write_parameter(std::string_view command);
    bool write_clock_or_voltage(std::string_view command);
    bool write_level(std::string_view command);

  private:
    static constexpr std::size_t kGatingKinds = 2;      // power, clock
    static constexpr std::size_t kGatedEngines = 3;     // 3D, VCP, VPP
    static constexpr std::size_t kWatchedEngines = 4;   // GFX, VCP0, VCP1, VPP
    static constexpr std::size_t kWatchParameters = 3;  // check size, high and low threshold

    ClockSet unheld_clocks() const;

    AdapterClocks description_;
    double load_ = 0;
    uint32_t power_mode_ = 1;
    std::array<std::array<uint16_t, kGatingKinds>, kGatedEngines> gating_{};
    std::array<std::array<uint32_t, kWatchParameters>, kWatchedEngines> parameters_{};
    DvfsMode mode_;
    DvfsLevel level_;
    std::optional<int64_t> held_engine_;  // set by hand
    std::optional<int64_t> held_voltage_;
};

}  // namespace nimba::sim
