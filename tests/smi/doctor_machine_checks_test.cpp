// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/machine_checks.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace nimba::smi {
namespace {

const PciAdapter kAdapter{"0000:01:00.0", 0x1001, "nimba", true};

DeviceFacts one_adapter()
{
    DeviceFacts facts;
    facts.adapters = {kAdapter};
    facts.drm_devices = 2;
    return facts;
}

Check drm_devices_of(const DeviceFacts& facts)
{
    return drm_devices_check(facts, pci_devices_check(facts));
}

Check drm_access_of(const DeviceFacts& facts)
{
    return drm_access_check(facts, drm_devices_of(facts));
}

TEST(LibdrmCheck, TellsWhichFileWasLoaded)
{
    EXPECT_EQ(libdrm_check({"libdrm.so.2", "/lib/libdrm.so.2.4.0", {}, {}}),
              passed("libdrm", "libdrm.so.2 (/lib/libdrm.so.2.4.0)"));
}

TEST(LibdrmCheck, FailsWithoutAFileAndTellsWhatTheLoaderSays)
{
    EXPECT_EQ(libdrm_check({"", "", {}, "libdrm.so.2: no such file"}),
              failed("libdrm", ExitStatus::kNoLibdrm,
                     "libdrm is missing or unusable, so no GPU can be found: install the package "
                     "libdrm2",
                     "type: sudo apt-get install libdrm2 (the loader says: libdrm.so.2: no such "
                     "file)"));
}

TEST(LibdrmCheck, FailsForAFileThatLacksFunctions)
{
    const Check check =
        libdrm_check({"libdrm.so", "/lib/libdrm.so", {"drmGetVersion", "drmFreeDevices"}, {}});
    EXPECT_EQ(check.status, ExitStatus::kNoLibdrm);
    EXPECT_EQ(check.remedy,
              "replace /lib/libdrm.so, which lacks drmGetVersion, drmFreeDevices: sudo apt-get "
              "install --reinstall libdrm2");
}

TEST(DeviceChecks, PassWithAnAdapterWhoseNodesOpen)
{
    const DeviceFacts facts = one_adapter();
    EXPECT_EQ(pci_devices_check(facts), passed("pci_devices", "0000:01:00.0"));
    EXPECT_EQ(drm_devices_of(facts), passed("drm_devices", "2 in /dev/dri, adapters and others"));
    EXPECT_EQ(drm_access_of(facts),
              passed("drm_access", "this user may open a node of every adapter"));
}

TEST(DeviceChecks, WithoutACardTellHowToLookForOneAndSkipTheRest)
{
    const DeviceFacts facts;
    EXPECT_EQ(pci_devices_check(facts),
              failed("pci_devices", ExitStatus::kNoAdapter,
                     "no device of the vendors 0x4e4d and 0x5156 is on the PCI bus",
                     "check that the card is seated and has power, until one of these shows it: "
                     "lspci -nn -d 4e4d: or lspci -nn -d 5156:"));
    EXPECT_EQ(drm_devices_of(facts).found, "because of pci_devices");
    EXPECT_EQ(drm_access_of(facts).found, "because of pci_devices");
    EXPECT_EQ(drm_access_of(facts).result, CheckResult::kSkipped);
}

TEST(DeviceChecks, WithoutSysfsSaySo)
{
    DeviceFacts facts;
    facts.pci_error = ENOENT;
    EXPECT_EQ(pci_devices_check(facts),
              failed("pci_devices", ExitStatus::kNoAdapter,
                     "cannot list /sys/bus/pci/devices, so no card is seen: No such file or "
                     "directory",
                     "see whether sysfs is mounted, and whether this machine has a PCI bus with "
                     "the card: findmnt /sys; lspci -nn"));
}

TEST(DeviceChecks, TellACardThatNoDriverTook)
{
    DeviceFacts facts = one_adapter();
    facts.adapters.push_back({"0000:02:00.0", 0x2030, "", false});
    EXPECT_EQ(drm_devices_of(facts),
              failed("drm_devices", ExitStatus::kNoAdapter,
                     "0000:02:00.0 (device 0x2030) is on the PCI bus, but has no DRM node: no "
                     "driver is bound to it",
                     "install the driver's package and load the driver: sudo modprobe \"$(cat "
                     "/sys/bus/pci/devices/0000:02:00.0/modalias)\""));
}

TEST(DeviceChecks, TellADriverThatMadeNoNode)
{
    DeviceFacts facts;
    facts.adapters = {{"0000:01:00.0", 0x1001, "vfio-pci", false}};
    EXPECT_EQ(drm_devices_of(facts),
              failed("drm_devices", ExitStatus::kNoAdapter,
                     "0000:01:00.0 (device 0x1001) is on the PCI bus, but has no DRM node: the "
                     "driver vfio-pci is bound to it and made none",
                     "see why in the kernel's log: sudo dmesg | grep 0000:01:00.0"));
}

TEST(DeviceChecks, TellAContainerWithoutTheNodes)
{
    DeviceFacts facts = one_adapter();
    facts.drm_devices = 0;
    EXPECT_EQ(drm_devices_of(facts).status, ExitStatus::kNoAdapter);
    EXPECT_EQ(drm_devices_of(facts).remedy,
              "in a container, start it with --device /dev/dri; elsewhere type: sudo udevadm "
              "trigger --subsystem-match=drm");
}

TEST(DeviceChecks, NameTheGroupThatMayOpenANode)
{
    DeviceFacts facts = one_adapter();
    facts.denied_nodes = {{"/dev/dri/renderD128", "render"}};
    EXPECT_EQ(drm_access_of(facts),
              failed("drm_access", ExitStatus::kNoPermission,
                     "no permission to open /dev/dri/renderD128: join the group \"render\" or run "
                     "as root",
                     "type: sudo usermod --append --groups render \"$USER\", and log in again"));
    facts.denied_nodes = {{"/dev/dri/renderD128", ""}};
    EXPECT_EQ(drm_access_of(facts).remedy, "type: sudo nimba-smi doctor");
}

TEST(DeviceChecks, TellAClosedDirectoryOfNodesOnce)
{
    DeviceFacts facts = one_adapter();
    facts.drm_devices = 0;
    facts.denied_directory = DeniedFile{"/dev/dri", "video"};
    EXPECT_EQ(drm_devices_of(facts).result, CheckResult::kOk);
    EXPECT_EQ(drm_access_of(facts).found,
              "no permission to look into /dev/dri, so no GPU can be found: join the group "
              "\"video\" or run as root");
}

TEST(DebugfsCheck, TellsWhatKeepsItFromBeingRead)
{
    const Check pci = passed("pci_devices", "");
    EXPECT_EQ(debugfs_check({0, false}, pci), passed("debugfs", "/sys/kernel/debug can be read"));
    const Check not_mounted =
        failed("debugfs", ExitStatus::kNoAdapter,
               "debugfs is not mounted at /sys/kernel/debug, so video memory and page tables are "
               "not shown",
               "type: sudo mount -t debugfs none /sys/kernel/debug");
    EXPECT_EQ(debugfs_check({0, true}, pci), not_mounted);
    EXPECT_EQ(debugfs_check({ENOENT, false}, pci), not_mounted);
    EXPECT_EQ(debugfs_check({EACCES, false}, pci),
              failed("debugfs", ExitStatus::kNoPermission,
                     "no permission to read /sys/kernel/debug: run as root",
                     "for video memory and page tables type sudo in front of the command: sudo "
                     "nimba-smi doctor"));
}

TEST(DebugfsCheck, IsSkippedOnAMachineWithoutAdapter)
{
    EXPECT_EQ(debugfs_check({ENOENT, false}, pci_devices_check({})).result, CheckResult::kSkipped);
}

TEST(CommandChecks, PassWhenTheCommandsTell)
{
    CommandFacts facts;
    facts.ps = "/usr/bin/ps";
    facts.ps_names = true;
    facts.dmidecode = "/usr/sbin/dmidecode";
    facts.dmi_tells = true;
    EXPECT_EQ(ps_check(facts), passed("ps", "/usr/bin/ps"));
    EXPECT_EQ(dmidecode_check(facts), passed("dmidecode", "/usr/sbin/dmidecode"));
}

TEST(CommandChecks, AreNotesWithoutTheCommands)
{
    EXPECT_EQ(ps_check({}),
              noted("ps", "ps is not there, so pagetable shows processes without their names",
                    "type: sudo apt-get install --reinstall procps"));
    EXPECT_EQ(dmidecode_check({}),
              noted("dmidecode",
                    "dmidecode is not there, so the library does not tell type, width and rate of "
                    "the system's memory",
                    "type: sudo apt-get install dmidecode"));
}

TEST(CommandChecks, TellWhoeverMayNotReadTheFirmwareToBeRoot)
{
    CommandFacts facts;
    facts.ps = "/bin/ps";
    facts.dmidecode = "/usr/sbin/dmidecode";
    facts.dmi_said = "Permission denied";
    EXPECT_EQ(ps_check(facts).found,
              "/bin/ps tells no name, so pagetable shows processes without their names");
    EXPECT_EQ(dmidecode_check(facts).remedy,
              "run as root what asks for it, and see whether that helps: sudo dmidecode -t memory");
    facts.root = true;
    EXPECT_EQ(dmidecode_check(facts).found,
              "/usr/sbin/dmidecode tells of no memory (\"Permission denied\"), so the library does "
              "not tell type, width and rate of the system's memory");
}

}  // namespace
}  // namespace nimba::smi
