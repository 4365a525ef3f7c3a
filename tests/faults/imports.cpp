// SPDX-License-Identifier: MIT
#include "imports.hpp"

#include <link.h>
#include <unistd.h>

#include <sys/mman.h>

#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>

namespace nimba::test {
namespace {

struct Tables {
    const char* names = nullptr;
    const ElfW(Sym) * symbols = nullptr;
    std::span<const ElfW(Rela)> calls;
    std::span<const ElfW(Rela)> data;
};

// The loader tells addresses as numbers.
template <typename Type>
Type* at(ElfW(Addr) address)
{
    return reinterpret_cast<Type*>(address);  // NOLINT(performance-no-int-to-ptr)
}

Tables tables_of(const ElfW(Dyn) * entry)
{
    Tables tables;
    const ElfW(Rela)* calls = nullptr;
    const ElfW(Rela)* data = nullptr;
    std::size_t call_bytes = 0;
    std::size_t data_bytes = 0;
    for (; entry->d_tag != DT_NULL; ++entry) {
        switch (entry->d_tag) {
            case DT_STRTAB:
                tables.names = at<const char>(entry->d_un.d_ptr);
                break;
            case DT_SYMTAB:
                tables.symbols = at<const ElfW(Sym)>(entry->d_un.d_ptr);
                break;
            case DT_JMPREL:
                calls = at<const ElfW(Rela)>(entry->d_un.d_ptr);
                break;
            case DT_PLTRELSZ:
                call_bytes = entry->d_un.d_val;
                break;
            case DT_RELA:
                data = at<const ElfW(Rela)>(entry->d_un.d_ptr);
                break;
            case DT_RELASZ:
                data_bytes = entry->d_un.d_val;
                break;
            default:
                break;
        }
    }
    tables.calls = {calls, call_bytes / sizeof(ElfW(Rela))};
    tables.data = {data, data_bytes / sizeof(ElfW(Rela))};
    return tables;
}

// The places are write-protected once the object is loaded.
void write_place(void** place, void* function)
{
    const auto page_size = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    auto* const page = at<void>(reinterpret_cast<std::uintptr_t>(place) & ~(page_size - 1));
    ::mprotect(page, page_size, PROT_READ | PROT_WRITE);
    *place = function;
}

struct Search {
    std::string name;
    std::span<const Replacement> replacements;
};

void replace_place(const Search& search, const char* symbol, void** place)
{
    for (const Replacement& replacement : search.replacements) {
        if (std::strcmp(symbol, replacement.name) == 0) {
            write_place(place, replacement.function);
        }
    }
}

int visit_object(dl_phdr_info* info, std::size_t /*size*/, void* data)
{
    const Search& search = *static_cast<const Search*>(data);
    const std::string file = std::filesystem::path{info->dlpi_name}.filename().string();
    if (search.name.empty() ? !file.empty() : !file.starts_with(search.name)) {
        return 0;
    }
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        if (info->dlpi_phdr[i].p_type != PT_DYNAMIC) {
            continue;
        }
        const Tables tables =
            tables_of(at<const ElfW(Dyn)>(info->dlpi_addr + info->dlpi_phdr[i].p_vaddr));
        for (const auto& entries : {tables.calls, tables.data}) {
            for (const ElfW(Rela) & entry : entries) {
                const auto symbol = ELF64_R_SYM(entry.r_info);
                if (symbol != 0 && entry.r_addend == 0) {
                    replace_place(search, tables.names + tables.symbols[symbol].st_name,
                                  at<void*>(info->dlpi_addr + entry.r_offset));
                }
            }
        }
    }
    return 1;
}

}  // namespace

void replace_imports(const char* name, std::span<const Replacement> replacements)
{
    Search search{name, replacements};
    ::dl_iterate_phdr(visit_object, &search);
}

}  // namespace nimba::test
