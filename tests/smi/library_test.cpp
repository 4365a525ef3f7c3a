// SPDX-License-Identifier: MIT
#include "tools/smi/worker/library.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(LibraryVersionInFileName, IsWhatFollowsTheSuffix)
{
    EXPECT_EQ(version_in_file_name("/usr/lib/libnimba_mgmt_interface.so.0.1.0"), "0.1.0");
    EXPECT_EQ(version_in_file_name("lib.so.7"), "7");
    EXPECT_EQ(version_in_file_name("/opt/a.so.1/lib.so.2.3"), "2.3");
}

TEST(LibraryVersionInFileName, IsAbsentWithoutANumber)
{
    EXPECT_EQ(version_in_file_name(""), std::nullopt);
    EXPECT_EQ(version_in_file_name("/usr/lib/lib.so"), std::nullopt);
    EXPECT_EQ(version_in_file_name("/usr/lib/lib.so."), std::nullopt);
    EXPECT_EQ(version_in_file_name("/usr/lib/lib.so.old"), std::nullopt);
    EXPECT_EQ(version_in_file_name("/opt/a.so.1/lib.so"), std::nullopt);
}

TEST(LoadLibrary, SaysWhatToDoAboutAMissingFile)
{
    const auto loaded = load_library("/nonexistent.so");
    ASSERT_TRUE(std::holds_alternative<std::string>(loaded));
    EXPECT_EQ(std::get<std::string>(loaded),
              "cannot load the management library (/nonexistent.so: cannot open shared object "
              "file: No such file or directory): install it, or name it with --library");
}

}  // namespace
}  // namespace nimba::smi
