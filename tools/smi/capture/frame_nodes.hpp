// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/capture/node_reader.hpp"
#include "tools/smi/capture/sampler.hpp"

#include <chrono>
#include <map>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// Reads what counts frames at two times: when it is made, and when the counters are merged.
class FrameNodeReader final {
  public:
    FrameNodeReader(DeadlineReader& reader, std::span<const NodeOwner> owners);

    // Whether an adapter has such nodes.
    [[nodiscard]] bool any() const { return !first_.empty(); }

    // The counters of both times in one record for each adapter; what does not count frames is that
    // of the first time.
    std::vector<archive::Counters> merged(std::vector<archive::Counters> first,
                                          const std::vector<archive::Counters>& last);

  private:
    std::map<std::string, archive::FrameNodes> read(std::span<const NodeOwner> owners);

    DeadlineReader& reader_;
    std::vector<NodeOwner> owners_;
    std::chrono::steady_clock::time_point begin_{std::chrono::steady_clock::now()};
    std::map<std::string, archive::FrameNodes> first_;  // by bus id
};

}  // namespace nimba::smi
