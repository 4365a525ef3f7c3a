// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <algorithm>
#include <ostream>

namespace nimba::test {
namespace {

struct Filter {
    std::uint32_t value;
    std::vector<std::string> names;  // of the adapters that pass
    const char* name;
};

void PrintTo(const Filter& row, std::ostream* out)
{
    *out << row.name;
}

class VendorFilter : public StubDiscoveryTest, public testing::WithParamInterface<Filter> {};

TEST_P(VendorFilter, SkipsOtherAdaptersAfterLoggingThem)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M30, {0x9a01, 2, 0, 0}, 72);
    devices_.plug_card(0x10de, 0x2204, {0x9a01, 3, 0, 0}, 73);
    record_.header.vendor_id_filter = GetParam().value;
    discover_with();

    ASSERT_EQ(record_.header.chip_num, static_cast<int>(GetParam().names.size()));
    for (std::size_t slot = 0; slot < GetParam().names.size(); ++slot) {
        EXPECT_EQ(record_.header.chip_name[slot], GetParam().names[slot]);
    }
    EXPECT_EQ(std::ranges::count(messages_, check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1)), 1);
    EXPECT_EQ(std::ranges::count(messages_, check_line(QV_VENDOR_ID, DEVICE_ID_QV_M30)), 1);
    // The adapters' own descriptors and that of the other vendor's GPU.
    EXPECT_EQ(opened_.size(), GetParam().names.size() + 1);
    EXPECT_EQ(cache().other_vendor_chip_num, 1);
    EXPECT_STREQ(record_.header.chip_name[2], "Gpu2:Nvidia-GPU");
    EXPECT_EQ(record_.header.vendor_id_filter, GetParam().value);
    EXPECT_EQ(stub_->live_versions, 0);
    EXPECT_EQ(stub_->wrong_frees, 0);
}

INSTANTIATE_TEST_SUITE_P(
    , VendorFilter,
    testing::Values(Filter{0xFFFF, {"Gpu0:Nimba-K1", "Gpu1:QV M-30"}, "AcceptsBothVendors"},
                    Filter{NIMBA_VENDOR_ID, {"Gpu0:Nimba-K1"}, "AcceptsTheFirstVendor"},
                    Filter{QV_VENDOR_ID, {"Gpu0:QV M-30"}, "AcceptsTheSecondVendor"},
                    Filter{0, {}, "OfAZeroedRecordAcceptsNone"},
                    Filter{0x10de, {}, "OfAnotherVendorAcceptsNone"},
                    Filter{0xFFFFFFFF, {}, "OfAllBitsAcceptsNone"}),
    [](const testing::TestParamInfo<Filter>& row) { return row.param.name; });

TEST_F(StubDiscoveryTest, AFilteredAdapterLeavesNoTraceInTheRecordAndTheCache)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
    record_ = patterned_record();
    record_.header.vendor_id_filter = QV_VENDOR_ID;
    find_adapter expected = record_;
    expected.header.chip_num = 0;
    discover_with();
    EXPECT_EQ(bytes_of(record_), bytes_of(expected));
    EXPECT_EQ(cache().vendor_id[0], 0U);
    EXPECT_EQ(messages_, (Texts{check_line(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1),
                                "find chip num:0, other vendor chip num:0\n"}));
    EXPECT_EQ(opened_, OpenFiles{});
    EXPECT_EQ(control_enable(), 1);
}

}  // namespace
}  // namespace nimba::test
