// SPDX-License-Identifier: MIT
// Queries of the leak detector over snapshots of the driver's allocations.
#include "core/current_adapter.hpp"
#include "leak_fixture.hpp"
#include "support/descriptor.hpp"
#include "support/messages.hpp"
#include "support/scoped_print_callback.hpp"

#include <cerrno>
#include <stdexcept>

namespace nimba::test {
namespace {

std::string ten_times(const std::string& line)
{
    std::string lines;
    for (int i = 0; i < 10; ++i) {
        lines += line;
    }
    return lines;
}

class LeakQuery : public LeakTest {
  protected:
    // Expects that neither query changes anything once `break_tree` has been called and while as
    // many listings of each fail.
    template <class Break>
    void expect_nothing_changed(Break break_tree, std::size_t failures, const std::string& messages,
                                int error = EIO)
    {
        show({allocation(1), allocation(2)});
        query();
        break_tree();
        expect_nothing_changed_by([&] { EXPECT_EQ(query(), 0); }, failures, messages, error);
        expect_nothing_changed_by([&] { query_worker(); }, failures, messages, error);
    }

  private:
    template <class Query>
    void expect_nothing_changed_by(Query query, std::size_t failures, const std::string& messages,
                                   int error)
    {
        fill_report();
        const auto before = open_descriptors();
        {
            const BrokenListing broken{0, failures, error};
            query();
        }
        EXPECT_EQ(open_descriptors(), before);
        EXPECT_EQ(output_, messages);
        EXPECT_EQ(vec_memleak_result, (Records{allocation(1), allocation(2)}));
        EXPECT_TRUE(report_is_untouched());
    }
};

TEST_F(LeakQuery, KeepsAndReportsEveryAllocationOfTheFirstSnapshot)
{
    const Record other = with(allocation(2), &Record::width, 99);
    show({allocation(3), other, allocation(1)});
    EXPECT_EQ(query(), 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(vec_memleak_result, (Records{allocation(3), other, allocation(1)}));
    EXPECT_EQ(report(2), (Records{with(allocation(3), &Record::sum_count, 2), other}));
}

TEST_F(LeakQuery, CountsTheSnapshotsOfAnUnchangedSet)
{
    const Record other = with(allocation(2), &Record::width, 99);
    show({allocation(3), other, allocation(1)});
    for (int hits = 1; hits <= 20; ++hits) {
        query();
        EXPECT_EQ(vec_memleak_result,
                  (Records{with_hits(allocation(3), hits), with_hits(other, hits),
                           with_hits(allocation(1), hits)}));
        EXPECT_EQ(report(2), (Records{with(with_hits(allocation(3), hits), &Record::sum_count, 2),
                                      with_hits(other, hits)}));
    }
}

TEST_F(LeakQuery, KeepsItsOrderWhateverThatOfTheDriver)
{
    show({allocation(3), allocation(1), allocation(2)});
    query();
    show({allocation(5), allocation(2), allocation(4), allocation(1), allocation(3)});
    query();
    EXPECT_EQ(vec_memleak_result,
              (Records{with_hits(allocation(3), 2), with_hits(allocation(1), 2),
                       with_hits(allocation(2), 2), allocation(5), allocation(4)}));
    show({allocation(4), allocation(5), allocation(1)});
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 3), with_hits(allocation(5), 2),
                                           with_hits(allocation(4), 2)}));
}

TEST_F(LeakQuery, TakesAReusedHandleOfTheSameShapeForTheSameAllocation)
{
    show({allocation(1)});
    query();
    Record reused = allocation(1);
    reused.device = 77;
    reused.gpu_virt_addr = 78;
    show({reused});
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 2)}));
    EXPECT_EQ(report(1), (Records{with_hits(allocation(1), 2)}));
}

TEST_F(LeakQuery, CountsAnewAfterASnapshotWithoutTheAllocation)
{
    show({allocation(1)});
    query();
    query();
    show({});
    query();
    EXPECT_EQ(vec_memleak_result, Records{});
    show({allocation(1)});
    query();
    EXPECT_EQ(vec_memleak_result, (Records{allocation(1)}));
}

TEST_F(LeakQuery, CountsIdenticalAllocationsEachForItself)
{
    show({allocation(1), allocation(1)});
    query();
    query();
    show({allocation(1), allocation(1), allocation(1)});
    query();
    EXPECT_EQ(vec_memleak_result,
              (Records{with_hits(allocation(1), 3), with_hits(allocation(1), 3), allocation(1)}));
    EXPECT_EQ(report(1), (Records{with(with_hits(allocation(1), 3), &Record::sum_count, 3)}));
}

TEST_F(LeakQuery, ChangesNothingWithoutTheDriversDirectory)
{
    expect_nothing_changed([&] { remove_allocations(); }, 0,
                           ten_times("Error opening directory\n"));
}

TEST_F(LeakQuery, ChangesNothingWithoutANode)
{
    expect_nothing_changed([&] { show_missing(); }, 0,
                           ten_times("Fail to read allocation info. skip...\n"));
}

TEST_F(LeakQuery, ChangesNothingWhenEveryPassReadsSomeRecords)
{
    expect_nothing_changed(
        [&] {
            show_and_one_missing({allocation(1), allocation(3)});
        },
        0, ten_times("Fail to read allocation info. skip...\n"));
}

TEST_F(LeakQuery, ChangesNothingWhenTheListingBreaksOff)
{
    for (const int error : {EIO, ENOMEM, ESTALE, EBADF}) {
        SCOPED_TRACE(error);
        vec_memleak_result.clear();
        expect_nothing_changed([] {}, 10, "", error);
    }
}

TEST_F(LeakQuery, ChangesNothingBeforeAnyAdapterIsCurrent)
{
    if (std::filesystem::exists("/allocations")) {
        GTEST_SKIP() << "this machine has a directory /allocations";
    }
    expect_nothing_changed([] { leave_adapter(); }, 0, ten_times("Error opening directory\n"));
}

TEST_F(LeakQuery, GoesOnCountingAfterAFailure)
{
    show({allocation(1)});
    query();
    show_missing();
    query();
    show({allocation(1)});
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 2)}));
}

TEST_F(LeakQuery, HoldsTheRecordsOfAFailedPassTwice)
{
    show({allocation(1), allocation(2), allocation(3)});
    {
        const BrokenListing broken{2, 1};
        query();
    }
    EXPECT_EQ(vec_memleak_result,
              (Records{allocation(1), allocation(2), allocation(1), allocation(2), allocation(3)}));
    EXPECT_EQ(report(1), (Records{with(allocation(1), &Record::sum_count, 5)}));
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 2), with_hits(allocation(2), 2),
                                           with_hits(allocation(3), 2)}));
}

TEST_F(LeakQuery, SucceedsAtTheTenthPass)
{
    show({allocation(1)});
    {
        const BrokenListing broken{0, 9};
        query();
    }
    EXPECT_EQ(vec_memleak_result, (Records{allocation(1)}));
}

TEST_F(LeakQuery, GivesUpAfterTenPasses)
{
    show({allocation(1)});
    {
        const BrokenListing broken{0, 10};
        EXPECT_EQ(query(), 0);
    }
    EXPECT_EQ(vec_memleak_result, Records{});
    EXPECT_TRUE(report_is_untouched());
}

template <class Error, class Query>
std::string error_of(Query query)
{
    try {
        query();
    } catch (const Error& error) {
        return error.what();
    }
    return "no error";
}

TEST_F(LeakQuery, ChangesNothingWhenAConversionErrorLeavesIt)
{
    show({allocation(1)});
    query();
    query();
    const auto before = open_descriptors();
    fill_report();
    show_text("handle=80000000\n");
    EXPECT_EQ(error_of<std::out_of_range>([&] { query(); }), "stoi");
    EXPECT_EQ(error_of<std::out_of_range>([&] { get_memleak_information(&report_, 0, 1); }),
              "stoi");
    show_text("device=none\n");
    EXPECT_EQ(error_of<std::invalid_argument>([&] { query(); }), "stoi");
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_TRUE(report_is_untouched());
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 2)}));
    show({allocation(1)});
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 3)}));
}

TEST_F(LeakQuery, ReadsDevicesAsTheCurrentAdaptersDriverWritesThem)
{
    show_text("device=16\n");
    const auto device = [&] {
        vec_memleak_result.clear();
        query();
        EXPECT_EQ(vec_memleak_result.at(0).device, report(1).at(0).device);
        return report(1).at(0).device;
    };
    current_is_va_driver = 1;
    EXPECT_EQ(device(), 16);
    current_is_va_driver = -2;
    EXPECT_EQ(device(), 16);
    current_is_va_driver = 0;
    EXPECT_EQ(device(), 22);
}

TEST_F(LeakQuery, WorkerReadsDevicesAsItIsTold)
{
    show_text("device=16\n");
    current_is_va_driver = 1;
    for (const std::uint32_t chip : {0U, unsigned{DEVICE_ID_QV_M20}, 0xffffffffU}) {
        vec_memleak_result.clear();
        get_memleak_information(&report_, chip, 0);
        EXPECT_EQ(report(1).at(0).device, 22);
        vec_memleak_result.clear();
        get_memleak_information(&report_, chip, 7);
        EXPECT_EQ(report(1).at(0).device, 16);
    }
}

TEST_F(LeakQuery, AndItsWorkerShareTheKeptList)
{
    show({allocation(1)});
    query();
    get_memleak_information(&report_, 0, 1);
    EXPECT_EQ(report(1), (Records{with_hits(allocation(1), 2)}));
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 3)}));
}

TEST_F(LeakQuery, GoesByTheListAsTheHostLeftIt)
{
    vec_memleak_result = {with_hits(allocation(1), 41), allocation(2)};
    show({allocation(3), allocation(1)});
    query();
    EXPECT_EQ(vec_memleak_result, (Records{with_hits(allocation(1), 42), allocation(3)}));
    EXPECT_EQ(report(1), (Records{with(with_hits(allocation(1), 42), &Record::sum_count, 2)}));
}

TEST_F(LeakQuery, CountsOnFromTheSumThatTheHostLeft)
{
    vec_memleak_result = {with(allocation(1), &Record::sum_count, 4), allocation(2)};
    show({allocation(1), allocation(2)});
    query();
    EXPECT_EQ(report(1), (Records{with(with_hits(allocation(1), 2), &Record::sum_count, 5)}));
}

TEST_F(LeakQuery, LeavesNoDescriptorOpen)
{
    show({allocation(1), allocation(2)});
    const auto before = open_descriptors();
    query();
    query();
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(LeakQuery, LeavesTheLibrarysMessagesAlone)
{
    const ScopedPrintCallback callback{keep_message};
    take_messages();
    show({allocation(1)});
    query();
    EXPECT_EQ(output_, "");
    show_missing();
    query();
    EXPECT_EQ(output_, ten_times("Fail to read allocation info. skip...\n"));
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
