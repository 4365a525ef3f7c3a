// SPDX-License-Identifier: MIT
#include "kernel_interface_reader.hpp"

#include "claims.hpp"
#include "key_problem.hpp"
#include "product.hpp"

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <limits>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace nimba::sim {
namespace {

constexpr std::array<std::string_view, 5> kKernelInterfaceKeys{
    "file", "size_function", "struct_size", "counters", "init_result"};

constexpr std::array<std::string_view, 3> kSizeFunctions{"gfx_get_struct_size",
                                                         "qv_get_struct_size", "none"};
constexpr uint32_t kDefaultStructSize = 4096;

constexpr std::array<std::string_view, 11> kCounters{
    "gfx_flip_count",         "gfx_init_hwinfo",    "gfx_deinit_hwinfo",
    "gfx_get_hwinfo",         "gfx_get_hwinfo_ext", "gfx_get_usage_info",
    "gfx_get_usage_info_ext", "qv_init_hwinfo",     "qv_deinit_hwinfo",
    "qv_get_hwinfo",          "qvGetHwqInfo"};
constexpr auto kCountersOfGfx = std::span{kCounters}.first<7>();
constexpr auto kCountersOfQv = std::span{kCounters}.last<4>();

// The library of the older family, whose entry points have names of their own.
constexpr std::string_view kLibraryOfQv = "libhwbridge_qv.so.0.0.0";

std::set<std::string> default_counters(std::string_view file)
{
    const std::span<const std::string_view> counters =
        file == kLibraryOfQv ? std::span<const std::string_view>{kCountersOfQv} : kCountersOfGfx;
    return {counters.begin(), counters.end()};
}

KernelInterface default_kernel_interface(std::string_view file)
{
    return {std::string{file}, std::string{kSizeFunctions.front()}, kDefaultStructSize,
            default_counters(file), 0};
}

std::set<std::string> read_counters(const TableReader& reader)
{
    const auto counters = reader.texts("counters");
    for (std::size_t index = 0; index < counters.size(); ++index) {
        if (std::ranges::find(kCounters, counters[index]) == kCounters.end()) {
            reader.reject_item("counters", index, one_of(kCounters));
        }
    }
    return {counters.begin(), counters.end()};
}

KernelInterface read_kernel_interface(const TableReader& reader, Claims& claims)
{
    KernelInterface library =
        default_kernel_interface(reader.choice("file", kernel_interface_files()));
    claims.take("file name", library.file, reader, "file");
    if (reader.has("size_function")) {
        library.size_function = reader.choice("size_function", kSizeFunctions);
    }
    library.struct_size = static_cast<uint32_t>(reader.integer_or(
        "struct_size", 0, std::numeric_limits<uint32_t>::max(), kDefaultStructSize));
    if (reader.has("counters")) {
        library.counters = read_counters(reader);
    }
    library.init_result =
        static_cast<int32_t>(reader.integer_or("init_result", std::numeric_limits<int32_t>::min(),
                                               std::numeric_limits<int32_t>::max(), 0));
    return library;
}

// One library for each file that an adapter's chip needs.
std::vector<KernelInterface> default_kernel_interfaces(const std::vector<Adapter>& adapters)
{
    std::set<std::string_view> files;
    for (const Adapter& adapter : adapters) {
        for (const Chip& chip : chips()) {
            if (chip.vendor == adapter.pci.vendor && chip.device == adapter.pci.device) {
                files.insert(chip.kernel_interface);
            }
        }
    }
    std::vector<KernelInterface> libraries;
    libraries.reserve(files.size());
    std::ranges::transform(files, std::back_inserter(libraries), default_kernel_interface);
    return libraries;
}

}  // namespace

std::vector<KernelInterface> read_kernel_interfaces(const TableReader& machine,
                                                    const std::vector<Adapter>& adapters)
{
    if (!machine.has("kernel_interface")) {
        return default_kernel_interfaces(adapters);
    }
    Claims claims;
    std::vector<KernelInterface> libraries;
    for (const TableReader& table : machine.tables("kernel_interface", kKernelInterfaceKeys)) {
        libraries.push_back(read_kernel_interface(table, claims));
    }
    return libraries;
}

}  // namespace nimba::sim
