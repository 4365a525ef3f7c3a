// SPDX-License-Identifier: MIT
#include "tools/smi/worker/payload.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

// What a worker writes is what its parent reads, absent values included.
template <typename Payload>
void expect_survives(const Payload& payload)
{
    const std::string line = to_json_value(payload).dump();
    EXPECT_EQ(payload_from<Payload>(nlohmann::json::parse(line)), payload) << line;
}

TEST(Payload, DiscoverySurvivesTheChannel)
{
    expect_survives(Discovery{});
    expect_survives(Discovery{
        false,
        {{0, "0000:03:00.0", "Gpu0:Nimba-K1"}, {2, "0000:05:00.0", std::nullopt}},
        ForeignGpu{"Gpu2:Amd-GPU", "0000:01:00.0", 3, 0x1002, 0x73BF, {0, 0x10000}},
        DeniedFile{"/dev/dri", "video"},
        {{"/dev/dri/renderD128", "render"}, {"/dev/dri/card1", ""}},
        4,
        {"0000:06:00.0"},
    });
}

TEST(Payload, DescriptionSurvivesTheChannel)
{
    expect_survives(Description{});
    expect_survives(Description{
        Adapter{1,
                "Gpu1:QV M-30",
                "0000:04:00.0",
                1,
                0x5156,
                0x2030,
                DriverKind::kLegacy,
                {0, 0x40000}},
        std::nullopt,
    });
    expect_survives(Description{
        Adapter{2,
                std::nullopt,
                "0001:8f:1f.7",
                std::nullopt,
                0x4E4D,
                std::nullopt,
                DriverKind::kVa,
                {1, 0x8F1F07}},
        "/sys/kernel/debug/dri/1/qv/info",
    });
}

TEST(Payload, VersionSurvivesTheChannel)
{
    expect_survives(LibraryVersion{"/usr/lib/x.so.0.1.0", "0.1.0", 22, 22, 200});
    expect_survives(LibraryVersion{"/usr/lib/x.so", std::nullopt, 23, 22, 201});
}

TEST(Payload, OtherShapesAreRefused)
{
    for (const char* const text : {"null", "7", "[]", "{}", R"({"slots":7})"}) {
        const auto value = nlohmann::json::parse(text);
        EXPECT_EQ(payload_from<Discovery>(value), std::nullopt) << text;
        EXPECT_EQ(payload_from<Description>(value), std::nullopt) << text;
        EXPECT_EQ(payload_from<LibraryVersion>(value), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace nimba::smi
