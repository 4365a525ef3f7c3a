// SPDX-License-Identifier: MIT
#include "tools/smi/capture/kernel_interface.hpp"

#include "tools/smi/doctor/chip_libraries.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <array>
#include <memory>

namespace nimba::smi {
namespace {

using archive::Counters;
using archive::Words;

// A library may write more than it should.
constexpr std::size_t kRoomForWords = 64;
constexpr uint32_t kExtendedUsage = 3;  // what the extended record begins with

using Size = uint32_t (*)(int drm);
using Prepare = int (*)(int drm, void* device);
using GetFlips = int (*)(int drm, void* device, archive::Flips* flips);
using GetWords = int (*)(int drm, void* device, uint32_t* words);
using GetQueues = int (*)(int drm, uint32_t* words);

constexpr std::array kSizeFunctions{"gfx_get_struct_size", "qv_get_struct_size"};
constexpr std::array kEntryPoints{
    "gfx_get_struct_size", "qv_get_struct_size", "gfx_flip_count",     "gfx_init_hwinfo",
    "gfx_deinit_hwinfo",   "gfx_get_hwinfo",     "gfx_get_hwinfo_ext", "qv_init_hwinfo",
    "qv_deinit_hwinfo",    "qv_get_hwinfo",      "gfx_get_usage_info", "gfx_get_usage_info_ext",
    "qvGetHwqInfo"};

struct Unload {
    void operator()(void* library) const { ::dlclose(library); }
};

// The library with what its functions take.
class KernelLibrary final {
  public:
    KernelLibrary(Session& session, uint32_t device_id)
    {
        for (const char* const file : kernel_interface_files(device_id)) {
            handle_.reset(::dlopen(file, RTLD_LAZY | RTLD_NOLOAD));
            if (handle_) {
                file_ = file;
                break;
            }
        }
        void* const management = session.library().handle.get();
        const auto* const drm = static_cast<int32_t*>(::dlsym(management, "__perf_event_fd"));
        void* const* const device = static_cast<void**>(::dlsym(management, "pdev"));
        drm_ = drm != nullptr ? *drm : -1;
        device_ = device != nullptr ? *device : nullptr;
    }

    explicit operator bool() const { return handle_ != nullptr; }
    [[nodiscard]] const char* file() const { return file_; }
    [[nodiscard]] int drm() const { return drm_; }
    [[nodiscard]] void* device() const { return device_; }

    // Null when it has none of that name.
    template <typename Function>
    [[nodiscard]] Function function(const char* name) const
    {
        return reinterpret_cast<Function>(::dlsym(handle_.get(), name));
    }

    [[nodiscard]] bool has(const char* name) const { return function<Prepare>(name) != nullptr; }

  private:
    std::unique_ptr<void, Unload> handle_;
    const char* file_ = nullptr;
    int drm_ = -1;
    void* device_ = nullptr;
};

// The function with which the management library prepares the hardware information, or null.
const char* preparing_function(const KernelLibrary& library)
{
    const bool extended = library.has("gfx_get_hwinfo_ext");
    if (library.has("gfx_init_hwinfo") && library.has("gfx_deinit_hwinfo") &&
        (extended || library.has("gfx_get_hwinfo"))) {
        return "gfx_init_hwinfo";
    }
    return library.has("qv_init_hwinfo") && library.has("qv_deinit_hwinfo") &&
                   (extended || library.has("qv_get_hwinfo"))
               ? "qv_init_hwinfo"
               : nullptr;
}

std::optional<int32_t> prepare(Session& session, const KernelLibrary& library)
{
    const char* const name = preparing_function(library);
    if (name == nullptr || library.device() == nullptr) {
        return std::nullopt;
    }
    return session.call(
        name, [&] { return library.function<Prepare>(name)(library.drm(), library.device()); });
}

uint32_t struct_size(Session& session, const KernelLibrary& library)
{
    for (const char* const name : kSizeFunctions) {
        if (const auto size = library.function<Size>(name)) {
            return session.call(name, [&] { return size(library.drm()); });
        }
    }
    return 0;
}

// The words that the function writes; nothing without it, and when it fails.
std::optional<Words> words(Session& session, const KernelLibrary& library, const char* name,
                           std::size_t count, uint32_t first = 0)
{
    const auto get = library.function<GetWords>(name);
    if (get == nullptr || library.device() == nullptr) {
        return std::nullopt;
    }
    Words record(kRoomForWords);
    record.front() = first;
    const int result =
        session.call(name, [&] { return get(library.drm(), library.device(), record.data()); });
    record.resize(count);
    return result == 0 ? std::optional{std::move(record)} : std::nullopt;
}

std::optional<Words> queues(Session& session, const KernelLibrary& library)
{
    const auto get = library.function<GetQueues>("qvGetHwqInfo");
    if (get == nullptr) {
        return std::nullopt;
    }
    Words record(kRoomForWords);
    const int result =
        session.call("qvGetHwqInfo", [&] { return get(library.drm(), record.data()); });
    record.resize(archive::kUsageWords);
    return result == 0 ? std::optional{std::move(record)} : std::nullopt;
}

std::optional<archive::Flips> flips(Session& session, const KernelLibrary& library)
{
    const auto get = library.function<GetFlips>("gfx_flip_count");
    if (get == nullptr || library.device() == nullptr) {
        return std::nullopt;
    }
    archive::Flips told;
    const int result =
        session.call("gfx_flip_count", [&] { return get(library.drm(), library.device(), &told); });
    return result == 0 ? std::optional{told} : std::nullopt;
}

}  // namespace

std::optional<archive::KernelInterface> read_kernel_interface(Session& session, uint32_t device_id)
{
    const KernelLibrary library{session, device_id};
    if (!library) {
        return std::nullopt;
    }
    archive::KernelInterface told{
        library.file(), {}, struct_size(session, library), prepare(session, library)};
    std::ranges::copy_if(kEntryPoints, std::back_inserter(told.functions),
                         [&](const char* name) { return library.has(name); });
    return told;
}

void read_kernel_counters(Session& session, uint32_t device_id, Counters& counters)
{
    const KernelLibrary library{session, device_id};
    if (!library) {
        return;
    }
    if (const auto told = flips(session, library)) {
        counters.flips = {*told, *told};
    }
    const bool gfx = library.has("gfx_get_hwinfo");
    counters.hardware =
        words(session, library, gfx ? "gfx_get_hwinfo" : "qv_get_hwinfo", archive::kHardwareWords);
    counters.hardware_extended =
        words(session, library, "gfx_get_hwinfo_ext", archive::kHardwareWords);
    counters.usage = words(session, library, "gfx_get_usage_info", archive::kUsageWords);
    counters.usage_extended = words(session, library, "gfx_get_usage_info_ext",
                                    archive::kExtendedUsageWords, kExtendedUsage);
    counters.queues = queues(session, library);
}

}  // namespace nimba::smi
