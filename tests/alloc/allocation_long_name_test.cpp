// SPDX-License-Identifier: MIT
// Entries with names that are longer than the C library's record of an entry. The program's
// readdir stands before the C library's.
#include "allocation_tree.hpp"
#include "leak_records.hpp"
#include "support/captured_stdout.hpp"
#include "support/descriptor.hpp"

#include <dirent.h>
#include <dlfcn.h>

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

namespace nimba::test {
namespace {

// An entry with room for a name of any length that is tried here.
union LongEntry {
    dirent entry;
    std::array<char, 20'000> bytes;
};

LongEntry long_entry;
bool is_listed = false;

// In its scope the next entry that is listed, of whichever directory, has this name.
class NextEntryNamed final {
  public:
    explicit NextEntryNamed(const std::string& name)
    {
        constexpr std::size_t kName = offsetof(dirent, d_name);
        if (kName + name.size() >= long_entry.bytes.size()) {
            throw std::length_error{"the name is too long"};
        }
        std::memcpy(long_entry.bytes.data() + kName, name.c_str(), name.size() + 1);
        is_listed = true;
    }
    ~NextEntryNamed() { is_listed = false; }
    NextEntryNamed(const NextEntryNamed&) = delete;
    NextEntryNamed& operator=(const NextEntryNamed&) = delete;

    static dirent* take()
    {
        if (!is_listed) {
            return nullptr;
        }
        is_listed = false;
        return &long_entry.entry;
    }
};

}  // namespace
}  // namespace nimba::test

extern "C" dirent* readdir(DIR* dirp)
{
    static const auto next = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    dirent* const entry = nimba::test::NextEntryNamed::take();
    return entry != nullptr ? entry : next(dirp);
}

namespace nimba::test {
namespace {

class LongAllocationName : public testing::TestWithParam<std::size_t> {
  protected:
    const std::string name_ = std::string(GetParam(), 'n');
    const AllocationTree tree_;
    Records list_;
    std::int32_t status_ = 42;
};

TEST_P(LongAllocationName, FailsThePassLikeAnAllocationThatVanished)
{
    tree_.add("1", "handle=1\n");
    const auto before = open_descriptors();
    list_ = {allocation(7)};
    const std::string output = stdout_of([&] {
        const NextEntryNamed next{name_};
        status_ = get_current_allocation_data_try(list_, 0, 1);
    });
    EXPECT_EQ(status_, -1);
    EXPECT_EQ(output, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(list_, Records{allocation(7)});
    EXPECT_EQ(open_descriptors(), before);
}

TEST_P(LongAllocationName, DoesNotKeepTheNextPassFromItsAllocations)
{
    tree_.add("1", "handle=1\n");
    const std::string output = stdout_of([&] {
        const NextEntryNamed next{name_};
        status_ = get_current_allocation_data(list_, 0, 1);
    });
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output, "Fail to read allocation info. skip...\n");
    EXPECT_EQ(list_, Records{with(blank(), &Record::handle, 1)});
}

INSTANTIATE_TEST_SUITE_P(OfCharacters, LongAllocationName,
                         testing::Values(256, 257, 260, 500, 512, 1018, 1019, 1024, 4090, 4091,
                                         4095, 4096, 5000, 15'000),
                         testing::PrintToStringParamName());

}  // namespace
}  // namespace nimba::test
