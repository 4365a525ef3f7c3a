// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/adapter_checks.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cerrno>

namespace nimba::smi {
namespace {

constexpr const char* kBusId = "0000:01:00.0";
const Check kDebugfsWorks = passed("debugfs", "");
const Check kDebugfsFails = failed("debugfs", ExitStatus::kNoPermission, "", "");
const Subject kSubject{"adapter 0000:01:00.0 (Gpu0:Nimba-K1)", kBusId};

KernelInterfaceFacts whole_library()
{
    KernelInterfaceFacts facts;
    facts.names = {"libfirst.so", "libsecond.so"};
    facts.loaded = "libfirst.so";
    facts.path = "/lib/libfirst.so";
    facts.size_function = "gfx_get_struct_size";
    facts.block_size = 4096;
    facts.functions = {"gfx_flip_count", "gfx_init_hwinfo", "gfx_deinit_hwinfo", "gfx_get_hwinfo",
                       "gfx_get_usage_info"};
    return facts;
}

Check driver_of(DriverKind kind, const Check& debugfs)
{
    Adapter adapter;
    adapter.bus_id = kBusId;
    adapter.card = 3;
    adapter.vendor_id = 0x5156;
    adapter.driver = kind;
    return driver_check(kSubject, Answer{to_json_value(Description{adapter, std::nullopt})},
                        debugfs);
}

TEST(DriverCheck, TellsTheKind)
{
    EXPECT_EQ(driver_of(DriverKind::kVa, kDebugfsWorks), passed("driver", "va"));
    EXPECT_EQ(driver_of(DriverKind::kLegacy, kDebugfsWorks), passed("driver", "legacy"));
    EXPECT_EQ(driver_of(DriverKind::kUnknown, kDebugfsWorks),
              noted("driver",
                    "the driver kind is unknown, since /sys/kernel/debug/dri/3/qv/info cannot be "
                    "read: devices of allocations may be wrong",
                    "see why in the kernel's log: sudo dmesg | grep 0000:01:00.0"));
}

TEST(DriverCheck, IsSkippedWhenDebugfsCouldNotTellTheKind)
{
    EXPECT_EQ(driver_of(DriverKind::kUnknown, kDebugfsFails), skipped("driver", kDebugfsFails));
    EXPECT_EQ(driver_of(DriverKind::kVa, kDebugfsFails), passed("driver", "va"));
}

TEST(DriverCheck, FailsForAnAdapterThatIsGone)
{
    const Check gone = driver_check(kSubject, Answer{to_json_value(Description{})}, kDebugfsWorks);
    EXPECT_EQ(gone.status, ExitStatus::kNoAdapter);
    EXPECT_EQ(gone.found,
              "adapter 0000:01:00.0 (Gpu0:Nimba-K1): gone since discovery; run the command again");
}

TEST(DriverCheck, FailsForADriverThatBlocks)
{
    const Check lost = driver_check(
        kSubject, Lost{"gfx_find_adapter", "no answer within 10 s", true}, kDebugfsWorks);
    EXPECT_EQ(lost.result, CheckResult::kFail);
    EXPECT_EQ(lost.status, ExitStatus::kWorkerLost);
}

TEST(KernelInterfaceChecks, TellWhatALibraryIsGoodFor)
{
    const std::vector<Check> expected{
        passed("kernel_interface", "/lib/libfirst.so"),
        passed("device_block", "4096 bytes, from gfx_get_struct_size"),
        passed("frame_rate", "counted by gfx_flip_count and by the driver's nodes"),
        passed("bandwidth", "gfx_get_hwinfo is there"),
        passed("busy_words", "gfx_get_usage_info is there")};
    EXPECT_EQ(kernel_interface_checks(whole_library()), expected);
}

TEST(KernelInterfaceChecks, TellOfASecondChoice)
{
    KernelInterfaceFacts facts = whole_library();
    facts.errors = {"libfirst.so: no such file"};
    facts.loaded = "libsecond.so";
    facts.path = "/lib/libsecond.so";
    EXPECT_EQ(kernel_interface_checks(facts).front(),
              passed("kernel_interface", "/lib/libsecond.so, in place of libfirst.so"));
}

TEST(KernelInterfaceChecks, WithoutALibraryTellWhichToInstall)
{
    KernelInterfaceFacts facts;
    facts.names = {"libfirst.so", "libsecond.so"};
    facts.errors = {"libfirst.so: no such file", "libsecond.so: wrong ELF class"};
    const auto checks = kernel_interface_checks(facts);
    EXPECT_EQ(checks.front(),
              noted("kernel_interface",
                    "its kernel-interface library is missing or unusable: bandwidth and busy "
                    "words are not available",
                    "install the driver's package that has libfirst.so or libsecond.so and type: "
                    "sudo ldconfig (the loader says: libsecond.so: wrong ELF class)"));
    ASSERT_EQ(checks.size(), 5U);
    for (std::size_t i = 1; i < checks.size(); ++i) {
        EXPECT_EQ(checks[i].found, "because of kernel_interface");
    }
}

TEST(KernelInterfaceChecks, NoteAChipWithoutAKnownLibrary)
{
    EXPECT_EQ(kernel_interface_checks({}).front().remedy,
              "install an nimba-smi that knows the chip");
}

TEST(KernelInterfaceChecks, NoteASizeFunctionThatIsMissingOrTellsNone)
{
    KernelInterfaceFacts facts = whole_library();
    facts.block_size = 0;
    EXPECT_EQ(kernel_interface_checks(facts).at(1).found,
              "gfx_get_struct_size of libfirst.so returned 0: bandwidth and busy words are not "
              "available");
    EXPECT_EQ(kernel_interface_checks(facts).at(3).found, "because of device_block");
    EXPECT_EQ(kernel_interface_checks(facts).at(4).found, "because of device_block");
    facts.size_function.clear();
    EXPECT_EQ(kernel_interface_checks(facts).at(1).found,
              "libfirst.so has neither gfx_get_struct_size nor qv_get_struct_size: bandwidth and "
              "busy words are not available");
    EXPECT_EQ(kernel_interface_checks(facts).at(1).result, CheckResult::kNote);
}

TEST(KernelInterfaceChecks, TakeTheOlderFunctionsInPlaceOfTheNewer)
{
    KernelInterfaceFacts facts = whole_library();
    facts.functions = {"qv_init_hwinfo", "qv_deinit_hwinfo", "qv_get_hwinfo", "qvGetHwqInfo"};
    const auto checks = kernel_interface_checks(facts);
    EXPECT_EQ(checks.at(2), passed("frame_rate", "counted by the driver's nodes alone"));
    EXPECT_EQ(checks.at(3), passed("bandwidth", "qv_get_hwinfo is there"));
    EXPECT_EQ(checks.at(4), passed("busy_words", "qvGetHwqInfo is there"));
}

TEST(KernelInterfaceChecks, TakeTheExtendedGetterFirst)
{
    KernelInterfaceFacts facts = whole_library();
    facts.functions = {"qv_init_hwinfo", "qv_deinit_hwinfo", "gfx_get_hwinfo_ext"};
    EXPECT_EQ(kernel_interface_checks(facts).at(3),
              passed("bandwidth", "gfx_get_hwinfo_ext is there"));
}

TEST(KernelInterfaceChecks, NameTheOlderFunctionsThatAreMissing)
{
    KernelInterfaceFacts facts = whole_library();
    facts.functions = {"qv_init_hwinfo", "qvGetHwqInfo"};
    EXPECT_EQ(kernel_interface_checks(facts).at(3).found,
              "libfirst.so lacks qv_deinit_hwinfo, qv_get_hwinfo: bandwidth is not available");
    facts.functions = {"gfx_get_usage_info"};
    EXPECT_EQ(kernel_interface_checks(facts).at(3).found,
              "libfirst.so lacks gfx_init_hwinfo, gfx_deinit_hwinfo, gfx_get_hwinfo: bandwidth is "
              "not available");
}

TEST(KernelInterfaceChecks, NoteFiguresWithoutTheirFunctions)
{
    KernelInterfaceFacts facts = whole_library();
    facts.functions = {"gfx_init_hwinfo", "gfx_get_hwinfo", "gfx_get_usage_info_ext"};
    const auto checks = kernel_interface_checks(facts);
    EXPECT_EQ(checks.at(3).found,
              "libfirst.so lacks gfx_deinit_hwinfo: bandwidth is not available");
    EXPECT_EQ(checks.at(4).found,
              "libfirst.so has neither gfx_get_usage_info nor qvGetHwqInfo: busy words are not "
              "available");
    EXPECT_EQ(checks.at(4).remedy,
              "install the version of the driver's package that belongs to the loaded driver");
}

TEST(DebugChecks, PassWithBothDirectories)
{
    const std::vector<Check> expected{passed("debug_directory", "/d"),
                                      passed("allocations", "/d/allocations")};
    EXPECT_EQ(debug_checks({{"/d", 0}, {"/d/allocations", 0}}, kBusId, kDebugfsWorks), expected);
}

TEST(DebugChecks, AreSkippedWithoutDebugfs)
{
    const auto checks =
        debug_checks({{"/d", EACCES}, {"/d/allocations", EACCES}}, kBusId, kDebugfsFails);
    EXPECT_EQ(checks.at(0), skipped("debug_directory", kDebugfsFails));
    EXPECT_EQ(checks.at(1), skipped("allocations", kDebugfsFails));
}

TEST(DebugChecks, FailForADirectoryThatIsNotThere)
{
    const auto checks =
        debug_checks({{"/d", ENOENT}, {"/d/allocations", ENOENT}}, kBusId, kDebugfsWorks);
    EXPECT_EQ(checks.at(0),
              failed("debug_directory", ExitStatus::kNoAdapter,
                     "there is no directory /d: the driver does not show its memory, or the "
                     "adapter is gone (see dmesg)",
                     "see why in the kernel's log: sudo dmesg | grep 0000:01:00.0"));
    EXPECT_EQ(checks.at(1).found, "because of debug_directory");
}

TEST(DebugChecks, FailForAnAllocationThatCannotBeRead)
{
    const auto checks =
        debug_checks({{"/d", 0}, {"/d/allocations/1/info", EIO}}, kBusId, kDebugfsWorks);
    EXPECT_EQ(checks.at(1).found,
              "cannot read /d/allocations/1/info: Input/output error (see dmesg)");
    EXPECT_EQ(checks.at(1).status, ExitStatus::kNoAdapter);
}

TEST(InfoChecks, PassWithADirectoryAndItsSwitch)
{
    const std::vector<Check> expected{passed("info_directory", "/i"),
                                      passed("usage_accounting", "/i/enable_usage")};
    EXPECT_EQ(info_checks({{"/i", 0}, {"/i/enable_usage", 0}, 0}, kBusId), expected);
}

TEST(InfoChecks, FailForADirectoryThatIsClosed)
{
    const auto checks = info_checks({{"/i", EACCES}, {"/i", EACCES}, EACCES}, kBusId);
    EXPECT_EQ(checks.at(0),
              failed("info_directory", ExitStatus::kNoPermission,
                     "no permission to read /i: run as root", "type: sudo nimba-smi doctor"));
    EXPECT_EQ(checks.at(1).result, CheckResult::kSkipped);
}

TEST(InfoChecks, NoteASwitchThatCannotBeWritten)
{
    EXPECT_EQ(info_checks({{"/i", 0}, {"/i/enable_usage", 0}, EACCES}, kBusId).at(1),
              noted("usage_accounting",
                    "no permission to write /i/enable_usage: run as root; engine use is not "
                    "counted",
                    "type: sudo nimba-smi doctor"));
    EXPECT_EQ(info_checks({{"/i", 0}, {"/i/enable_usage", EIO}, 0}, kBusId).at(1).found,
              "cannot read /i/enable_usage: Input/output error (see dmesg)");
}

TEST(InfoChecks, PassWithoutASwitch)
{
    EXPECT_EQ(info_checks({{"/i", 0}, {"/i/enable_usage", ENOENT}, ENOENT}, kBusId).at(1),
              passed("usage_accounting", "the driver has no switch, and counts always"));
}

TEST(HwmonCheck, IsANoteWithoutTheDirectory)
{
    EXPECT_EQ(hwmon_check({"/h", 0}, kBusId), passed("hwmon", "/h"));
    EXPECT_EQ(hwmon_check({"/h", ENOENT}, kBusId),
              noted("hwmon",
                    "there is no directory /h: the driver does not show its temperature and fans, "
                    "or the adapter is gone (see dmesg)",
                    "see why in the kernel's log: sudo dmesg | grep 0000:01:00.0"));
}

TEST(ProcFileCheck, IsANoteWithoutTheFile)
{
    EXPECT_EQ(proc_file_check({"/proc/gpuinfo_0", 0}, kBusId),
              passed("proc_file", "/proc/gpuinfo_0"));
    EXPECT_EQ(proc_file_check({"/proc/gpuinfo_0", ENOENT}, kBusId),
              noted("proc_file",
                    "there is no file /proc/gpuinfo_0: the library does not tell the versions of "
                    "driver and firmware, fill rates and resolutions",
                    "see why in the kernel's log: sudo dmesg | grep 0000:01:00.0"));
    EXPECT_EQ(proc_file_check({"/proc/gpuinfo_0", EACCES}, kBusId).found,
              "no permission to read /proc/gpuinfo_0: run as root");
}

}  // namespace
}  // namespace nimba::smi
