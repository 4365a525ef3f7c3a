// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>

namespace nimba::smi::exporting {

// The time that the collectors of an adapter have together in one scrape: twice that of one alone,
// however many there are.
class Budget final {
  public:
    explicit Budget(std::chrono::milliseconds each) : each_{each}, left_{2 * each} {}

    // How long the next may take. Nothing: it is left out.
    [[nodiscard]] std::chrono::milliseconds for_next() const;

    // A collector that had `allowed` took so long. One that was lost does not pay for the time that
    // its loss took beyond that, or a single one could leave nothing to the others.
    void spend(std::chrono::nanoseconds took, std::chrono::milliseconds allowed, bool lost);

  private:
    std::chrono::milliseconds each_;
    std::chrono::nanoseconds left_;
};

}  // namespace nimba::smi::exporting
