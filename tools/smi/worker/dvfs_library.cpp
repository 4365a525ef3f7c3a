// SPDX-License-Identifier: MIT
#include "tools/smi/worker/dvfs_library.hpp"

#include "tools/smi/worker/symbols.hpp"

namespace nimba::smi {
namespace {

constexpr Symbol<DvfsEntryPoints> kSymbols[] = {
    {"gpuinfo_select_new_chip", store<&DvfsEntryPoints::select_new_chip>},
    {"get_data_from_dvfs_register", store<&DvfsEntryPoints::get_data>},
    {"set_data_to_dvfs_register", store<&DvfsEntryPoints::set_data>},
    {"gpuinfo_get_jwinfoFD_value_int", store<&DvfsEntryPoints::get_info_value>},
    {"gpuinfo_set_misc_ctl_flag", store<&DvfsEntryPoints::set_flag>},
};

}  // namespace

std::variant<DvfsEntryPoints, std::string> find_dvfs_entry_points(const Library& library)
{
    DvfsEntryPoints entry;
    if (auto fault =
            find_symbols<DvfsEntryPoints>(library.handle.get(), library.path, kSymbols, entry)) {
        return *std::move(fault);
    }
    return entry;
}

}  // namespace nimba::smi
