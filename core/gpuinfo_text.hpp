// SPDX-License-Identifier: MIT
// What the driver's file /proc/gpuinfo_<card> tells: lines of a key and its value.
#pragma once

#include "core/node_buffer.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdint>
#include <optional>

namespace nimba {

// The part of the file that is read.
class GpuinfoText final {
  public:
    // Returns whether anything was read.
    bool read(int card);

    // The text behind the key, or null.
    [[nodiscard]] const char* behind(const char* key) const { return bytes_.behind(key); }

  private:
    NodeBuffer<1024> bytes_;
};

struct DisplayOutputs {
    uint32_t count = 0;
    uint32_t types = 0;  // bits of support_CONNECT_type_list

    bool operator==(const DisplayOutputs&) const = default;
};

// The display outputs that the file tells for the chip; none when it is another chip's file. A list
// of types that is too long is told on standard output, and then there are none.
DisplayOutputs told_outputs(const GpuinfoText& text, uint32_t chip_id);

// The fields of the record that do not change: versions, firmware name, fill rates, resolutions and
// PCIe generation. The others are zero.
adapter_summary_ext2 lasting_fields(const GpuinfoText& text);

// Writes the record's fields that change, those that the file tells.
void read_changing_fields(const GpuinfoText& text, adapter_summary_ext2& record);

}  // namespace nimba
