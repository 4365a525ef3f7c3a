// SPDX-License-Identifier: MIT
#pragma once

namespace nimba {

// A static value that is never destroyed: a host's exit handler may call the library after its
// static destructors ran.
template <typename Value>
union NeverDestroyed {
    constexpr NeverDestroyed() : value{} {}
    NeverDestroyed(const NeverDestroyed&) = delete;
    NeverDestroyed& operator=(const NeverDestroyed&) = delete;
    ~NeverDestroyed() {}

    Value value;
};

}  // namespace nimba
