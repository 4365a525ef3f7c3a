// SPDX-License-Identifier: MIT
#include "tools/smi/doctor/library_checks.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

DiscoveryOutcome outcome_of(Discovery discovery)
{
    return {std::move(discovery), {}, {}};
}

LibraryVersion version_with(uint32_t match_code)
{
    return {"/lib/libx.so.0.1.0", "0.1.0", 22, 22, match_code};
}

std::vector<Check> nothing_failed()
{
    return {passed("libdrm", "")};
}

TEST(LibraryChecks, TellFileAndVersion)
{
    const std::vector<Check> expected{passed("library", "/lib/libx.so.0.1.0 (0.1.0)"),
                                      passed("interface_version", "22: the versions match")};
    EXPECT_EQ(library_checks(version_with(200), std::nullopt), expected);
}

TEST(LibraryChecks, PassAnOlderToolAndNoteANewerOne)
{
    EXPECT_EQ(library_checks(version_with(201), std::nullopt).at(1).result, CheckResult::kOk);
    const Check newer = library_checks(version_with(202), std::nullopt).at(1);
    EXPECT_EQ(
        newer,
        noted("interface_version", "22: this tool is newer, the library may lack what it needs",
              "install nimba-smi and the library of one release; nimba-smi version tells "
              "which are there"));
}

TEST(LibraryChecks, FailForAnotherMajorVersion)
{
    const Check other = library_checks(version_with(100), std::nullopt).at(1);
    EXPECT_EQ(other.status, ExitStatus::kNoLibrary);
    EXPECT_EQ(other.found,
              "/lib/libx.so.0.1.0 has another major interface version: install the nimba-smi that "
              "belongs to it");
}

TEST(LibraryChecks, FailWithoutALibraryAndSkipItsVersion)
{
    const Problem problem{ExitStatus::kNoLibrary, std::nullopt, "dlopen", "cannot load it"};
    const auto checks = library_checks(std::nullopt, problem);
    EXPECT_EQ(checks.at(0), failed("library", ExitStatus::kNoLibrary, "cannot load it",
                                   "install the package of the library and type: sudo ldconfig; or "
                                   "try another with: nimba-smi doctor --library PATH"));
    EXPECT_EQ(checks.at(1), skipped("interface_version", checks.at(0)));
}

TEST(LibraryChecks, FailForALibraryThatDies)
{
    const Problem problem{ExitStatus::kWorkerLost, std::nullopt, "dlopen", "worker lost"};
    EXPECT_EQ(library_checks(std::nullopt, problem).at(0),
              failed("library", ExitStatus::kWorkerLost, "worker lost",
                     "see the last lines of the kernel's log: sudo dmesg | tail"));
}

TEST(AdaptersChecks, NameThoseThatAreListed)
{
    Discovery discovery;
    discovery.slots = {{0, "0000:01:00.0", "Gpu0:Nimba-K1"}, {1, "0000:02:00.0", std::nullopt}};
    const std::vector<Check> expected{
        passed("adapters", "0000:01:00.0 Gpu0:Nimba-K1, 0000:02:00.0")};
    EXPECT_EQ(adapters_checks(outcome_of(discovery), nothing_failed(), std::nullopt), expected);
}

TEST(AdaptersChecks, FailForADriverThatDoesNotAnswer)
{
    Discovery discovery;
    discovery.slots = {{0, "0000:02:00.0", "Gpu0:QV M-30"}};
    discovery.drm_devices = 2;
    discovery.unlisted = {"0000:01:00.0"};
    DeviceFacts devices;
    devices.adapters = {{"0000:01:00.0", 0x1001, "nimba", true}};
    const auto checks = adapters_checks(outcome_of(discovery), nothing_failed(), devices);
    ASSERT_EQ(checks.size(), 2U);
    EXPECT_EQ(checks[1].id, "unlisted_adapter");
    EXPECT_EQ(checks[1].adapter, "0000:01:00.0");
    EXPECT_EQ(checks[1].status, ExitStatus::kNoAdapter);
    EXPECT_EQ(checks[1].remedy, "see why in the kernel's log: sudo dmesg | grep 0000:01:00.0");
}

TEST(AdaptersChecks, TellOfAChipThatTheLibraryDoesNotKnow)
{
    Discovery discovery;
    discovery.drm_devices = 1;
    discovery.unlisted = {"0000:01:00.0"};
    DeviceFacts devices;
    devices.adapters = {{"0000:01:00.0", 0x7777, "nimba", true}};
    const auto checks = adapters_checks(outcome_of(discovery), nothing_failed(), devices);
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].id, "adapters");
    EXPECT_EQ(checks[0].remedy,
              "install a management library that knows the chip: see lspci -nn -s 0000:01:00.0");
}

TEST(AdaptersChecks, NoteAnAdapterBeyondTheExaminedDevices)
{
    Discovery discovery;
    discovery.slots = {{0, "0000:01:00.0", "Gpu0:Nimba-K1"}};
    discovery.drm_devices = 4;
    discovery.unlisted = {"0000:05:00.0"};
    const auto checks = adapters_checks(outcome_of(discovery), nothing_failed(), std::nullopt);
    ASSERT_EQ(checks.size(), 2U);
    EXPECT_EQ(checks[1].result, CheckResult::kNote);
    EXPECT_EQ(checks[1].remedy,
              "see which drivers there are, and unload one that nobody needs: ls -l "
              "/sys/class/drm/card*/device/driver");
}

TEST(AdaptersChecks, AreSkippedWhenWhatTheyNeedFailed)
{
    const std::vector<Check> earlier{passed("libdrm", ""),
                                     failed("pci_devices", ExitStatus::kNoAdapter, "", "")};
    const std::vector<Check> expected{skipped("adapters", earlier[1])};
    EXPECT_EQ(adapters_checks(outcome_of({}), earlier, std::nullopt), expected);
}

TEST(AdaptersChecks, FailWhenDiscoveryIsLost)
{
    const DiscoveryOutcome lost{
        std::nullopt,
        {},
        {{ExitStatus::kWorkerLost, "0000:01:00.0", "gfx_find_adapter", "discovery: worker lost"}}};
    const auto checks = adapters_checks(lost, nothing_failed(), std::nullopt);
    ASSERT_EQ(checks.size(), 1U);
    EXPECT_EQ(checks[0].status, ExitStatus::kWorkerLost);
    EXPECT_EQ(checks[0].adapter, "0000:01:00.0");
}

}  // namespace
}  // namespace nimba::smi
