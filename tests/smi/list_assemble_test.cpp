// SPDX-License-Identifier: MIT
#include "tools/smi/list/assemble.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

const Adapter kFirst{0,      "Gpu0:Nimba-K1", "0000:03:00.0",  0,
                     0x4E4D, 0x1001,          DriverKind::kVa, {0, 0x30000}};
const Adapter kSecond{1,      "Gpu1:QV M-30", "0000:04:00.0",       1,
                      0x5156, 0x2030,         DriverKind::kUnknown, {0, 0x40000}};

Discovery two_adapters()
{
    Discovery discovery;
    discovery.slots = {{0, "0000:03:00.0", "Gpu0:Nimba-K1"}, {1, "0000:04:00.0", "Gpu1:QV M-30"}};
    return discovery;
}

Reply described(const Adapter& adapter, std::optional<std::string> denied_info = std::nullopt)
{
    return Answer{to_json_value(Description{adapter, std::move(denied_info)})};
}

std::vector<std::string> messages(const ListSnapshot& snapshot)
{
    std::vector<std::string> result;
    for (const Problem& problem : snapshot.problems) {
        result.push_back(problem.message);
    }
    return result;
}

TEST(Assemble, TakesEveryAdapterAndTheForeignGpu)
{
    Discovery discovery = two_adapters();
    discovery.foreign_gpu = ForeignGpu{"Gpu2:Amd-GPU", "0000:01:00.0", 3, 0x1002, 0x73BF, {}};
    const std::vector<Reply> replies{described(kFirst), described(kSecond)};
    const ListSnapshot snapshot = assemble(discovery, replies);
    EXPECT_EQ(snapshot.adapters, (std::vector{kFirst, kSecond}));
    EXPECT_EQ(snapshot.foreign_gpu, discovery.foreign_gpu);
    EXPECT_TRUE(snapshot.problems.empty());
}

TEST(Assemble, NoAdapterIsAProblemEvenWithAForeignGpu)
{
    Discovery discovery;
    discovery.foreign_gpu = ForeignGpu{};
    const ListSnapshot snapshot = assemble(discovery, {});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoAdapter);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"no Nimba or QV adapter found: check that the card is "
                                        "seated (lspci) and its driver is loaded (dmesg)"}));
}

TEST(Assemble, WithoutLibdrmNothingIsSaidOfAdapters)
{
    Discovery discovery;
    discovery.libdrm_usable = false;
    const ListSnapshot snapshot = assemble(discovery, {});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoLibdrm);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"libdrm is missing or unusable, so no GPU can be found: "
                                        "install the package libdrm2"}));
}

TEST(Assemble, DeniedNodesAreNamedWithTheirGroup)
{
    Discovery discovery;
    discovery.denied_nodes = {{"/dev/dri/renderD128", "render"}, {"/dev/dri/card1", ""}};
    const ListSnapshot snapshot = assemble(discovery, {});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoPermission);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"no permission to open /dev/dri/renderD128: join the group "
                                        "\"render\" or run as root",
                                        "no permission to open /dev/dri/card1: run as root"}));
}

TEST(Assemble, DeniedDirectoryIsTheOnlyThingToSay)
{
    Discovery discovery;
    discovery.denied_directory = DeniedFile{"/dev/dri", "video"};
    const ListSnapshot snapshot = assemble(discovery, {});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoPermission);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"no permission to look into /dev/dri, so no GPU can be "
                                        "found: join the group \"video\" or run as root"}));
}

TEST(Assemble, EachAdapterThatDoesNotAnswerIsNamed)
{
    Discovery discovery;
    discovery.drm_devices = 3;
    discovery.unlisted = {"0000:05:00.0", "0000:06:00.0"};
    const ListSnapshot snapshot = assemble(discovery, {});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoAdapter);
    EXPECT_EQ(snapshot.problems.at(1).adapter, "0000:06:00.0");
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{
                  "adapter 0000:05:00.0 is there but not listed: its driver does not answer, or "
                  "the library does not know the chip (see dmesg)",
                  "adapter 0000:06:00.0 is there but not listed: its driver does not answer, or "
                  "the library does not know the chip (see dmesg)"}));
}

TEST(Assemble, AdaptersBeyondTheExaminedDevicesAreARemark)
{
    Discovery discovery = two_adapters();
    discovery.drm_devices = 4;
    discovery.unlisted = {"0000:05:00.0"};
    const std::vector<Reply> replies{described(kFirst), described(kSecond)};
    const ListSnapshot snapshot = assemble(discovery, replies);
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kOk);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"there are 4 DRM devices, of which 3 are examined: "
                                        "0000:05:00.0 not listed; unload the driver of another to "
                                        "make room"}));
}

TEST(Assemble, NothingListedAmongManyDevicesIsNoAdapter)
{
    Discovery discovery;
    discovery.drm_devices = 5;
    discovery.unlisted = {"0000:05:00.0", "0000:06:00.0"};
    const ListSnapshot snapshot = assemble(discovery, {});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoAdapter);
    EXPECT_EQ(snapshot.problems.size(), 1U);
}

TEST(Assemble, DeniedInfoNodesAreOneHint)
{
    const std::vector<Reply> replies{described(kFirst, "/a/info"), described(kSecond, "/b/info")};
    const ListSnapshot snapshot = assemble(two_adapters(), replies);
    EXPECT_EQ(snapshot.adapters.size(), 2U);
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoPermission);
    EXPECT_EQ(snapshot.problems.at(0).adapter, std::nullopt);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"no permission to read /a/info, /b/info, so the driver "
                                        "kind is unknown: run as root"}));
}

TEST(Assemble, OneDeniedInfoNodeNamesItsAdapter)
{
    const std::vector<Reply> replies{described(kFirst), described(kSecond, "/b/info")};
    const ListSnapshot snapshot = assemble(two_adapters(), replies);
    ASSERT_EQ(snapshot.problems.size(), 1U);
    EXPECT_EQ(snapshot.problems[0].adapter, "0000:04:00.0");
}

TEST(Assemble, LostAdapterIsLeftOutAndNamed)
{
    const std::vector<Reply> replies{Lost{"gfx_find_adapter", "killed by SIGSEGV"},
                                     described(kSecond)};
    const ListSnapshot snapshot = assemble(two_adapters(), replies);
    EXPECT_EQ(snapshot.adapters, std::vector{kSecond});
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kWorkerLost);
    EXPECT_EQ(snapshot.problems.at(0).adapter, "0000:03:00.0");
}

TEST(Assemble, AdapterThatWentAwayOrChangedPlacesIsGone)
{
    const std::vector<Reply> replies{described(kSecond), Answer{to_json_value(Description{})}};
    const ListSnapshot snapshot = assemble(two_adapters(), replies);
    EXPECT_TRUE(snapshot.adapters.empty());
    EXPECT_EQ(overall_status(snapshot.problems), ExitStatus::kNoAdapter);
    EXPECT_EQ(messages(snapshot),
              (std::vector<std::string>{"adapter 0000:03:00.0 (Gpu0:Nimba-K1): gone since "
                                        "discovery; run the command again",
                                        "adapter 0000:04:00.0 (Gpu1:QV M-30): gone since "
                                        "discovery; run the command again"}));
}

}  // namespace
}  // namespace nimba::smi
