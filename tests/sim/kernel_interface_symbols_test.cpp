// SPDX-License-Identifier: MIT
// Taking names out of a shared library: the stand-in as it is built, in a copy.
#include "kernel_interface_symbols.hpp"

#include "support/temp_directory.hpp"
#include "test_bed_error.hpp"

#include <dlfcn.h>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace nimba::sim::test {
namespace {

struct Close {
    void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, Close>;

std::string stand_in()
{
    std::ifstream stream{KERNEL_INTERFACE_STAND_IN, std::ios::binary};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

Library load(const std::string& bytes)
{
    const nimba::test::TempDirectory directory;
    return Library{dlopen(directory.write("library.so", bytes).c_str(), RTLD_NOW | RTLD_LOCAL)};
}

TEST(KernelInterfaceSymbols, NamesThatAreNotKeptAreNotFound)
{
    std::string bytes = stand_in();
    keep_symbols(bytes, {"gfx_flip_count", "qv_get_struct_size", "unknown"});
    const Library library = load(bytes);
    ASSERT_NE(library, nullptr);
    EXPECT_NE(dlsym(library.get(), "gfx_flip_count"), nullptr);
    EXPECT_NE(dlsym(library.get(), "qv_get_struct_size"), nullptr);
    EXPECT_EQ(dlsym(library.get(), "gfx_get_struct_size"), nullptr);
    EXPECT_EQ(dlsym(library.get(), "qvGetHwqInfo"), nullptr);
}

TEST(KernelInterfaceSymbols, LibraryWithoutAnyIsLoaded)
{
    std::string bytes = stand_in();
    keep_symbols(bytes, {});
    const Library library = load(bytes);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(dlsym(library.get(), "gfx_get_struct_size"), nullptr);
}

TEST(KernelInterfaceSymbols, LibraryThatIsCutIsDamaged)
{
    const std::string whole = stand_in();
    for (const std::size_t size : {std::size_t{0}, std::size_t{10}, whole.size() - 1}) {
        std::string bytes = whole.substr(0, size);
        EXPECT_THROW(keep_symbols(bytes, {}), TestBedError) << size;
    }
}

}  // namespace
}  // namespace nimba::sim::test
