// SPDX-License-Identifier: MIT
// The machine and the drivers of a capture.
#include "nimba_mgmt_interface.h"
#include "replay/captured_machine.hpp"
#include "replay/recorded_driver.hpp"

#include <gtest/gtest.h>

#include <cerrno>

namespace nimba::sim {
namespace {

using namespace std::chrono_literals;
using archive::DrmNodeType;
using archive::NodeKind;

constexpr const char* kInfo = "/sys/bus/pci/devices/0000:01:00.0/jw_info";
constexpr const char* kAllocations = "/sys/kernel/debug/dri/2/jw/allocations";

void add_file(archive::Sample& sample, const std::string& path, const std::string& text)
{
    sample.record.nodes.push_back({path, NodeKind::kFile, 0444, text.size(), false, {}, ""});
    sample.texts[path] = std::make_shared<const std::string>(text);
}

archive::Capture small_capture()
{
    archive::Capture capture;
    capture.manifest.drm.devices = {
        {archive::PciIdentity{"0000:03:00.0", 0x8086, 1, 0, 0, 0},
         {{DrmNodeType::kRender, "/dev/dri/renderD130", std::nullopt}},
         archive::DrmVersion{"other", 1, 0, 0, "", ""}},
        {archive::PciIdentity{"0000:01:00.0", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, 0, 0, 0},
         {{DrmNodeType::kRender, "/dev/dri/renderD128", "EACCES"},
          {DrmNodeType::kPrimary, "/dev/dri/card2", std::nullopt}},
         archive::DrmVersion{"jw", 1, 0, 0, "", ""}}};
    capture.manifest.adapters = {
        {0, "0000:01:00.0", 2, "Gpu0:X", NIMBA_VENDOR_ID, DEVICE_ID_NIMBA_K1, true,
         archive::KernelInterface{
             "libnimbahwbridge_v2.so.0.0.0", {"gfx_flip_count", "qv_get_struct_size"}, 64, -3}}};
    archive::Sample& sample = capture.samples.emplace_back();
    add_file(sample, std::string{kInfo} + "/eclk", "500\n");
    add_file(sample, std::string{kInfo} + "/enable_usage", "1\n");
    add_file(sample, "/sys/bus/pci/devices/0000:01:00.0/current_link_width", "8\n");
    add_file(sample, "/proc/41/cmdline", std::string{"viewer\0", 7});
    add_file(sample, "/proc/41/comm", "view\n");
    sample.record.nodes.push_back(
        {kAllocations, NodeKind::kDirectory, 0755, 0, false, {"7", "3"}, ""});
    add_file(sample, std::string{kAllocations} + "/3/info", "three\n");
    sample.record.nodes.push_back(
        {std::string{kAllocations} + "/7/info", NodeKind::kUnread, 0, 0, false, {}, "EIO"});
    sample.record.nodes.push_back({"/sys/bus/pci/devices/0000:01:00.0/drm/card2",
                                   NodeKind::kDirectory,
                                   0755,
                                   0,
                                   false,
                                   {"card2-DP-1", "card2-../../x"},
                                   ""});
    return capture;
}

TEST(ReplayMachine, DevicesAreThoseThatLibdrmTold)
{
    const Machine machine = captured_machine(small_capture());
    ASSERT_EQ(machine.adapters.size(), 1U);
    const Adapter& adapter = machine.adapters.front();
    EXPECT_EQ(to_text(adapter.pci.address), "0000:01:00.0");
    EXPECT_EQ(adapter.drm.card, 2);
    EXPECT_EQ(adapter.drm.place, 1);
    EXPECT_EQ(adapter.drm.render, 128);
    EXPECT_EQ(adapter.drm.unopenable, (std::set<DrmNode>{DrmNode::kRender}));
    EXPECT_EQ(adapter.drm.driver, "jw");
    EXPECT_EQ(adapter.link.width, "8\n");
    EXPECT_EQ(adapter.drm.connectors, (std::vector<std::string>{"DP-1"}));
    ASSERT_EQ(machine.foreign_gpus.size(), 1U);
    EXPECT_EQ(machine.foreign_gpus.front().drm.place, 0);
    EXPECT_EQ(machine.foreign_gpus.front().drm.nodes, (std::set<DrmNode>{DrmNode::kRender}));
    EXPECT_EQ(machine.foreign_gpus.front().drm.card, 0);  // none that another has
}

TEST(ReplayMachine, ProcessesAndLibrariesAreThoseOfTheCapture)
{
    const Machine machine = captured_machine(small_capture());
    ASSERT_EQ(machine.processes.size(), 1U);
    EXPECT_EQ(machine.processes.front().pid, 41);
    EXPECT_EQ(machine.processes.front().comm, "view");
    EXPECT_EQ(machine.processes.front().arguments, (std::vector<std::string>{"viewer"}));
    ASSERT_EQ(machine.kernel_interfaces.size(), 1U);
    EXPECT_EQ(machine.kernel_interfaces.front().size_function, "qv_get_struct_size");
    EXPECT_EQ(machine.kernel_interfaces.front().counters,
              (std::set<std::string>{"gfx_flip_count"}));
    EXPECT_EQ(machine.kernel_interfaces.front().init_result, -3);
}

TEST(ReplayMachine, WhatCouldNotBeReadIsAFault)
{
    const Machine machine = captured_machine(small_capture());
    ASSERT_EQ(machine.faults.size(), 1U);
    EXPECT_EQ(machine.faults.front().kind, FaultKind::kOpen);
    EXPECT_EQ(machine.faults.front().card, 2);
    EXPECT_EQ(machine.faults.front().path, "allocations/7/info");
    EXPECT_EQ(machine.faults.front().error, EIO);
}

// It would come before the one that the commands themselves need.
// The numbers as the library takes them, whatever is around them.
TEST(ReplayMachine, ProcessesThatDevicesNameAreAbsentWithoutTheirNames)
{
    archive::Capture capture = small_capture();
    const std::string device = "/sys/kernel/debug/dri/2/jw/devices/";
    add_file(capture.samples[0], device + "1/info", "pid = 41\nhandle = 77\n");
    add_file(capture.samples[0], device + "2/info", "handle = 10\npid = 4294967342\n");
    add_file(capture.samples[0], "/sys/kernel/debug/dri/0/qv/devices/3/vm_info",
             "the pid is 1,0052\n99999999\n");
    capture.samples.push_back(capture.samples[0]);
    add_file(capture.samples[1], device + "4/info", "pid = 61");
    EXPECT_EQ(captured_machine(capture).absent_processes, (std::set<int>{1, 46, 52, 61}));
}

TEST(ReplayMachine, ALibraryThatNoChipNeedsIsNotThere)
{
    archive::Capture capture = small_capture();
    archive::Adapter other = capture.manifest.adapters.front();
    other.kernel_interface->file = "libc.so.6";
    capture.manifest.adapters.insert(capture.manifest.adapters.begin(), other);
    const Machine machine = captured_machine(capture);
    ASSERT_EQ(machine.kernel_interfaces.size(), 1U);
    EXPECT_EQ(machine.kernel_interfaces.front().file, "libnimbahwbridge_v2.so.0.0.0");
}

TEST(ReplayMachine, WhatFailsInEachSampleAlikeHasAFault)
{
    archive::Capture capture = small_capture();
    const auto unread = [](const char* name, const char* error) {
        return archive::Node{
            std::string{kInfo} + "/" + name, NodeKind::kUnread, 0, 0, false, {}, error};
    };
    auto& first = capture.samples.front().record.nodes;
    first.insert(first.end(),
                 {unread("vclk", "EIO"), unread("mclk", "EIO"), unread("fb_size", "EIO")});
    capture.samples.push_back(capture.samples.front());
    auto& second = capture.samples.back().record.nodes;
    second.pop_back();  // was not there
    second.back().error = "EBUSY";
    const Machine machine = captured_machine(capture);
    ASSERT_EQ(machine.faults.size(), 2U);
    EXPECT_EQ(machine.faults[0].path, "allocations/7/info");
    EXPECT_EQ(machine.faults[1].path, "vclk");
}

TEST(ReplayDriver, ShowsTheNodesInTheOrderOfTheCapture)
{
    const auto capture = std::make_shared<const archive::Capture>(small_capture());
    RecordedDriver driver{capture, captured_machine(*capture), 1, [] { return 0ns; }};
    EXPECT_EQ(driver.list("dri/2/jw/allocations"), (std::vector<std::string>{"7", "3"}));
    EXPECT_EQ(driver.read("dri/2/jw/allocations/3/info"), "three\n");
    EXPECT_EQ(driver.read("info/2/eclk"), "500\n");
    EXPECT_EQ(driver.look_up("info/2/eclk"), (NodeAttributes{false, 0444}));
    EXPECT_EQ(driver.look_up("dri/2/jw/allocations/7"), (NodeAttributes{true, 0755}));
    EXPECT_FALSE(driver.look_up("info/2/vclk"));
    EXPECT_FALSE(driver.read("info/2"));
}

// An empty text would be that of an allocation, too.
TEST(ReplayDriver, WhatFailsInSomeSamplesAloneIsNotThereInThese)
{
    archive::Capture series = small_capture();
    auto& nodes = series.samples[0].record.nodes;
    nodes.push_back(
        {"/sys/kernel/debug/dri/2/jw/devices", NodeKind::kUnread, 0, 0, false, {}, "EACCES"});
    nodes.push_back({std::string{kInfo} + "/vclk", NodeKind::kUnread, 0, 0, false, {}, "EIO"});
    series.samples.push_back(series.samples[0]);
    series.samples[1].time.seconds = 10;
    auto& later = series.samples[1].record.nodes;
    later.pop_back();
    later.pop_back();
    add_file(series.samples[1], std::string{kInfo} + "/vclk", "400\n");
    const auto capture = std::make_shared<const archive::Capture>(series);
    std::chrono::nanoseconds now{0};
    RecordedDriver driver{capture, captured_machine(*capture), 1, [&] { return now; }};
    EXPECT_FALSE(driver.look_up("info/2/vclk"));
    EXPECT_FALSE(driver.read("info/2/vclk"));
    EXPECT_FALSE(driver.look_up("dri/2/jw/devices"));
    // In all samples alike: it is there, and has a fault.
    EXPECT_TRUE(driver.look_up("dri/2/jw/allocations/7/info"));
    now = 10s;
    EXPECT_EQ(driver.read("info/2/vclk"), "400\n");
}

TEST(ReplayDriver, KeepsItsSwitchesAndTakesNothingElse)
{
    const auto capture = std::make_shared<const archive::Capture>(small_capture());
    RecordedDriver driver{capture, captured_machine(*capture), 1, [] { return 0ns; }};
    EXPECT_EQ(driver.write("info/2/enable_usage", "0"), 0);
    EXPECT_EQ(driver.read("info/2/enable_usage"), "0");
    EXPECT_EQ(driver.write("info/2/eclk", "1"), EROFS);
    EXPECT_EQ(driver.write("info/2/vclk", "1"), ENOENT);
    EXPECT_EQ(driver.write("info/2", "1"), EISDIR);
}

TEST(ReplayDriver, ASeriesGoesOnAtItsSpeedAndHoldsTheLastSample)
{
    archive::Capture series = small_capture();
    series.samples.push_back(series.samples.front());
    series.samples[1].time.seconds = 10;
    series.samples[1].texts[std::string{kInfo} + "/eclk"] =
        std::make_shared<const std::string>("600\n");
    const auto capture = std::make_shared<const archive::Capture>(series);
    std::chrono::nanoseconds now{0};
    RecordedDriver driver{capture, captured_machine(*capture), 2, [&] { return now; }};
    EXPECT_EQ(driver.read("info/2/eclk"), "500\n");
    now = 4'999ms;
    EXPECT_EQ(driver.read("info/2/eclk"), "500\n");
    now = 5s;
    EXPECT_EQ(driver.read("info/2/eclk"), "600\n");
    now = 24h;
    EXPECT_EQ(driver.read("info/2/eclk"), "600\n");
}

TEST(ReplayDriver, CountersAreThoseOfTheLibrary)
{
    archive::Capture told = small_capture();
    archive::Counters& counters = told.samples.front().record.counters.emplace_back();
    counters.bus_id = "0000:01:00.0";
    counters.flips = {archive::Flips{0, 0}, archive::Flips{100'000'000, 10}};
    counters.hardware_extended = archive::Words{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    counters.usage = archive::Words{21, 22, 23};
    const auto capture = std::make_shared<const archive::Capture>(told);
    std::chrono::nanoseconds now{0};
    RecordedDriver driver{capture, captured_machine(*capture), 1, [&] { return now; }};
    now = 50ms;
    const Counters shown = driver.counters(2);
    EXPECT_EQ(shown.flips, 15);
    EXPECT_EQ(shown.time, 150'000'000);
    // The stand-in of the library adds 1 to the last word.
    EXPECT_EQ(shown.hardware, (std::array<uint32_t, 12>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 11}));
    EXPECT_EQ(shown.usage[2], 21U);
    EXPECT_EQ(shown.usage[4], 22U);
    EXPECT_EQ(shown.usage[7], 23U);
}

}  // namespace
}  // namespace nimba::sim
