// SPDX-License-Identifier: MIT
#include "stub_discovery_fixture.hpp"

#include <array>
#include <cstring>

namespace nimba::test {
namespace {

using Bytes = std::array<std::uint8_t, 1704>;

class ExtendedIdentity : public StubDiscoveryTest {
  protected:
    // What gfx_find_adapter_ext1 makes of a record whose every byte is 0xa5.
    Bytes identity() const
    {
        struct {
            find_adapter_ext1 record;
            std::array<std::uint8_t, 8> behind;
        } buffer;
        std::memset(&buffer, 0xa5, sizeof buffer);
        EXPECT_EQ(library_.symbol<decltype(gfx_find_adapter_ext1)>("gfx_find_adapter_ext1")(
                      &buffer.record),
                  0);
        for (const std::uint8_t byte : buffer.behind) {
            EXPECT_EQ(byte, 0xa5);
        }
        Bytes bytes;
        std::memcpy(bytes.data(), &buffer.record, bytes.size());
        return bytes;
    }
};

TEST_F(ExtendedIdentity, IsZeroBeforeADiscovery)
{
    EXPECT_EQ(identity(), Bytes{});
}

TEST_F(ExtendedIdentity, IsLaidOutByteByByte)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 0x11, 0x12, 0x13}, 71);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M20, {0x9a02, 0x21, 0x22, 0x23}, 72);
    devices_.plug_card(0x10de, 0x2204, {0x9a03, 0x31, 0x32, 0x33}, 73);
    discover_with();

    Bytes expected{};
    expected[132] = 1;
    expected[136] = NIMBA_VENDOR_ID & 0xff;
    expected[137] = NIMBA_VENDOR_ID >> 8;
    expected[140] = QV_VENDOR_ID & 0xff;
    expected[141] = QV_VENDOR_ID >> 8;
    expected[144] = 0xde;
    expected[145] = 0x10;
    const std::array<std::uint8_t, 18> locations{0x01, 0x9a, 0x11, 0x12, 0x13, 0,
                                                 0x02, 0x9a, 0x21, 0x22, 0x23, 0,
                                                 0x03, 0x9a, 0x31, 0x32, 0x33, 0};
    std::memcpy(&expected[148], locations.data(), locations.size());
    const std::array<std::uint8_t, 24> luids{0x01, 0x9a, 0, 0, 0x13, 0x12, 0x11, 0,
                                             0x02, 0x9a, 0, 0, 0x23, 0x22, 0x21, 0,
                                             0x03, 0x9a, 0, 0, 0x33, 0x32, 0x31, 0};
    std::memcpy(&expected[168], luids.data(), luids.size());
    EXPECT_EQ(identity(), expected);
}

TEST_F(ExtendedIdentity, IsACopyOfTheWholeCache)
{
    auto& cache = library_.symbol<find_adapter_ext1>("find_adapter_ext1_cache");
    std::memset(&cache, 0x3c, sizeof cache);
    Bytes expected;
    expected.fill(0x3c);
    EXPECT_EQ(identity(), expected);
}

TEST_F(ExtendedIdentity, KeepsTheSlotsThatALaterDiscoveryDoesNotReach)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M20, {0x9a02, 2, 0x23, 0x24}, 72);
    discover_with();
    std::swap(stub_->devices[0], stub_->devices[1]);
    stub_->device_count = 1;
    discover();
    EXPECT_EQ(cache().vendor_id[0], static_cast<unsigned>(QV_VENDOR_ID));
    EXPECT_EQ(cache().luid[0].low, 0x9a02U);
    EXPECT_EQ(cache().busid_info[0].domain, 0x9a02);
    EXPECT_EQ(cache().busid_info[0].bus, 2);
    EXPECT_EQ(cache().vendor_id[1], static_cast<unsigned>(QV_VENDOR_ID));
    EXPECT_EQ(cache().luid[1].low, 0x9a02U);
    EXPECT_EQ(cache().luid[1].high, 0x022324U);
    EXPECT_EQ(cache().busid_info[1].domain, 0x9a02);
    EXPECT_EQ(cache().busid_info[1].bus, 2);
    EXPECT_EQ(cache().busid_info[1].device, 0x23);
    EXPECT_EQ(cache().busid_info[1].function, 0x24);
}

TEST_F(ExtendedIdentity, OutlivesADiscoveryThatListsNothing)
{
    devices_.plug_card(NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, {0x9a01, 1, 0, 0}, 71);
    discover_with();
    const Bytes before = identity();
    stub_->device_count = 0;
    discover();
    EXPECT_EQ(identity(), before);
    EXPECT_NE(before, Bytes{});
}

}  // namespace
}  // namespace nimba::test
