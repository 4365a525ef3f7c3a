// SPDX-License-Identifier: MIT
#include "tools/smi/worker/prefer_library.hpp"

#include "tools/smi/worker/symbols.hpp"

namespace nimba::smi {
namespace {

constexpr Symbol<PreferEntryPoints> kSymbols[] = {
    {"get_gpu_preference", store<&PreferEntryPoints::get>},
    {"set_gpu_preference", store<&PreferEntryPoints::set>},
    {"remove_gpu_preference", store<&PreferEntryPoints::remove>},
};

}  // namespace

std::variant<PreferEntryPoints, std::string> find_prefer_entry_points(const Library& library)
{
    PreferEntryPoints entry;
    if (auto fault =
            find_symbols<PreferEntryPoints>(library.handle.get(), library.path, kSymbols, entry)) {
        return *std::move(fault);
    }
    return entry;
}

}  // namespace nimba::smi
