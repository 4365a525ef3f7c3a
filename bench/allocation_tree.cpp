// SPDX-License-Identifier: MIT
#include "bench/allocation_tree.hpp"

#include "nimba_mgmt_interface.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace nimba::bench {
namespace {

struct Shape {
    int width;
    int height;
    int hw_format;
    int at_type;
};

Shape shape_of(int number, Shapes shapes)
{
    if (shapes == Shapes::kOne) {
        return {1920, 1080, 37, 4};
    }
    if (number % 3 == 0) {
        return {64 + number, 16, 37, 2};
    }
    const int common = number % 64;
    return {64 * (1 + common % 8), 32 * (1 + common / 8), 30 + common % 4, 1 + common % 2};
}

// The numbers from 0 in an order without pattern, each once below 2^31.
unsigned scattered(int number)
{
    return static_cast<unsigned>(number) * 2654435761U & 0x7FFFFFFFU;
}

std::string info_text(int number, const Shape& shape)
{
    const int pitch = shape.width * 4;
    std::string text = fmt::format(
        "handle={:x}\ndevice={:x}\nwidth={}\nheight={}\npitch={}\nbit_cnt=32\nsecured={}\n"
        "size={}\ntile={}\ncpu_visible={}\ncache_type={}\n",
        scattered(number), 0x1000 + scattered(number) % 40, shape.width, shape.height, pitch,
        number % 2, pitch * shape.height, number % 5, number % 2, number % 3);
    text += fmt::format(
        "pool_type={}\nat_type={}\nsegmentid={}\nhw_format={}\ncompress_format={}\n"
        "bl_slot_index={}\ngpu_virt_addr={}\nimported={}\nfb_offset={}\nshare={}\n",
        number % 4, shape.at_type, number % 5, shape.hw_format, number % 7, number % 11,
        0x100000000LL + number * 4096LL, number % 2, number * 16, number % 2);
    return text;
}

}  // namespace

AllocationTree::AllocationTree(std::filesystem::path directory, int count, Shapes shapes, int first)
    : directory_{std::move(directory)}, count_{count}
{
    std::filesystem::create_directories(directory_ / "allocations");
    for (int number = first; number < first + count; ++number) {
        add(std::to_string(number), info_text(number, shape_of(number - first, shapes)));
    }
}

AllocationTree::~AllocationTree()
{
    std::error_code ignored;
    std::filesystem::remove_all(directory_, ignored);
}

void AllocationTree::add(const std::string& name, const std::string& text)
{
    const std::filesystem::path entry = directory_ / "allocations" / name;
    std::filesystem::create_directory(entry);
    std::ofstream node{entry / "info", std::ios::binary};
    node << text << std::flush;
    if (!node) {
        throw std::system_error{errno, std::generic_category(), (entry / "info").string()};
    }
    bytes_ += static_cast<std::int64_t>(text.size());
}

void AllocationTree::select() const
{
    const std::string& path = directory_.native();
    if (path.size() >= sizeof sys_kernel_debug_ID_dri_ADAPTER_path) {
        throw std::runtime_error{fmt::format("the path {} has more than {} characters", path,
                                             sizeof sys_kernel_debug_ID_dri_ADAPTER_path - 1)};
    }
    std::memcpy(sys_kernel_debug_ID_dri_ADAPTER_path, path.c_str(), path.size() + 1);
}

}  // namespace nimba::bench
