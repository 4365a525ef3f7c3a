// SPDX-License-Identifier: MIT
#include "tools/smi/worker/loaded_file.hpp"

#include <dlfcn.h>

namespace nimba::smi {

void* LoadedFile::symbol(const char* entry_point) const
{
    return handle ? ::dlsym(handle.get(), entry_point) : nullptr;
}

LoadedFile load_first(std::span<const char* const> names, int flags)
{
    LoadedFile file;
    for (const char* const name : names) {
        file.handle.reset(::dlopen(name, flags));
        if (file.handle) {
            file.name = name;
            file.path = file_of(file.handle.get());
            return file;
        }
        file.errors.emplace_back(::dlerror());
    }
    return file;
}

}  // namespace nimba::smi
