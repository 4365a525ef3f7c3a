// SPDX-License-Identifier: MIT
// Which device contexts are listed, and in which order.
#include "child_process.hpp"
#include "core/current_adapter.hpp"
#include "device_tree.hpp"
#include "directory_listing.hpp"
#include "support/descriptor.hpp"
#include "support/messages.hpp"
#include "support/scoped_print_callback.hpp"

#include <cerrno>

namespace nimba::test {
namespace {

constexpr const char* kNoDirectory = "Error opening directory\n";
constexpr const char* kNoNode = "Fail to read devices info. skip...\n";
constexpr const char* kFull = "exceed ALLOCATION_SUMMARY_MAX!!! \n";

class DeviceMap : public DeviceMapTest {
  protected:
    static std::vector<std::string> numbers(int count)
    {
        std::vector<std::string> names(static_cast<std::size_t>(count));
        for (std::size_t i = 0; i < names.size(); ++i) {
            names[i] = std::to_string(i);
        }
        return names;
    }
};

TEST_F(DeviceMap, IsAllZeroWithoutContexts)
{
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(entries(0), Contexts{});
}

TEST_F(DeviceMap, TellsTheProcessOfAContext)
{
    const NamedProcess process{{"/usr/bin/app", "-u", "-"}};
    add("12", "pid = " + std::to_string(process.pid()) + "\nhandle = 1f\n");
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(entries(1), (Contexts{{process.pid(), 0x1f, "/usr/bin/app"}}));
}

TEST_F(DeviceMap, ReadsTheNodeInfoWithAVaDriver)
{
    add("12", "handle = c\n");
    add("12", "12", "handle = bad1\n");
    for (const std::int32_t va_driver : {1, 2, -1, 256}) {
        SCOPED_TRACE(va_driver);
        list(va_driver);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(entries(1), (Contexts{{0, 12, ""}}));
    }
}

TEST_F(DeviceMap, ReadsTheNodeOfTheEntrysNameWithoutAVaDriver)
{
    add("12", "12", "handle = c\n");
    add("12", "handle = bad1\n");
    list(0);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(entries(1), (Contexts{{0, 12, ""}}));
}

TEST_F(DeviceMap, DoesNotDependOnTheChip)
{
    add("12", "handle = c\n");
    for (const std::uint32_t chip : {0U, 0xffffffffU, unsigned{DEVICE_ID_QV_M20}}) {
        output_ = stdout_of([&] { status_ = get_device_pid_maps_internal(&map_, chip, 1); });
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(entries(1), (Contexts{{0, 12, ""}}));
    }
}

TEST_F(DeviceMap, OfTheCurrentAdapterReadsTheNodesOfItsDriver)
{
    add("12", "handle = a\n");
    add("12", "12", "handle = b\n");
    const auto list_current = [&] {
        output_ = stdout_of([&] { status_ = get_device_pid_maps(&map_); });
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, "");
        return entries(1);
    };
    current_is_va_driver = 1;
    EXPECT_EQ(list_current(), (Contexts{{0, 0xa, ""}}));
    current_is_va_driver = -3;
    EXPECT_EQ(list_current(), (Contexts{{0, 0xa, ""}}));
    current_is_va_driver = 0;
    EXPECT_EQ(list_current(), (Contexts{{0, 0xb, ""}}));
}

TEST_F(DeviceMap, HasTheOrderOfTheListing)
{
    add_numbered(5);
    {
        const ListedAs order{{"3", "1", ".", "4", "..", "0", "2"}};
        list();
    }
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(entries(5), (Contexts{{0, 3, ""}, {0, 1, ""}, {0, 4, ""}, {0, 0, ""}, {0, 2, ""}}));
    {
        const ListedAs order{{"..", "0", "4", "1", "."}};
        list();
    }
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(entries(3), (Contexts{{0, 0, ""}, {0, 4, ""}, {0, 1, ""}}));
}

TEST_F(DeviceMap, TakesEveryNameButTheDirectoryAndItsParentForAContext)
{
    const std::string long_name(255, 'n');
    for (const std::string& name : {std::string{".hidden"}, std::string{"..."}, std::string{"a b"},
                                    std::string{"%s%n"}, long_name}) {
        SCOPED_TRACE(name);
        add(name, "handle = 7\n");
        add(name, name, "handle = 8\n");
        list(1);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(entries(1), (Contexts{{0, 7, ""}}));
        list(0);
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(entries(1), (Contexts{{0, 8, ""}}));
        std::filesystem::remove_all(devices() / name);
    }
}

TEST_F(DeviceMap, HasAnEntryForAContextWithoutAnyKnownKey)
{
    add("0", "");
    add("1", "handle = 1\n");
    add("2", "name = x\n");
    add("3", "handle = 3\n");
    const ListedAs order{{"0", "1", "2", "3"}};
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(entries(4), (Contexts{{0, 0, ""}, {0, 1, ""}, {0, 0, ""}, {0, 3, ""}}));
}

TEST_F(DeviceMap, HasAnEntryForEachContextOfOneProcess)
{
    const NamedProcess process{{"/usr/bin/app"}};
    const std::string pid = "pid = " + std::to_string(process.pid()) + "\n";
    add("0", "handle = 5\n" + pid);
    add("1", pid + "handle = 5\n");
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(entries(2),
              (Contexts{{process.pid(), 5, "/usr/bin/app"}, {process.pid(), 5, "/usr/bin/app"}}));
}

TEST_F(DeviceMap, Of49ContextsIsNotFull)
{
    const Contexts contexts = add_numbered(49);
    const ListedAs order{numbers(49)};
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(entries(49), contexts);
}

TEST_F(DeviceMap, SaysThatItIsFullAt50Contexts)
{
    const Contexts contexts = add_numbered(50);
    const auto before = open_descriptors();
    {
        const ListedAs order{numbers(50)};
        list();
    }
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, kFull);
    EXPECT_EQ(entries(50), contexts);
}

TEST_F(DeviceMap, HasTheFirst50OfMoreContexts)
{
    Contexts contexts = add_numbered(53);
    contexts.resize(50);
    {
        const ListedAs order{numbers(53)};
        list();
    }
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, kFull);
    EXPECT_EQ(entries(50), contexts);
}

TEST_F(DeviceMap, LooksAtNothingBehindThe50thContext)
{
    const Contexts contexts = add_numbered(50);
    add("50", "handle = none\n");
    for (const char* next : {"50", "missing"}) {
        std::vector<std::string> names = numbers(50);
        names.emplace_back(next);
        {
            const ListedAs order{names};
            list();
        }
        EXPECT_EQ(status_, 0);
        EXPECT_EQ(output_, kFull);
        EXPECT_EQ(entries(50), contexts);
    }
}

TEST_F(DeviceMap, DoesNotTakeAnEarlierErrorForABrokenListing)
{
    // The process has gone, so that looking for its name sets errno.
    add("0", "pid = " + std::to_string(gone_process()) + "\n");
    errno = EIO;
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(output_, "");
}

TEST_F(DeviceMap, ForgetsTheContextsOfTheCallBefore)
{
    const NamedProcess process{{"/usr/bin/a-long-name"}};
    add("0", "pid = " + std::to_string(process.pid()) + "\nhandle = 1\n");
    add("1", "handle = 2\n");
    list();
    EXPECT_EQ(status_, 0);
    std::filesystem::remove_all(devices() / "0");
    list();
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(entries(1), (Contexts{{0, 2, ""}}));
}

TEST_F(DeviceMap, LeavesNoDescriptorOpen)
{
    const NamedProcess process{{"/usr/bin/app"}};
    const EndedProcess ended;
    add("0", "pid = " + std::to_string(process.pid()) + "\n");
    add("1", "pid = " + std::to_string(ended.pid()) + "\n");
    add("2", "pid = " + std::to_string(gone_process()) + "\n");
    const auto before = open_descriptors();
    list();
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(status_, 0);
}

TEST_F(DeviceMap, LeavesTheLibrarysMessagesAlone)
{
    const ScopedPrintCallback callback{keep_message};
    take_messages();
    add_numbered(50);
    list();
    EXPECT_EQ(output_, kFull);
    std::filesystem::remove(devices() / "7" / "info");
    list();
    EXPECT_EQ(output_, kNoNode);
    std::filesystem::remove_all(devices());
    list();
    EXPECT_EQ(output_, kNoDirectory);
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
