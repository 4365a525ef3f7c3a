// SPDX-License-Identifier: MIT
// A freshly loaded library, and kernel-interface libraries whose counters a test makes up.
#pragma once

#include "stub/kernel_counters_stub.h"
#include "system/lifecycle_fixture.hpp"

#include <cstdint>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace nimba::test {

using Words = std::vector<std::uint32_t>;

// A call of a function of the kernel-interface library.
struct CounterCall {
    std::string function;
    std::int32_t drm_fd = 0;
    const void* block = nullptr;
    void* record = nullptr;
    Words words;  // of the record, as it came
};

// A caller's record, full of 0xEE before anything writes it.
template <class Record>
Record unwritten_record()
{
    Record record;
    std::memset(static_cast<void*>(&record), 0xEE, sizeof record);
    return record;
}

constexpr std::uint32_t kUnwritten = 0xEEEEEEEE;

class KernelCountersTest : public LifecycleTest {
  protected:
    static constexpr std::int32_t kDrmFd = 40;

    KernelCountersTest();
    ~KernelCountersTest() override;

    // Makes an adapter of this chip current, with the stub as its library; forgets the calls and
    // messages of that. Returns what gfx_global_init does.
    std::int32_t start(const std::string& stub, std::uint32_t chip = DEVICE_ID_NIMBA_K1);
    // The same for another chip of the library that is there already.
    std::int32_t start_again(std::uint32_t chip);

    // Calls the exported function without arguments.
    std::int32_t call(const char* function) const { return global<std::int32_t()>(function)(); }

    // The calls since the last one of this, and their functions alone.
    std::vector<CounterCall> take_calls();
    Texts take_called();

    // What functions of the kernel-interface library return, 0 when absent, and the words that they
    // write to their record, none when absent.
    std::map<std::string, std::int32_t> results_{{"gfx_get_struct_size", 64},
                                                 {"qv_get_struct_size", 64}};
    std::map<std::string, Words> answers_;

  private:
    friend std::int32_t(::kernel_counters_called)(const char* function, std::int32_t drm_fd,
                                                  const void* block, void* record);

    std::vector<CounterCall> calls_;
};

}  // namespace nimba::test
