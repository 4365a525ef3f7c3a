// SPDX-License-Identifier: MIT
// Single values of the current adapter's info and hwmon directories.
#include "core/current_adapter.hpp"
#include "core/node_access.hpp"
#include "core/node_buffer.hpp"
#include "core/scan_text.hpp"
#include "nimba_mgmt_interface.h"
#include "power/node_names.hpp"

namespace nimba {
namespace {

constexpr std::size_t kValueSize = 64;

struct NodeValue {
    int32_t number = 0;
    int bytes = 0;
};

NodeValue read_value(int directory, const char* name)
{
    NodeValue value;
    if (name != nullptr) {
        NodeBuffer<kValueSize> node;
        value.bytes = node.read(directory, name);
        scan_text(node.text(), "%d", &value.number);
    }
    return value;
}

}  // namespace
}  // namespace nimba

int32_t gpuinfo_get_temparature_value_int(uint32_t* count)
{
    unsigned temperature = 0;
    const int conversions =
        nimba::scanf_node_at(nimba::hwmon_directory(), "temp1_input", "%u *C", &temperature);
    *count = conversions > 0 ? 1 : 0;
    return static_cast<int32_t>(temperature);
}

int32_t gpuinfo_get_hwmonFD_value_int(int32_t index, uint32_t* count)
{
    const nimba::NodeValue value =
        nimba::read_value(nimba::hwmon_directory(), nimba::node_name(nimba::kHwmonNodes, index));
    *count = static_cast<uint32_t>(value.bytes);
    return value.number;
}

int32_t gpuinfo_get_jwinfoFD_value_int(int32_t index)
{
    return nimba::read_value(nimba::info_directory(), nimba::node_name(nimba::kInfoNodes, index))
        .number;
}

void gpuinfo_set_misc_ctl_flag(int32_t set, int32_t clear)
{
    const int32_t flag = gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MISC_CTL_FLAG);
    nimba::printf_node_at(nimba::info_directory(), "misc_ctl_flag", "%d\n", (flag & ~clear) | set);
    // The driver sees that the flag is read after every change.
    gpuinfo_get_jwinfoFD_value_int(INFO_NODE_MISC_CTL_FLAG);
}
