// SPDX-License-Identifier: MIT
// Logging allocates nothing. Every allocation of this program, and of what it loads, is counted.
#include "support/loaded_library.hpp"
#include "support/messages.hpp"

#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <string>

namespace {

std::atomic<int> allocations{0};

}  // namespace

#ifdef NIMBA_SANITIZE
// The sanitizer brings an allocator of its own, and tells of its use. Declared here, since not
// every compiler brings the header.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*)(const volatile void*,
                                                                  std::size_t),
                                                         void (*)(const volatile void*));
namespace {

const int hooks = __sanitizer_install_malloc_and_free_hooks(
    [](const volatile void*, std::size_t) { ++allocations; }, [](const volatile void*) {});

}  // namespace
#else
// These stand before the C library's functions in the whole process.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) noexcept
{
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) noexcept
{
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) noexcept
{
    ++allocations;
    return __libc_realloc(block, size);
}
}
#endif

namespace nimba::test {
namespace {

int messages_heard = 0;

int count_message(const char*, ...)
{
    ++messages_heard;
    return 0;
}

class LoggingAllocation : public testing::Test {
  protected:
    // The allocations while four messages are logged, the longest of which is cut.
    int allocations_of_four_messages() const
    {
        const int before = allocations;
        lib_print_func("plain text\n");
        lib_print_func("%s: %d, 0x%04x, %5.2f, %c\n ", "text", -7, 0x4E4D, 3.14159, 'c');
        lib_print_func("%s", text_of_1023.c_str());
        lib_print_func("%s%s", text_of_5000.c_str(), text_of_5000.c_str());
        return allocations - before;
    }

    const std::string text_of_1023 = std::string(1023, 'm');
    const std::string text_of_5000 = std::string(5000, 'm');
    LoadedLibrary library;
    decltype(::lib_print_func)& lib_print_func =
        library.symbol<decltype(::lib_print_func)>("lib_print_func");
    nimba_print_callback& callback = library.symbol<nimba_print_callback>("pServerPrintCallback");
};

TEST_F(LoggingAllocation, IsNotNeededForAMessage)
{
    callback = count_message;
    messages_heard = 0;
    EXPECT_EQ(allocations_of_four_messages(), 0);
    EXPECT_EQ(messages_heard, 4);
}

TEST_F(LoggingAllocation, IsNotNeededWithoutACallback)
{
    callback = nullptr;
    EXPECT_EQ(allocations_of_four_messages(), 0);
}

TEST_F(LoggingAllocation, OfTheCallbackIsCounted)
{
    callback = keep_message;
    EXPECT_GE(allocations_of_four_messages(), 3);  // a copy of each text but the shortest, at least
    EXPECT_EQ(take_messages().size(), 4U);
}

}  // namespace
}  // namespace nimba::test
