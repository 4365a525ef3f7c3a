// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <ostream>

namespace nimba::test {
namespace {

class DeviceListing : public StubDiscoveryTest {
  protected:
    void plug_two()
    {
        devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
        devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M20, {0x9a02, 2, 0, 0}, 72);
    }
};

TEST_F(DeviceListing, AsksForTheNumberThenForThatManyDevices)
{
    plug_two();
    discover_with();
    ASSERT_EQ(stub_->call_count, 2);
    EXPECT_EQ(stub_->calls[0].has_array, 0);
    EXPECT_EQ(stub_->calls[1].has_array, 1);
    EXPECT_EQ(stub_->calls[1].capacity, 2);
}

TEST_F(DeviceListing, FreesEveryDeviceOnce)
{
    plug_two();
    discover_with();
    EXPECT_EQ(stub_->given_devices, 2);
    EXPECT_EQ(stub_->free_calls, 1);
    EXPECT_EQ(stub_->free_count, 2);
    EXPECT_EQ(stub_->freed_devices, 2);
}

TEST_F(DeviceListing, ListsAndFreesMoreDevicesThanItExamines)
{
    for (std::uint8_t i = 0; i < 6; ++i) {
        devices_.plug_card(0x10de, 0x2204, {0x9a01, i, 0, 0}, 71 + i);
    }
    discover_with();
    EXPECT_EQ(stub_->calls[1].capacity, 6);
    EXPECT_EQ(stub_->freed_devices, 6);
}

TEST_F(DeviceListing, ExaminesOnlyTheDevicesThatTheSecondAnswerStillReports)
{
    plug_two();
    use_stub();
    stub_->answers[1] = 1;
    discover();
    EXPECT_EQ(control_enable(), 1);
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_STREQ(record_.header.chip_name[0], "Gpu0:Nimba-K1");
    EXPECT_EQ(record_.header.chip_id[1], 0U);
    EXPECT_EQ(messages_.back(), "find chip num:1, other vendor chip num:0\n");
    EXPECT_EQ(stub_->freed_devices, 1);
}

TEST_F(DeviceListing, ExaminesNoMoreDevicesThanTheArrayHolds)
{
    plug_two();
    use_stub();
    stub_->answers[0] = 1;
    discover();
    EXPECT_EQ(stub_->calls[1].capacity, 1);
    EXPECT_EQ(control_enable(), 1);
    EXPECT_EQ(record_.header.chip_num, 1);
    EXPECT_EQ(messages_.back(), "find chip num:1, other vendor chip num:0\n");
    EXPECT_EQ(stub_->freed_devices, 1);
}

TEST_F(DeviceListing, ReportsNoAdapterOnAMachineWithoutDrmDevices)
{
    discover_with();
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(record_.header.chip_num, 0);
    EXPECT_EQ(control_enable(), 0);
    EXPECT_EQ(messages_, Texts{});
    EXPECT_EQ(stub_->call_count, 1);
}

struct Answers {
    int first;
    int second;
    const char* name;
};

void PrintTo(const Answers& row, std::ostream* out)
{
    *out << row.name;
}

class DeviceListingFails : public DeviceListing, public testing::WithParamInterface<Answers> {};

TEST_P(DeviceListingFails, LeavesNothingButAChipNumberOf0)
{
    plug_two();
    use_stub();
    stub_->answers[0] = GetParam().first;
    stub_->answers[1] = GetParam().second;
    record_ = patterned_record();
    discover();
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(control_enable(), 0);
    find_adapter expected = patterned_record();
    expected.header.chip_num = 0;
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));
    EXPECT_EQ(messages_, Texts{});
    EXPECT_EQ(output_, "");
    EXPECT_EQ(opened_, OpenFiles{});
}

INSTANTIATE_TEST_SUITE_P(, DeviceListingFails,
                         testing::Values(Answers{0, kDrmStubHonest, "FirstAnswerNone"},
                                         Answers{-1, kDrmStubHonest, "FirstAnswerError"},
                                         Answers{-19, kDrmStubHonest, "FirstAnswerErrno"},
                                         Answers{kDrmStubHonest, 0, "SecondAnswerNone"},
                                         Answers{kDrmStubHonest, -1, "SecondAnswerError"}),
                         [](const testing::TestParamInfo<Answers>& row) { return row.param.name; });

}  // namespace
}  // namespace nimba::test
