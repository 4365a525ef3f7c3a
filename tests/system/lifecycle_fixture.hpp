// SPDX-License-Identifier: MIT
// A freshly loaded library and a discovery record that is filled by hand.
#pragma once

#include "nimba_mgmt_interface.h"
#include "search_directory.hpp"
#include "stub/kernel_interface_stub.h"
#include "support/descriptor.hpp"
#include "support/environment.hpp"
#include "support/loaded_library.hpp"
#include "support/messages.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

namespace nimba::test {

constexpr const char* kNimbaLibrary = "libnimbahwbridge_v2.so.0.0.0";
constexpr const char* kMv9Library = "libmv9hwbridge_v2.so.0.0.0";
constexpr const char* kMv9Fallback = "libdrm_mv9.so.0.0.0";
constexpr const char* kQvLibrary = "libhwbridge_qv.so.0.0.0";

constexpr const char* kStartMessage = "initGPUPreference_config.\n ";
constexpr const char* kStopMessage = "uninitGPUPreference_config.\n ";

class LifecycleTest : public testing::Test {
  protected:
    LifecycleTest();
    ~LifecycleTest() override;

    // Fills a slot of record_: its DRM descriptor is 40 + slot, which nothing uses, its info
    // directory holds the node "enable_usage" with the text "?".
    void fill_slot(int slot, std::uint32_t chip_id, int card);
    // The text of the slot's node "enable_usage".
    std::string usage(int slot) const;

    // Installs a stub under the name of a kernel-interface library and returns its state.
    kernel_interface_state& use_kernel_interface(const char* name,
                                                 const char* stub = "kernel_interface_gfx");

    std::int32_t init(int slot);
    std::int32_t exit(std::int32_t slot);

    template <class Type>
    Type& global(const char* name) const
    {
        return library_.symbol<Type>(name);
    }
    void* block() const { return global<void*>("pdev"); }
    const char* debug_path() const
    {
        return global<char[50]>("sys_kernel_debug_ID_dri_ADAPTER_path");
    }

    TempDirectory home_;
    ScopedVariable home_variable_{"HOME", home_.path().string()};
    std::deque<TempDirectory> info_directories_{3};
    std::deque<Descriptor> info_descriptors_;
    find_adapter record_{};
    LoadedLibrary library_;
    std::deque<HeldLibrary> kernel_interfaces_;
};

}  // namespace nimba::test
