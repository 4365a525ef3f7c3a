// SPDX-License-Identifier: MIT
// Whose the video memory is and where it leaks, on a machine with an adapter of each kind of
// driver.
#include "machine_fixture.hpp"
#include "support/captured_stdout.hpp"

#include <algorithm>
#include <ostream>
#include <tuple>

namespace nimba::test {
namespace {

struct Context {
    std::int32_t pid;
    std::int32_t handle;
    std::string process_name;

    auto operator<=>(const Context&) const = default;
};

void PrintTo(const Context& context, std::ostream* out)
{
    *out << "{" << context.pid << ", " << context.handle << ", \"" << context.process_name << "\"}";
}

// What the tests tell kept allocations by: handle, device, hit_count, sum_count.
using Kept = std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t>;

class TwoDrivers : public MachineTest {
  protected:
    TwoDrivers()
    {
        discover();
        init(0);
    }
    ~TwoDrivers() override { exit(0); }

    // The current adapter's contexts, sorted; expects that there are `count`.
    std::vector<Context> contexts(std::size_t count)
    {
        auto& get = library_.symbol<decltype(get_device_pid_maps)>("get_device_pid_maps");
        _GFX_DEVICE_PID_MAP map{};
        std::int32_t status = -1;
        const std::string output = stdout_of([&] { status = get(&map); });
        EXPECT_EQ(status, 0);
        EXPECT_EQ(output, "");
        EXPECT_EQ(map.entries[count].handle, 0);
        std::vector<Context> found;
        for (std::size_t i = 0; i < count; ++i) {
            found.push_back(
                {map.entries[i].pid, map.entries[i].handle, map.entries[i].process_name});
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    // Takes a snapshot; returns the sizes of the first three groups of the report.
    std::vector<std::int32_t> group_sizes()
    {
        auto& get = library_.symbol<decltype(get_memleak_info)>("get_memleak_info");
        std::int32_t status = -1;
        const std::string output = stdout_of([&] { status = get(&report_); });
        EXPECT_EQ(status, 0);
        EXPECT_EQ(output, "");
        return {report_.groups[0].sum_count, report_.groups[1].sum_count,
                report_.groups[2].sum_count};
    }

    // The library's kept list, sorted by handle.
    std::vector<Kept> kept() const
    {
        std::vector<Kept> found;
        for (const _GFX_ALLOCATION_INFO& record :
             library_.symbol<std::vector<_GFX_ALLOCATION_INFO>>("vec_memleak_result")) {
            found.emplace_back(record.handle, record.device, record.hit_count, record.sum_count);
        }
        std::sort(found.begin(), found.end());
        return found;
    }

    _GFX_MEMLEAK_INFO report_{};
};

TEST_F(TwoDrivers, TellTheProcessesOfTheirContexts)
{
    EXPECT_EQ(contexts(3), (std::vector<Context>{{4100001, 0x1f, "/usr/bin/app"},
                                                 {4100002, 0x2f, "long-name"},
                                                 {4100003, 0x3f, ""}}));
    init(1);
    EXPECT_EQ(contexts(1), (std::vector<Context>{{4100002, 0x4f, "long-name"}}));
}

TEST_F(TwoDrivers, TellTheProcessesOfTheirAllocations)
{
    group_sizes();
    EXPECT_EQ(report_.groups[0].device, contexts(3)[0].handle);
    EXPECT_EQ(report_.groups[1].device, contexts(3)[1].handle);
}

TEST_F(TwoDrivers, TellTheProcessOfAnAllocationOfTheOlderDriver)
{
    init(1);
    group_sizes();
    EXPECT_EQ(report_.groups[0].device, contexts(1)[0].handle);
}

TEST_F(TwoDrivers, CountTheSnapshotsAndTheShapesOfTheirAllocations)
{
    EXPECT_EQ(kept(), std::vector<Kept>{});
    EXPECT_EQ(group_sizes(), (std::vector<std::int32_t>{2, 1, 0}));
    EXPECT_EQ(report_.groups[0].width, 640);
    EXPECT_EQ(kept(),
              (std::vector<Kept>{{0xa1, 0x1f, 1, 1}, {0xa2, 0x1f, 1, 1}, {0xa3, 0x2f, 1, 1}}));
    EXPECT_EQ(group_sizes(), (std::vector<std::int32_t>{2, 1, 0}));
    EXPECT_EQ(report_.groups[0].hit_count, 2);
    EXPECT_EQ(kept(),
              (std::vector<Kept>{{0xa1, 0x1f, 2, 1}, {0xa2, 0x1f, 2, 1}, {0xa3, 0x2f, 2, 1}}));
}

TEST_F(TwoDrivers, KeepTheirLeaksOverExitAndInitialisation)
{
    group_sizes();
    exit(0);
    EXPECT_EQ(kept().size(), 3U);
    group_sizes();
    init(0);
    EXPECT_EQ(kept(),
              (std::vector<Kept>{{0xa1, 0x1f, 2, 1}, {0xa2, 0x1f, 2, 1}, {0xa3, 0x2f, 2, 1}}));
}

TEST_F(TwoDrivers, ShareOneListOfLeaks)
{
    group_sizes();
    init(1);
    EXPECT_EQ(kept().size(), 3U);
    // The other adapter holds an allocation with the handle and shape of a kept one, and two of a
    // shape of its own.
    EXPECT_EQ(group_sizes(), (std::vector<std::int32_t>{2, 1, 0}));
    EXPECT_EQ(report_.groups[0].hit_count, 1);
    EXPECT_EQ(kept(),
              (std::vector<Kept>{{0xa3, 0x2f, 2, 1}, {0xa4, 0x4f, 1, 1}, {0xa5, 0x4f, 1, 1}}));
}

}  // namespace
}  // namespace nimba::test
