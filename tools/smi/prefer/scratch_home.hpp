// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace nimba::smi {

// A home directory of its own with a copy of the preference file, which is removed in the end. The
// library empties a file before it writes it; there, nothing is lost when it does not get to its
// end.
class ScratchHome final {
  public:
    // Throws std::system_error when it cannot be made.
    explicit ScratchHome(std::string_view preferences);
    ScratchHome(const ScratchHome&) = delete;
    ScratchHome& operator=(const ScratchHome&) = delete;
    ~ScratchHome();

    [[nodiscard]] const std::string& home() const { return home_; }

    // The text of its preference file; nothing when it cannot be read.
    [[nodiscard]] std::optional<std::string> preferences() const;

  private:
    void fill(std::string_view preferences) const;
    void remove() const;

    std::string home_;
};

}  // namespace nimba::smi
