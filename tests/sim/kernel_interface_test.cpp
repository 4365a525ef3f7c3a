// SPDX-License-Identifier: MIT
// What a program gets when it loads the product's kernel-interface libraries on a simulated
// machine.
#include "sim_run.hpp"
#include "support/temp_directory.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::sim::test {
namespace {

constexpr const char* kEveryFile = CALL_SIZE_FUNCTION
    " libnimbahwbridge_v2.so.0.0.0 libmv9hwbridge_v2.so.0.0.0 libdrm_mv9.so.0.0.0"
    " libhwbridge_qv.so.0.0.0 </dev/null";

void expect_libraries(const std::string& machine, const std::string& expected)
{
    const Result result = run_on(machine, kEveryFile);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, expected);
}

TEST(KernelInterface, NimbaAdapterBringsItsLibrary)
{
    expect_libraries("default",
                     "libnimbahwbridge_v2.so.0.0.0: loaded\n"
                     "libnimbahwbridge_v2.so.0.0.0: gfx_get_struct_size: 4096, 0\n"
                     "libmv9hwbridge_v2.so.0.0.0: not there\n"
                     "libdrm_mv9.so.0.0.0: not there\n"
                     "libhwbridge_qv.so.0.0.0: not there\n");
}

TEST(KernelInterface, QvChipsBringTheirDifferentLibraries)
{
    expect_libraries("two-qv",
                     "libnimbahwbridge_v2.so.0.0.0: not there\n"
                     "libmv9hwbridge_v2.so.0.0.0: loaded\n"
                     "libmv9hwbridge_v2.so.0.0.0: gfx_get_struct_size: 4096, 0\n"
                     "libdrm_mv9.so.0.0.0: not there\n"
                     "libhwbridge_qv.so.0.0.0: loaded\n"
                     "libhwbridge_qv.so.0.0.0: gfx_get_struct_size: 4096, 0\n");
}

TEST(KernelInterface, SecondChoiceAloneWithItsOwnFunctionAndSize)
{
    expect_libraries("fallback-library",
                     "libnimbahwbridge_v2.so.0.0.0: not there\n"
                     "libmv9hwbridge_v2.so.0.0.0: not there\n"
                     "libdrm_mv9.so.0.0.0: loaded\n"
                     "libdrm_mv9.so.0.0.0: qv_get_struct_size: 2048, 0\n"
                     "libhwbridge_qv.so.0.0.0: not there\n");
}

TEST(KernelInterface, EmptyListMeansNoLibrary)
{
    expect_libraries("no-library",
                     "libnimbahwbridge_v2.so.0.0.0: not there\n"
                     "libmv9hwbridge_v2.so.0.0.0: not there\n"
                     "libdrm_mv9.so.0.0.0: not there\n"
                     "libhwbridge_qv.so.0.0.0: not there\n");
}

TEST(KernelInterface, LibraryMayLackTheSizeFunction)
{
    expect_libraries("library-without-size",
                     "libnimbahwbridge_v2.so.0.0.0: loaded\n"
                     "libmv9hwbridge_v2.so.0.0.0: not there\n"
                     "libdrm_mv9.so.0.0.0: not there\n"
                     "libhwbridge_qv.so.0.0.0: not there\n");
}

TEST(KernelInterface, SizeMayBeZero)
{
    expect_libraries("library-of-size-zero",
                     "libnimbahwbridge_v2.so.0.0.0: loaded\n"
                     "libnimbahwbridge_v2.so.0.0.0: gfx_get_struct_size: 0, 0\n"
                     "libmv9hwbridge_v2.so.0.0.0: not there\n"
                     "libdrm_mv9.so.0.0.0: not there\n"
                     "libhwbridge_qv.so.0.0.0: not there\n");
}

TEST(KernelInterface, LibrariesLoadedTogetherKeepTheirOwnSizes)
{
    const nimba::test::TempDirectory directory;
    const std::string file = directory.write("machine.toml", R"(description = "All libraries"
[[kernel_interface]]
file = "libnimbahwbridge_v2.so.0.0.0"
struct_size = 1
[[kernel_interface]]
file = "libmv9hwbridge_v2.so.0.0.0"
struct_size = 22
[[kernel_interface]]
file = "libdrm_mv9.so.0.0.0"
struct_size = 333
[[kernel_interface]]
file = "libhwbridge_qv.so.0.0.0"
size_function = "qv_get_struct_size"
struct_size = 4294967295
)");
    expect_libraries(file,
                     "libnimbahwbridge_v2.so.0.0.0: loaded\n"
                     "libnimbahwbridge_v2.so.0.0.0: gfx_get_struct_size: 1, 0\n"
                     "libmv9hwbridge_v2.so.0.0.0: loaded\n"
                     "libmv9hwbridge_v2.so.0.0.0: gfx_get_struct_size: 22, 0\n"
                     "libdrm_mv9.so.0.0.0: loaded\n"
                     "libdrm_mv9.so.0.0.0: gfx_get_struct_size: 333, 0\n"
                     "libhwbridge_qv.so.0.0.0: loaded\n"
                     "libhwbridge_qv.so.0.0.0: qv_get_struct_size: 4294967295, 0\n");
}

}  // namespace
}  // namespace nimba::sim::test
