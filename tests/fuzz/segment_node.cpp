// SPDX-License-Identifier: MIT
// The text of the segment node.
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/node_directory.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kBufferSize = 512;
constexpr std::size_t kMostBytes = 2'000;

// Returns the status of the reader.
int32_t read_plainly(const std::string& text, SegmentInfo& info)
{
    if (text.size() < 20) {
        return -1;
    }
    std::string searched = text.substr(0, kBufferSize);
    searched.resize(kBufferSize - 1);
    uint32_t count = 0;
    for (; count < SEGMENT_INFO_NUM; ++count) {
        const std::string key = "segment_id:" + std::to_string(count) + ",";
        const std::size_t at = searched.find(key);
        if (at == std::string::npos) {
            break;
        }
        const std::string behind = text.substr(at + key.size(), kBufferSize - at - key.size());
        // NOLINTNEXTLINE(cert-err34-c): scanf's rules are what the texts are defined by
        std::sscanf(behind.c_str(), "total_size:%u,used_size:%u", &info.total_size[count],
                    &info.used_size[count]);
        info.total_size[count] /= 1000;
        info.used_size[count] /= 1000;
    }
    for (uint32_t other = 5; other < count; ++other) {
        info.total_size[4] += info.total_size[other];
        info.used_size[4] += info.used_size[other];
    }
    return count > 0 ? 1 : -1;
}

}  // namespace

void try_input(std::string_view input)
{
    static NodeDirectory nodes{"segment_info"};
    static gpu_infos infos{};
    infos.jw_info_dir_fd = nodes.descriptor();
    pCurrent_gpu_infos = &infos;
    const uint8_t control = take_byte(input);
    nodes.show("segment_info", repeated(input, control, kMostBytes));
    SegmentInfo info{};
    SegmentInfo expected{};
    const int32_t status = read_plainly(nodes.text("segment_info"), expected);
    check(gpuinfo_get_segment_info(&info) == status, "segments are found where they stand");
    check(std::memcmp(&info, &expected, sizeof info) == 0, "sizes are those of the node");
}

}  // namespace nimba::fuzz
