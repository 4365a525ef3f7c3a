// SPDX-License-Identifier: MIT
// How frames go on that were counted at two times.
#pragma once

#include "tools/archive/capture.hpp"

#include <array>
#include <chrono>
#include <optional>
#include <string>

namespace nimba::sim {

// What is counted `elapsed` after the later of the two: as many whole frames more as there were
// between them in that time. Without any between them, nothing goes on. Never more than `last`, if
// there is one.
archive::Flips flips_after(const std::array<archive::Flips, 2>& flips,
                           std::chrono::nanoseconds elapsed,
                           const std::optional<archive::Flips>& last = std::nullopt);

// The texts of the nodes that count frames.
struct FrameTexts {
    std::string fps_count;
    std::string rxa_blt_scn_cnt;
};

// The same for the nodes; nothing where nothing goes on.
std::optional<FrameTexts> frame_texts_after(const std::array<archive::FrameNodes, 2>& frames,
                                            std::chrono::nanoseconds elapsed);

}  // namespace nimba::sim
