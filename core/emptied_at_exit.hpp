// SPDX-License-Identifier: MIT
#pragma once

namespace nimba {

// Empties a global value when the static objects of the library are destroyed: a host's exit
// handler that calls the library after that finds it empty, not with memory that was given back.
// Stands behind the value in its file, so that it goes first.
template <typename Value>
class EmptiedAtExit final {
  public:
    explicit EmptiedAtExit(Value& value) : value_{value} {}
    EmptiedAtExit(const EmptiedAtExit&) = delete;
    EmptiedAtExit& operator=(const EmptiedAtExit&) = delete;
    ~EmptiedAtExit() { value_ = Value{}; }

  private:
    Value& value_;
};

}  // namespace nimba
