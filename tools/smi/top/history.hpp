// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

namespace nimba::smi::top {

// The latest values of one figure, one for each sample. A sample that does not have the figure
// leaves a gap.
class History final {
  public:
    explicit History(std::size_t capacity) : ring_(capacity) {}

    void add(std::optional<double> value);

    // Samples that are kept.
    [[nodiscard]] std::size_t size() const { return size_; }

    // The value `age` samples before the newest; nothing for a gap and beyond the oldest.
    [[nodiscard]] std::optional<double> at_age(std::size_t age) const;

    // The largest of the newest `count` samples; nothing when all are gaps.
    [[nodiscard]] std::optional<double> largest(std::size_t count) const;

  private:
    std::vector<std::optional<double>> ring_;
    std::size_t next_ = 0;
    std::size_t size_ = 0;
};

}  // namespace nimba::smi::top
