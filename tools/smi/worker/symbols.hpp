// SPDX-License-Identifier: MIT
// Looking up the entry points of a loaded library by a table of their names.
#pragma once

#include <dlfcn.h>

#include <fmt/core.h>

#include <optional>
#include <span>
#include <string>
#include <type_traits>

namespace nimba::smi {

// A name, and how its address gets into a record of entry points.
template <typename EntryPoints>
struct Symbol {
    const char* name;
    void (*store)(EntryPoints& entry, void* address);
};

template <auto Member, typename EntryPoints>
void store(EntryPoints& entry, void* address)
{
    entry.*Member = reinterpret_cast<std::remove_reference_t<decltype(entry.*Member)>>(address);
}

// Fills `entry` from the library behind `handle`, which was loaded from `path`. Returns what is
// wrong when a name is not there.
template <typename EntryPoints>
std::optional<std::string> find_symbols(void* handle, const std::string& path,
                                        std::span<const Symbol<EntryPoints>> symbols,
                                        EntryPoints& entry)
{
    for (const Symbol<EntryPoints>& symbol : symbols) {
        void* const address = ::dlsym(handle, symbol.name);
        if (address == nullptr) {
            return fmt::format(
                "{} lacks the entry point {}: install the library that belongs to this nimba-smi",
                path, symbol.name);
        }
        symbol.store(entry, address);
    }
    return std::nullopt;
}

}  // namespace nimba::smi
