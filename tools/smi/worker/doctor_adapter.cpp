// SPDX-License-Identifier: MIT
#include "tools/smi/worker/doctor_adapter.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"
#include "tools/smi/doctor/chip_libraries.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/dvfs_nodes.hpp"
#include "tools/smi/worker/loaded_file.hpp"
#include "tools/smi/worker/node_text.hpp"

#include <dlfcn.h>
#include <fcntl.h>

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

constexpr std::array kSizeFunctions{"gfx_get_struct_size", "qv_get_struct_size"};
constexpr std::array kFigureFunctions{
    "gfx_flip_count",     "gfx_init_hwinfo",        "gfx_deinit_hwinfo", "gfx_get_hwinfo",
    "gfx_get_hwinfo_ext", "qv_init_hwinfo",         "qv_deinit_hwinfo",  "qv_get_hwinfo",
    "gfx_get_usage_info", "gfx_get_usage_info_ext", "qvGetHwqInfo"};

int directory_error(const std::string& path)
{
    const tools::Descriptor directory{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    return directory ? 0 : errno;
}

NodeFact directory_fact(Session& session, const std::string& path)
{
    return {path, session.call("open " + path, [&] { return directory_error(path); })};
}

NodeFact file_fact(Session& session, const std::string& path)
{
    return {path,
            session.call("open " + path, [&] { return node_text(AT_FDCWD, path.c_str()).error; })};
}

std::string device_directory(const Adapter& adapter)
{
    return "/sys/bus/pci/devices/" + adapter.bus_id;
}

// The first entry of a directory whose name begins with `prefix`; empty when there is none.
std::string first_entry(const std::string& directory, std::string_view prefix)
{
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        if (entry.path().filename().string().starts_with(prefix)) {
            return entry.path();
        }
    }
    return {};
}

}  // namespace

KernelInterfaceFacts kernel_interface_facts(Session& session, const Adapter& adapter, int drm_fd)
{
    const auto files = kernel_interface_files(adapter.device_id.value_or(0));
    KernelInterfaceFacts facts;
    facts.names.assign(files.begin(), files.end());
    const LoadedFile library = session.call("dlopen of the kernel-interface library", [&] {
        return load_first(files, RTLD_LAZY | RTLD_GLOBAL);
    });
    facts.errors = library.errors;
    facts.loaded = library.name;
    facts.path = library.path;
    const auto has = [&](const char* function) { return library.symbol(function) != nullptr; };
    std::ranges::copy_if(kFigureFunctions, std::back_inserter(facts.functions), has);
    const auto* const size_function = std::ranges::find_if(kSizeFunctions, has);
    if (size_function != kSizeFunctions.end()) {
        facts.size_function = *size_function;
        using SizeFunction = uint32_t (*)(int32_t);
        const auto size_of_block = reinterpret_cast<SizeFunction>(library.symbol(*size_function));
        facts.block_size = session.call(*size_function, [&] { return size_of_block(drm_fd); });
    }
    return facts;
}

DebugFacts debug_facts(Session& session, const Adapter& adapter)
{
    const std::string info = driver_info_path(adapter.card.value_or(-1), adapter.vendor_id);
    DebugFacts facts;
    facts.directory = directory_fact(session, fs::path(info).parent_path());
    facts.allocations = directory_fact(session, facts.directory.path + "/allocations");
    const std::string first = session.call("open " + facts.allocations.path,
                                           [&] { return first_entry(facts.allocations.path, ""); });
    if (!first.empty()) {
        NodeFact node = file_fact(session, first + "/info");
        // An allocation that has gone in between is no fault.
        if (node.error != 0 && node.error != ENOENT) {
            facts.allocations = std::move(node);
        }
    }
    return facts;
}

InfoFacts info_facts(Session& session, const Adapter& adapter)
{
    constexpr const char* kUsageSwitch = "enable_usage";
    const std::string path =
        device_directory(adapter) + (adapter.vendor_id == QV_VENDOR_ID ? "/qv_info" : "/jw_info");
    InfoFacts facts;
    facts.directory = directory_fact(session, path);
    const tools::Descriptor directory{::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    const NodeAccess access = session.call(fmt::format("open {}/{}", path, kUsageSwitch), [&] {
        return access_to({directory.get(), path}, kUsageSwitch);
    });
    facts.usage_switch = {access.path, access.read_error};
    facts.switch_write_error = access.write_error;
    return facts;
}

NodeFact hwmon_fact(Session& session, const Adapter& adapter)
{
    const std::string path = device_directory(adapter) + "/hwmon";
    const std::string directory =
        session.call("open " + path, [&] { return first_entry(path, "hwmon"); });
    return directory_fact(session, directory.empty() ? path + "/hwmon0" : directory);
}

NodeFact proc_fact(Session& session, const Adapter& adapter)
{
    return file_fact(session, fmt::format("/proc/gpuinfo_{}", adapter.card.value_or(-1)));
}

}  // namespace nimba::smi
