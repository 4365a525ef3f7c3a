// SPDX-License-Identifier: MIT
// Stands before the C library's allocator in a program with one thread, and counts. operator new
// comes through malloc and aligned_alloc.
#include "bench/counting_allocator.hpp"

#include <malloc.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdlib>

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void* __libc_valloc(std::size_t size);
void* __libc_pvalloc(std::size_t size);
void __libc_free(void* block);
}

namespace nimba::bench {
namespace {

std::size_t live = 0;
std::size_t peak = 0;
std::size_t least_counted = SIZE_MAX;
std::size_t counted = 0;

void* taken(void* block)
{
    const std::size_t size = ::malloc_usable_size(block);
    live += size;
    peak = std::max(peak, live);
    counted += size >= least_counted ? 1 : 0;
    return block;
}

}  // namespace

std::size_t live_bytes()
{
    return live;
}

std::size_t peak_bytes()
{
    return peak;
}

void restart_peak()
{
    peak = live;
}

void count_blocks_from(std::size_t size)
{
    least_counted = size;
    counted = 0;
}

std::size_t counted_blocks()
{
    return counted;
}

}  // namespace nimba::bench

extern "C" {

void* malloc(std::size_t size) noexcept
{
    return nimba::bench::taken(__libc_malloc(size));
}

void* calloc(std::size_t nmemb, std::size_t size) noexcept
{
    return nimba::bench::taken(__libc_calloc(nmemb, size));
}

// A block that cannot grow in its place exists twice while it is copied; the peak counts both.
void* realloc(void* ptr, std::size_t size) noexcept
{
    const std::size_t before = ::malloc_usable_size(ptr);
    const auto place = std::bit_cast<std::uintptr_t>(ptr);
    void* const grown = __libc_realloc(ptr, size);
    if (grown == nullptr && size != 0) {
        return nullptr;
    }
    const bool moved = std::bit_cast<std::uintptr_t>(grown) != place;
    if (!moved) {
        nimba::bench::live -= before;
    }
    nimba::bench::taken(grown);
    if (moved) {
        nimba::bench::live -= before;
    }
    return grown;
}

void* memalign(std::size_t alignment, std::size_t size) noexcept
{
    return nimba::bench::taken(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept
{
    return memalign(alignment, size);
}

int posix_memalign(void** memptr, std::size_t alignment, std::size_t size) noexcept
{
    if (!std::has_single_bit(alignment) || alignment % sizeof(void*) != 0) {
        return EINVAL;
    }
    void* const made = memalign(alignment, size);
    if (made == nullptr) {
        return ENOMEM;
    }
    *memptr = made;
    return 0;
}

void* valloc(std::size_t size) noexcept
{
    return nimba::bench::taken(__libc_valloc(size));
}

void* pvalloc(std::size_t size) noexcept
{
    return nimba::bench::taken(__libc_pvalloc(size));
}

void free(void* ptr) noexcept
{
    nimba::bench::live -= ::malloc_usable_size(ptr);
    __libc_free(ptr);
}

}  // extern "C"
