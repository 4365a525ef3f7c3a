// SPDX-License-Identifier: MIT
// What every test of discovery has: a freshly loaded library, a record, and what a call did.
#pragma once

#include "nimba_mgmt_interface.h"
#include "support/loaded_library.hpp"
#include "support/messages.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace nimba::test {

using OpenFiles = std::map<int, std::string>;

// The open descriptors of the process, each with what it is open on. Sockets do not count: a
// simulated machine keeps one for each open DRM node.
OpenFiles open_files();

// "check venderid: ..." for the vendor and device, whose numbers can be configured.
std::string check_line(unsigned vendor, unsigned device);

// A zeroed record that accepts adapters of both vendors.
find_adapter empty_record();

// A record whose every byte is 0xa5, to see which ones are written.
find_adapter patterned_record();

std::vector<std::uint8_t> bytes_of(const find_adapter& record);

class DiscoveryTest : public testing::Test {
  protected:
    DiscoveryTest();
    ~DiscoveryTest() override;

    // One gfx_find_adapter on record_; fills result_, messages_, output_ and opened_.
    void discover();

    std::uint8_t control_enable() const;
    const find_adapter_ext1& cache() const;

    const OpenFiles files_before_ = open_files();
    LoadedLibrary library_;

    find_adapter record_ = empty_record();
    std::int32_t result_ = -1;
    Texts messages_;
    std::string output_;
    OpenFiles opened_;  // by the last discovery
};

}  // namespace nimba::test
