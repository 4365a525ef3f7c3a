// SPDX-License-Identifier: MIT
// What a machine file says, key by key, and what holds where it says nothing.
#include "machine_of.hpp"
#include "nimba_mgmt_interface.h"

#include <gtest/gtest.h>

#include <string>

namespace nimba::sim::test {
namespace {

TEST(MachineFile, NothingButADescriptionIsAMachineWithoutDevices)
{
    const Machine machine = machine_of("");
    EXPECT_EQ(machine.description, "A machine");
    EXPECT_TRUE(machine.adapters.empty());
    EXPECT_TRUE(machine.foreign_gpus.empty());
    EXPECT_TRUE(machine.platform_devices.empty());
    EXPECT_TRUE(machine.processes.empty());
    EXPECT_TRUE(machine.kernel_interfaces.empty());
}

TEST(MachineFile, AdapterHasDefaults)
{
    const Machine machine = machine_of(R"(
[[adapter]]
chip = "nimba-k3t"
bus_id = "0000:0a:00.0"
card = 5
)");
    ASSERT_EQ(machine.adapters.size(), 1U);
    const Adapter& adapter = machine.adapters.front();
    EXPECT_EQ(adapter.pci.vendor, NIMBA_VENDOR_ID);
    EXPECT_EQ(adapter.pci.device, DEVICE_ID_NIMBA_K3T);
    EXPECT_EQ(to_text(adapter.pci.address), "0000:0a:00.0");
    EXPECT_EQ(adapter.driver_dir, "jw");
    EXPECT_EQ(adapter.drm.card, 5);
    EXPECT_EQ(adapter.drm.render, 133);
    EXPECT_EQ(adapter.drm.nodes, (std::set{DrmNode::kPrimary, DrmNode::kRender}));
    EXPECT_TRUE(adapter.drm.unopenable.empty());
    EXPECT_TRUE(adapter.drm.answers_version);
    EXPECT_EQ(adapter.drm.driver, "jw");
    EXPECT_EQ(adapter.directories, (NodeDirectories{{NodeDirectory::kDebug, {{"info", "VA=1\n"}}},
                                                    {NodeDirectory::kInfo, {}},
                                                    {NodeDirectory::kHwmon, {}},
                                                    {NodeDirectory::kProc, {}}}));
    EXPECT_TRUE(adapter.unreadable.empty());
    EXPECT_TRUE(adapter.missing.empty());
}

TEST(MachineFile, AdapterSaysOtherwise)
{
    const Machine machine = machine_of(R"(
[[adapter]]
vendor = "qv"
device = 0x2fff
bus_id = "0001:0a:1f.7"
card = 1
render = 128
nodes = ["control", "primary"]
unopenable = ["control"]
version = false
driver = "legacy"
proc = "Device ID : 2fff\n"
unreadable = ["hwmon", "info/a/b"]
missing = ["info/eclk"]

[adapter.debug]
info = "VA=7\n"

[adapter.info]
"a/b" = "1"

[adapter.hwmon]
temp1_input = ""
)");
    const Adapter& adapter = machine.adapters.at(0);
    EXPECT_EQ(adapter.pci.vendor, QV_VENDOR_ID);
    EXPECT_EQ(adapter.pci.device, 0x2FFF);
    EXPECT_EQ(adapter.pci.address, (PciAddress{1, 0x0A, 0x1F, 7}));
    EXPECT_EQ(adapter.driver_dir, "qv");
    EXPECT_EQ(adapter.drm.card, 1);
    EXPECT_EQ(adapter.drm.render, 128);
    EXPECT_EQ(adapter.drm.nodes, (std::set{DrmNode::kPrimary, DrmNode::kControl}));
    EXPECT_EQ(adapter.drm.unopenable, std::set{DrmNode::kControl});
    EXPECT_FALSE(adapter.drm.answers_version);
    EXPECT_EQ(adapter.directories,
              (NodeDirectories{{NodeDirectory::kDebug, {{"info", "VA=7\n"}}},
                               {NodeDirectory::kInfo, {{"a/b", "1"}}},
                               {NodeDirectory::kHwmon, {{"temp1_input", ""}}},
                               {NodeDirectory::kProc, {{"", "Device ID : 2fff\n"}}}}));
    ASSERT_EQ(adapter.unreadable.size(), 2U);
    EXPECT_EQ(adapter.unreadable.at(0).directory, NodeDirectory::kHwmon);
    EXPECT_EQ(adapter.unreadable.at(0).path, "");
    EXPECT_EQ(adapter.unreadable.at(1).directory, NodeDirectory::kInfo);
    EXPECT_EQ(adapter.unreadable.at(1).path, "a/b");
    ASSERT_EQ(adapter.missing.size(), 1U);
    EXPECT_EQ(adapter.missing.at(0).directory, NodeDirectory::kInfo);
    EXPECT_EQ(adapter.missing.at(0).path, "eclk");
}

TEST(MachineFile, DriverKindDecidesTheDebugDirectory)
{
    const auto debug_of = [](const std::string& keys) {
        const Machine machine = machine_of(
            "[[adapter]]\nchip = \"qv-m20\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n" + keys);
        const NodeDirectories& directories = machine.adapters.at(0).directories;
        const auto debug = directories.find(NodeDirectory::kDebug);
        return debug == directories.end() ? Nodes{{"(absent)", ""}} : debug->second;
    };
    EXPECT_EQ(debug_of("driver = \"va\"\n"), (Nodes{{"info", "VA=1\n"}}));
    EXPECT_EQ(debug_of("driver = \"legacy\"\n"), (Nodes{{"info", "VA=0\n"}}));
    EXPECT_EQ(debug_of("driver = \"none\"\n"), (Nodes{{"(absent)", ""}}));
    EXPECT_EQ(debug_of("driver = \"none\"\ndebug = { gc = \"1\" }\n"), (Nodes{{"gc", "1"}}));
    EXPECT_EQ(debug_of("debug = false\n"), (Nodes{{"(absent)", ""}}));
}

TEST(MachineFile, DirectoriesMayBeAbsent)
{
    const Machine machine = machine_of(R"(
[[adapter]]
chip = "qv-m20"
bus_id = "0000:01:00.0"
card = 0
debug = false
info = false
hwmon = false
proc = false
)");
    EXPECT_TRUE(machine.adapters.at(0).directories.empty());
}

TEST(MachineFile, ForeignGpuIsNamedOrNumbered)
{
    const Machine machine = machine_of(R"(
[[foreign_gpu]]
vendor = "intel"
device = 0x4680
bus_id = "0000:00:02.0"
card = 0

[[foreign_gpu]]
vendor = 0x1234
device = 17
bus_id = "0000:01:00.0"
card = 1
)");
    ASSERT_EQ(machine.foreign_gpus.size(), 2U);
    EXPECT_EQ(machine.foreign_gpus.at(0).pci.vendor, 0x8086);
    EXPECT_EQ(machine.foreign_gpus.at(0).pci.device, 0x4680);
    EXPECT_EQ(machine.foreign_gpus.at(0).drm.driver, "i915");
    EXPECT_EQ(machine.foreign_gpus.at(1).pci.vendor, 0x1234);
    EXPECT_EQ(machine.foreign_gpus.at(1).pci.device, 17);
    EXPECT_EQ(machine.foreign_gpus.at(1).drm.driver, "unknown");
    EXPECT_EQ(machine.foreign_gpus.at(1).drm.card, 1);
}

TEST(MachineFile, AForeignGpuCannotHaveTheProductsNumber)
{
    EXPECT_ANY_THROW(machine_of("[[foreign_gpu]]\nvendor = " + std::to_string(QV_VENDOR_ID) +
                                "\ndevice = 1\nbus_id = \"0000:01:00.0\"\ncard = 0\n"));
}

TEST(MachineFile, PlatformDeviceAndProcess)
{
    const Machine machine = machine_of(R"(
[[platform_device]]
name = "simple-framebuffer.0"
card = 2
nodes = ["primary"]

[[process]]
pid = 4100001
name = "/usr/bin/viewer"
arguments = ["--title", "two words"]

[[process]]
pid = 4100002
name = "game"
)");
    EXPECT_EQ(machine.platform_devices.at(0).name, "simple-framebuffer.0");
    EXPECT_EQ(machine.platform_devices.at(0).drm.card, 2);
    EXPECT_EQ(machine.platform_devices.at(0).drm.driver, "simple-framebuffer.0");
    EXPECT_EQ(machine.processes.at(0).pid, 4100001);
    EXPECT_EQ(machine.processes.at(0).arguments,
              (std::vector<std::string>{"/usr/bin/viewer", "--title", "two words"}));
    EXPECT_EQ(machine.processes.at(1).arguments, std::vector<std::string>{"game"});
}

TEST(MachineFile, ProcessHasTheNameThatTheKernelWouldGiveIt)
{
    const Machine machine = machine_of(R"(
[[process]]
pid = 1
name = "/opt/photo editor/bin/photo editor"

[[process]]
pid = 2
name = "a-program-with-a-long-name"

[[process]]
pid = 3
name = "/usr/bin/python3"
comm = "fifteen bytes.."
)");
    EXPECT_EQ(machine.processes.at(0).comm, "photo editor");
    EXPECT_EQ(machine.processes.at(1).comm, "a-program-with-");
    EXPECT_EQ(machine.processes.at(2).comm, "fifteen bytes..");
}

TEST(MachineFile, ProcessWithNothingButTheKernelsNameIsAKernelThread)
{
    const Machine machine = machine_of("[[process]]\npid = 1\ncomm = \"kworker/0:1\"\n");
    EXPECT_EQ(machine.processes.at(0).comm, "kworker/0:1");
    EXPECT_TRUE(machine.processes.at(0).arguments.empty());
}

std::vector<std::string> files_of(const Machine& machine)
{
    std::vector<std::string> files;
    for (const KernelInterface& library : machine.kernel_interfaces) {
        files.push_back(library.file);
    }
    return files;
}

TEST(MachineFile, EachChipBringsItsKernelInterfaceLibrary)
{
    const auto files_for = [](const std::string& chip) {
        return files_of(machine_of("[[adapter]]\nchip = \"" + chip +
                                   "\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n"));
    };
    for (const char* chip :
         {"nimba-k1", "nimba-k2", "nimba-k3", "nimba-k3t", "nimba-k5", "nimba-k6"}) {
        EXPECT_EQ(files_for(chip), std::vector<std::string>{"libnimbahwbridge_v2.so.0.0.0"})
            << chip;
    }
    EXPECT_EQ(files_for("qv-m20"), std::vector<std::string>{"libhwbridge_qv.so.0.0.0"});
    EXPECT_EQ(files_for("qv-m30"), std::vector<std::string>{"libmv9hwbridge_v2.so.0.0.0"});
    EXPECT_EQ(files_for("qv-m40"), std::vector<std::string>{"libmv9hwbridge_v2.so.0.0.0"});
}

TEST(MachineFile, ChipsThatShareALibraryBringItOnce)
{
    const Machine machine = machine_of(R"(
[[adapter]]
chip = "qv-m30"
bus_id = "0000:01:00.0"
card = 0
[[adapter]]
chip = "qv-m40"
bus_id = "0000:02:00.0"
card = 1
)");
    EXPECT_EQ(files_of(machine), std::vector<std::string>{"libmv9hwbridge_v2.so.0.0.0"});
    EXPECT_EQ(machine.kernel_interfaces.at(0).size_function, "gfx_get_struct_size");
    EXPECT_EQ(machine.kernel_interfaces.at(0).struct_size, 4096U);
}

TEST(MachineFile, KernelInterfacesThatAreNamedReplaceThoseOfTheChips)
{
    const Machine machine = machine_of(R"(
[[adapter]]
chip = "qv-m30"
bus_id = "0000:01:00.0"
card = 0
[[kernel_interface]]
file = "libdrm_mv9.so.0.0.0"
size_function = "qv_get_struct_size"
struct_size = 0
)");
    EXPECT_EQ(files_of(machine), std::vector<std::string>{"libdrm_mv9.so.0.0.0"});
    EXPECT_EQ(machine.kernel_interfaces.at(0).size_function, "qv_get_struct_size");
    EXPECT_EQ(machine.kernel_interfaces.at(0).struct_size, 0U);
}

TEST(MachineFile, AnEmptyListMeansNoKernelInterface)
{
    const Machine machine = machine_of(R"(kernel_interface = []
[[adapter]]
chip = "qv-m30"
bus_id = "0000:01:00.0"
card = 0
)");
    EXPECT_TRUE(machine.kernel_interfaces.empty());
}

}  // namespace
}  // namespace nimba::sim::test
