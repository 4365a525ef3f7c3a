// SPDX-License-Identifier: MIT
// The texts of the heaps' nodes.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/node_directory.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <array>
#include <cstdlib>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::array kNodes{"heaps/heap_invalid/info", "heaps/heap_local/info",
                            "heaps/heap_pcie_unsnoop/info", "heaps/heap_pcie_snoop/info"};
constexpr std::size_t kBufferSize = 512;
constexpr std::size_t kMostBytes = 2'000;

NodeDirectory& nodes()
{
    static NodeDirectory nodes{kNodes[0], kNodes[1], kNodes[2], kNodes[3]};
    return nodes;
}

// Returns whether the key is there.
bool read_size(const std::string& buffer, const std::string& key, uint32_t& mebibytes)
{
    const std::size_t at = buffer.substr(0, kBufferSize - 1).find(key);
    if (at == std::string::npos) {
        return false;
    }
    const std::string behind = buffer.substr(at + key.size());
    mebibytes = static_cast<uint32_t>(std::strtoul(behind.c_str(), nullptr, 10)) / 0x100000;
    return true;
}

int32_t read_plainly(SegmentInfo& info)
{
    std::string buffer(kBufferSize, '\0');
    for (std::size_t heap = 0; heap < kNodes.size(); ++heap) {
        const std::string text = nodes().text(kNodes[heap]).substr(0, kBufferSize);
        buffer.replace(0, text.size(), text);
        if (!read_size(buffer, "Total segment size:  ", info.total_size[heap]) ||
            !read_size(buffer, "KMD used segment memory:  ", info.used_size[heap])) {
            return -1;
        }
    }
    info.total_size[kNodes.size()] = 0;
    info.used_size[kNodes.size()] = 0;
    return 1;
}

}  // namespace

void try_input(std::string_view input)
{
    const std::string path = nodes().path();
    check(path.size() < sizeof sys_kernel_debug_ID_dri_ADAPTER_path, "TMPDIR is short");
    std::strcpy(sys_kernel_debug_ID_dri_ADAPTER_path, path.c_str());
    const uint8_t control = take_byte(input);
    const std::vector<std::string_view> texts = split_into(input, kNodes.size());
    for (std::size_t heap = 0; heap < kNodes.size(); ++heap) {
        nodes().show(kNodes[heap], repeated(texts[heap], control, kMostBytes));
    }
    SegmentInfo info{};
    std::memset(&info, 0xA5, sizeof info);
    SegmentInfo expected = info;
    const int32_t status = read_plainly(expected);
    check(gpuinfo_get_kmd_segment_info(&info, 0) == status, "a heap without a size ends the list");
    check(std::memcmp(&info, &expected, sizeof info) == 0, "sizes are those of the nodes");
}

}  // namespace nimba::fuzz
