// SPDX-License-Identifier: MIT
// The records that only hosts in C++ see, as a host that was built earlier knows them: their size,
// and where what it needs stands. None of this comes from the public header.
#ifndef NIMBA_TESTS_ABI_CXX_RECORD_HPP
#define NIMBA_TESTS_ABI_CXX_RECORD_HPP

#include "host.h"
#include "record.h"

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

template <std::size_t Size>
struct alignas(8) Bytes {
    unsigned char bytes[Size];
};

struct AllocationRecord {  // aligned to 4, as 92 bytes are
    uint32_t words[23];
};

using PreferenceRecord = uint32_t[279];

struct VmNodeTexts {
    std::string device_pid;
    std::string device_pname;
    std::string allocation_handle;
    std::string gpu_va;
    std::string size;
};

using PageTable = Bytes<144>;
using SubTable = Bytes<104>;

struct Device {
    char pid[48];
    char app_name[48];
    std::string note;
    std::vector<PageTable> page_tables[3];
    std::vector<SubTable> sub_tables[3];
};

inline const void* pointer_at(const unsigned char* record, std::size_t offset)
{
    const void* pointer = nullptr;
    std::memcpy(&pointer, record + offset, sizeof pointer);
    return pointer;
}

// The exported function of this mangled name.
template <class Function>
Function* function(void* library, const char* name)
{
    Function* result = nullptr;
    find_function(library, name, &result);
    return result;
}

template <class Global>
Global& global(void* library, const char* name)
{
    return *static_cast<Global*>(symbol(library, name));
}

#define STRING "RKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE"

#endif
