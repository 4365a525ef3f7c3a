// SPDX-License-Identifier: MIT
#pragma once

#include "driver/machine_driver.hpp"
#include "machine.hpp"
#include "tools/archive/capture.hpp"

#include <chrono>
#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace nimba::sim {

// The path that a driver has for an encoded one of a capture; nothing for what no driver shows.
// `machine` is that of the capture.
std::optional<std::string> recorded_path(const std::string& encoded, const Machine& machine);

// What a capture's drivers showed: each sample until the next, and the last for ever. Frames go on
// within a sample as they did when it was taken. The switches "enable_usage" and "misc_ctl_flag"
// keep what is written to them; a recorded driver takes no other command. What could not be read in
// some samples alone, or each time with another error, is not there in these.
class RecordedDriver final : public MachineDriver {
  public:
    // Time begins here, and goes `speed` times as fast as the clock. `machine` is the capture's.
    RecordedDriver(std::shared_ptr<const archive::Capture> capture, const Machine& machine,
                   double speed, Clock clock);

    std::optional<NodeAttributes> look_up(const std::string& path) override;
    std::vector<std::string> list(const std::string& directory) override;
    std::optional<std::string> read(const std::string& file) override;
    int write(const std::string& file, std::string_view text) override;
    Counters counters(int card) override;

  private:
    struct RecordedNode {
        NodeAttributes attributes;
        std::shared_ptr<const std::string> text;  // of a file
        std::vector<std::string> entries;         // of a directory
    };
    struct Moment {
        std::chrono::nanoseconds begin{};
        std::map<std::string, RecordedNode> nodes;
        std::map<int, const archive::Counters*> counters;  // by card
    };

    // What could not be read, by encoded path.
    using Errors = std::unordered_map<std::string_view, std::string_view>;

    static Moment make_moment(const archive::Sample& sample, const Machine& machine,
                              const Errors& lasting);
    static void enter(Moment& moment, const std::string& path, RecordedNode node);
    std::size_t moment_now(std::chrono::nanoseconds& time) const;
    const RecordedNode* find(const std::string& path) const;
    std::optional<std::string> frame_text(const std::string& file) const;

    std::shared_ptr<const archive::Capture> capture_;
    double speed_;
    Clock clock_;
    std::chrono::nanoseconds start_;
    std::vector<Moment> moments_;
    std::mutex mutex_;                            // guards what follows
    std::map<std::string, std::string> written_;  // by path
};

}  // namespace nimba::sim
