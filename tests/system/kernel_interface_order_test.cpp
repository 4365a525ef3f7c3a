// SPDX-License-Identifier: MIT
// When a kernel-interface library is loaded, asked for its size and unloaded, and what has happened
// by then.
#include "lifecycle_fixture.hpp"

#include <dlfcn.h>

#include <cstring>
#include <filesystem>
#include <ostream>
#include <utility>
#include <vector>

namespace nimba::test {
namespace {

struct Event {
    std::string library;
    std::string what;
    std::string usage;  // the text of the current slot's node "enable_usage"
    bool has_block;

    bool operator==(const Event&) const = default;
};

void PrintTo(const Event& event, std::ostream* out)
{
    *out << event.library << " " << event.what << ", usage " << event.usage
         << (event.has_block ? ", block" : ", no block");
}

using Events = std::vector<Event>;

class KernelInterfaceOrder;
KernelInterfaceOrder* running = nullptr;

class KernelInterfaceOrder : public LifecycleTest {
  public:
    void observe(const std::string& library, const char* what)
    {
        if (block() != nullptr) {
            std::memset(block(), 0x5a, kBlockSize);  // it is still allocated
        }
        events_.push_back({library, what, usage(record_.chip_id_idx), block() != nullptr});
    }

  protected:
    static constexpr std::size_t kBlockSize = 4096;

    KernelInterfaceOrder()
    {
        install_stub("kernel_interface_observed", kNimbaLibrary);
        fill_slot(0, DEVICE_ID_NIMBA_K1, 3);
        running = this;
    }
    ~KernelInterfaceOrder() override { running = nullptr; }

    void start()
    {
        ASSERT_EQ(init(0), DEVICE_ID_NIMBA_K1);
        take_events();
    }
    // The events since the last call.
    Events take_events() { return std::exchange(events_, {}); }

  private:
    Events events_;
};

TEST_F(KernelInterfaceOrder, InitLoadsSwitchesUsageOnAndThenAsksForTheSize)
{
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(take_events(), (Events{{kNimbaLibrary, "loaded", "?", false},
                                     {kNimbaLibrary, "asked", "1", false}}));
    EXPECT_NE(block(), nullptr);
}

TEST_F(KernelInterfaceOrder, ExitSwitchesUsageOffUnloadsAndThenFreesTheBlock)
{
    start();
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(take_events(), (Events{{kNimbaLibrary, "unloaded", "0", true}}));
    EXPECT_EQ(block(), nullptr);
}

TEST_F(KernelInterfaceOrder, InitAgainNeverUnloadsTheLibraryInBetween)
{
    start();
    EXPECT_EQ(init(0), DEVICE_ID_NIMBA_K1);
    EXPECT_EQ(take_events(), (Events{{kNimbaLibrary, "asked", "1", false}}));
    EXPECT_EQ(exit(0), 0);
    EXPECT_EQ(take_events(), (Events{{kNimbaLibrary, "unloaded", "0", true}}));
}

TEST_F(KernelInterfaceOrder, InitForAnotherLibraryUnloadsTheEarlierOneBehindTheNewOnesLoading)
{
    install_stub("kernel_interface_observed", kQvLibrary);
    fill_slot(1, DEVICE_ID_QV_M20, 4);
    start();
    EXPECT_EQ(init(1), DEVICE_ID_QV_M20);
    EXPECT_EQ(take_events(), (Events{{kQvLibrary, "loaded", "?", true},
                                     {kNimbaLibrary, "unloaded", "?", true},
                                     {kQvLibrary, "asked", "1", false}}));
    EXPECT_EQ(exit(1), 0);
    EXPECT_EQ(take_events(), (Events{{kQvLibrary, "unloaded", "0", true}}));
}

TEST_F(KernelInterfaceOrder, InitOfAnUnknownChipUnloadsTheEarlierLibraryAndKeepsTheBlock)
{
    fill_slot(1, 0x7777, 4);
    start();
    EXPECT_EQ(init(1), -1);
    EXPECT_EQ(take_events(), (Events{{kNimbaLibrary, "unloaded", "?", true}}));
    EXPECT_NE(block(), nullptr);
}

TEST_F(KernelInterfaceOrder, InitThatFindsNoLibraryUnloadsTheEarlierOneAndKeepsTheBlock)
{
    install_garbage(kQvLibrary);
    fill_slot(1, DEVICE_ID_QV_M20, 4);
    start();
    EXPECT_EQ(init(1), -1);
    EXPECT_EQ(take_events(), (Events{{kNimbaLibrary, "unloaded", "?", true}}));
    EXPECT_NE(block(), nullptr);
}

}  // namespace
}  // namespace nimba::test

void observe_kernel_interface(const kernel_interface_state* copy, const char* event)
{
    Dl_info library{};
    if (nimba::test::running != nullptr && ::dladdr(copy, &library) != 0) {
        nimba::test::running->observe(std::filesystem::path{library.dli_fname}.filename(), event);
    }
}
