// SPDX-License-Identifier: MIT
// What has happened when each message of an initialisation or an exit arrives.
#include "lifecycle_fixture.hpp"

#include <functional>
#include <ostream>
#include <vector>

namespace nimba::test {
namespace {

struct Moment {
    std::string message;
    std::string usage;
    bool library_loaded;
    bool has_block;

    bool operator==(const Moment&) const = default;
};

void PrintTo(const Moment& moment, std::ostream* out)
{
    *out << testing::PrintToString(moment.message) << " usage " << moment.usage
         << (moment.library_loaded ? ", library" : ", no library")
         << (moment.has_block ? ", block" : ", no block");
}

std::function<void(const char*)> observe;

int observe_message(const char* text, ...)
{
    observe(text);
    return 0;
}

class StepOrder : public LifecycleTest {
  protected:
    StepOrder()
    {
        observe = [this](const char* text) {
            moments_.push_back({text, usage(0), in_process(kNimbaLibrary), block() != nullptr});
        };
    }
    // Observes from here on.
    void watch() { global<nimba_print_callback>("pServerPrintCallback") = observe_message; }
    void stop_watching() { global<nimba_print_callback>("pServerPrintCallback") = keep_message; }

    std::vector<Moment> moments_;
};

TEST_F(StepOrder, InitOfAnUnknownChipSwitchesUsageOnBetweenItsTwoComplaints)
{
    fill_slot(0, 0x7777, 3);
    watch();
    EXPECT_EQ(init(0), -1);
    stop_watching();
    EXPECT_EQ(moments_,
              (std::vector<Moment>{
                  {"gpuinfo_select_new_chip index: 0, name: Gpu0:Test \n", "?", false, false},
                  {kStartMessage, "?", false, false},
                  {"invalidate chip id. \n ", "?", false, false},
                  {"open libhwbridge module fail. \n ", "1", false, false},
              }));
}

TEST_F(StepOrder, InitLoadsTheLibraryBehindTheFirstMessagesAndAsksForTheSizeLast)
{
    install_stub("kernel_interface_none", kNimbaLibrary);
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    watch();
    EXPECT_EQ(init(0), -1);
    stop_watching();
    EXPECT_EQ(moments_,
              (std::vector<Moment>{
                  {"gpuinfo_select_new_chip index: 0, name: Gpu0:Test \n", "?", false, false},
                  {kStartMessage, "?", false, false},
                  {"get pfn_gfx_get_struct_size fail. \n ", "1", true, false},
              }));
}

TEST_F(StepOrder, ExitEmptiesThePreferencesLast)
{
    install_stub("kernel_interface_gfx", kNimbaLibrary);
    fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    watch();
    EXPECT_EQ(exit(0), 0);
    stop_watching();
    EXPECT_EQ(moments_, (std::vector<Moment>{
                            {"gfx_global_exit enter, chip_id_idx: 0 \n", "1", true, true},
                            {kStopMessage, "0", false, false},
                        }));
}

}  // namespace
}  // namespace nimba::test
