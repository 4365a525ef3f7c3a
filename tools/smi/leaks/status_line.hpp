// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace nimba::smi {

// A line on a terminal that is written over again and again, and is gone in the end. On anything
// that is no terminal, or one that cannot clear a line, nothing is ever written.
class StatusLine final {
  public:
    // `fd`: stays the caller's.
    explicit StatusLine(int fd);
    StatusLine(const StatusLine&) = delete;
    StatusLine& operator=(const StatusLine&) = delete;
    ~StatusLine();

    [[nodiscard]] bool is_visible() const { return visible_; }

    // Puts `text`, which is printable ASCII, in place of what is shown. It is cut at the terminal's
    // edge, since a line that has gone on to the next cannot be written over.
    void show(std::string_view text);

  private:
    int fd_;
    bool visible_;
    bool shown_ = false;
};

}  // namespace nimba::smi
