// SPDX-License-Identifier: MIT
// What discovery has written when each of its messages arrives.
#include "stub_discovery_fixture.hpp"

#include <functional>
#include <ostream>
#include <vector>

namespace nimba::test {
namespace {

constexpr int kCallersFd = 77;
constexpr int kCallersCard = 99;

struct Moment {
    std::string message;
    std::uint32_t vendor;  // in the extended identity
    std::string chip_name;
    bool has_fd;  // in place of the caller's
    int card;
    int domain;  // in the extended identity
    std::uint32_t luid;
    std::string busid;

    bool operator==(const Moment&) const = default;
};

void PrintTo(const Moment& moment, std::ostream* out)
{
    *out << testing::PrintToString(moment.message) << " vendor " << moment.vendor << ", name "
         << moment.chip_name << (moment.has_fd ? ", descriptor" : ", no descriptor") << ", card "
         << moment.card << ", domain " << moment.domain << ", luid " << moment.luid << ", busid "
         << moment.busid;
}

std::function<void(const char*)> observe;

int observe_message(const char* text, ...)
{
    observe(text);
    return 0;
}

class DiscoveryOrder : public StubDiscoveryTest {
  protected:
    // Discovers, and returns what stands in the slot at each message. The numbers are 0 before.
    std::vector<Moment> moments_of(int slot)
    {
        record_.header.drm_fd[slot] = kCallersFd;
        record_.header.drm_card_idx[slot] = kCallersCard;
        std::vector<Moment> moments;
        observe = [&, slot](const char* text) {
            moments.push_back({text, cache().vendor_id[slot], record_.header.chip_name[slot],
                               record_.header.drm_fd[slot] != kCallersFd,
                               record_.header.drm_card_idx[slot], cache().busid_info[slot].domain,
                               cache().luid[slot].high, record_.gpu_infos[slot].busid});
        };
        use_stub();
        library_.symbol<nimba_print_callback>("pServerPrintCallback") = observe_message;
        discover();
        library_.symbol<nimba_print_callback>("pServerPrintCallback") = keep_message;
        return moments;
    }
};

TEST_F(DiscoveryOrder, AnAdaptersFieldsAreWrittenBetweenTheirMessages)
{
    devices_.plug_card(QV_VENDOR_ID, DEVICE_ID_QV_M30, {0x9a01, 0x1f, 0x0b, 0x02}, 71);
    const char* const name = "Gpu0:QV M-30";
    const char* const busid = "9a01:1f:0b.2";
    EXPECT_EQ(moments_of(0),
              (std::vector<Moment>{
                  {check_line(QV_VENDOR_ID, DEVICE_ID_QV_M30), 0, "", false, 99, 0, 0, ""},
                  {"find chip mv9\n", QV_VENDOR_ID, name, false, 99, 0, 0, ""},
                  {"drm_card_idx: 71\n", QV_VENDOR_ID, name, true, 71, 0, 0, ""},
                  {"gpu_busid: 0x9a01:1f:0b.2\n", QV_VENDOR_ID, name, true, 71, 0x9a01, 0, ""},
                  {"gpu_luid: 0x00009a01:0x001f0b02\n", QV_VENDOR_ID, name, true, 71, 0x9a01,
                   0x1f0b02, ""},
                  {"find_adapter->header.IS_VA_driver[0] = 0\n", QV_VENDOR_ID, name, true, 71,
                   0x9a01, 0x1f0b02, busid},
                  {"find chip num:1, other vendor chip num:0\n", QV_VENDOR_ID, name, true, 71,
                   0x9a01, 0x1f0b02, busid},
              }));
}

TEST_F(DiscoveryOrder, AForeignGpusCardIsWrittenBehindItsName)
{
    devices_.plug_card(0x1002, 0x744c, {0x9a02, 0xc3, 0x05, 0x01}, 75);
    const char* const name = "Gpu2:Amd-GPU";
    EXPECT_EQ(
        moments_of(2),
        (std::vector<Moment>{
            {"find chip amd\n", 0x1002, name, false, 99, 0, 0, ""},
            {"gpu_busid: 0x9a02:c3:05.1\n", 0x1002, name, false, 75, 0x9a02, 0, ""},
            {"gpu_luid: 0x00009a02:0x00c30501\n", 0x1002, name, false, 75, 0x9a02, 0xc30501, ""},
            {"find chip num:0, other vendor chip num:1\n", 0x1002, name, false, 75, 0x9a02,
             0xc30501, ""},
        }));
}

}  // namespace
}  // namespace nimba::test
