// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/exit_status.hpp"

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {

// What could not be read, and how a user is told.
class Unread final {
  public:
    // `error`: as DeadlineReader tells it. What is not there counts for nothing, nor does what is
    // known of a sample before.
    void add(std::size_t sample, const std::string& path, int error);

    // `error`: the name of an errno.
    void add(std::size_t sample, const std::string& path, const std::string& error);

    // A node that was not read; any other counts for nothing.
    void add(std::size_t sample, const archive::Node& node);

    [[nodiscard]] const std::vector<archive::ReadError>& errors() const { return errors_; }

    // One sentence for each error, with the first node that it befell.
    [[nodiscard]] std::vector<Problem> problems() const;

  private:
    void add(archive::ReadError error);

    std::vector<archive::ReadError> errors_;
    std::set<std::pair<std::string, std::string>> known_;  // paths with their errors
};

}  // namespace nimba::smi
