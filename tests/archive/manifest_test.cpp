// SPDX-License-Identifier: MIT
#include "made_archive.hpp"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/record_json.hpp"

#include <gtest/gtest.h>

namespace nimba::archive {
namespace {

std::string fault(const std::string& text)
{
    try {
        parse_manifest(text);
        return "";
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

// The small manifest with another text in the place of a part.
std::string with(const std::string& part, const std::string& text)
{
    std::string manifest = small_manifest();
    return manifest.replace(manifest.find(part), part.size(), text);
}

std::string with_devices(const std::string& devices)
{
    return with(R"("devices": [])", R"("devices": [)" + devices + "]");
}

Manifest full_manifest()
{
    Manifest manifest;
    manifest.tool = "0.1.0";
    manifest.time = "2026-03-01T12:00:00.250Z";
    manifest.redacted = true;
    manifest.library = Library{"/usr/lib/libnimba_mgmt_interface.so.0", "22"};
    manifest.samples = {{"2026-03-01T12:00:00.250Z", 0.0}, {"2026-03-01T12:00:01.250Z", 1.0}};
    manifest.drm.library = "libdrm.so.2";
    manifest.drm.devices = {
        {PciIdentity{"0000:01:00.0", 1, 2, 3, 4, 5},
         {{DrmNodeType::kRender, "/dev/dri/renderD128", std::nullopt},
          {DrmNodeType::kControl, "/dev/dri/controlD64", "EACCES"},
          {DrmNodeType::kPrimary, "/dev/dri/card0", std::nullopt}},
         DrmVersion{"jw", 1, 2, 3, "20240101", "text"}},
        {std::nullopt, {{DrmNodeType::kPrimary, "/dev/dri/card1", std::nullopt}}, std::nullopt}};
    manifest.adapters = {
        {0, "0000:01:00.0", 0, "Gpu0:X", 1, 2, true,
         KernelInterface{"libx.so.0", {"gfx_flip_count"}, 256, -1}},
        {1, "0000:02:00.0", std::nullopt, std::nullopt, 1, 2, false, std::nullopt}};
    manifest.errors = {{1, "/sys/x", "deadline"}};
    manifest.problems = {"a sentence"};
    return manifest;
}

TEST(Manifest, EveryMemberIsReadAsItIsWritten)
{
    EXPECT_EQ(parse_manifest(manifest_json(full_manifest())), full_manifest());
}

TEST(Manifest, AnotherFormatOrVersionIsRefused)
{
    EXPECT_EQ(fault(with("nimba-capture", "other")), "manifest.json: format is not nimba-capture");
    EXPECT_EQ(fault(with(R"("version": 1)", R"("version": 2)")),
              "manifest.json: version is 2, which this program does not know");
    EXPECT_EQ(fault("{"), "manifest.json is no JSON");
    EXPECT_EQ(fault("[]"), "manifest.json:  is no object");
}

TEST(Manifest, SamplesBeginAtZeroAndRise)
{
    constexpr const char* kFault =
        "manifest.json: samples is a list whose seconds do not rise from 0";
    EXPECT_EQ(fault(with(R"("seconds": 0)", R"("seconds": 1)")), kFault);
    EXPECT_EQ(fault(with(R"("seconds": 0})", R"("seconds": 0}, {"time": "t", "seconds": 0})")),
              kFault);
    EXPECT_EQ(fault(with(R"("seconds": 0)", R"("seconds": -1)")),
              "manifest.json: samples[0].seconds is no number of seconds");
    EXPECT_EQ(fault(small_manifest(0)), "manifest.json: samples is a list of no fitting length");
}

TEST(Manifest, NamesOfDevicesAreThoseOfDrm)
{
    const auto device = [](const std::string& type, const std::string& path) {
        return R"({"bus": "other", "nodes": [{"type": ")" + type + R"(", "path": ")" + path +
               R"(", "error": null}], "version": null})";
    };
    EXPECT_EQ(fault(with_devices(device("primary", "/dev/dri/card0"))), "");
    for (const char* const path : {"/dev/dri/card", "/dev/dri/card00", "/dev/dri/card-1",
                                   "/dev/dri/../sda", "/dev/dri/card1024", "card0"}) {
        EXPECT_EQ(fault(with_devices(device("primary", path))),
                  "manifest.json: drm.devices[0].nodes[0].path is no such node's path")
            << path;
    }
    EXPECT_EQ(fault(with_devices(device("primary", "/dev/dri/card0") + "," +
                                 device("primary", "/dev/dri/card0"))),
              "manifest.json: drm.devices is a list with two devices of a name");
    EXPECT_EQ(fault(with_devices(R"({"bus": "pci", "address": "../../x"})")),
              "manifest.json: drm.devices[0].address is no PCI bus id");
}

std::string repeated(const char* text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += (i == 0 ? "" : ",") + std::string{text};
    }
    return all;
}

TEST(Manifest, ListsAreNotLongerThanAMachineNeeds)
{
    const auto adapters = [](int count) {
        return with(R"("adapters": [])", R"("adapters": [)" + repeated("0", count) + "]");
    };
    const auto functions = [](int count) {
        return with(R"("adapters": [])",
                    R"("adapters": [{"slot": 0, "bus_id": "0000:01:00.0", "card": 0, "name": null,
                       "vendor": 1, "device": 2, "va_driver": true, "kernel_interface":
                       {"file": "libx.so", "functions": [)" +
                        repeated("\"f\"", count) +
                        R"(], "struct_size": 1, "init_result": null}}])");
    };
    EXPECT_EQ(fault(with_devices(repeated("0", 256))),
              "manifest.json: drm.devices[0] is no object");
    EXPECT_EQ(fault(with_devices(repeated("0", 257))),
              "manifest.json: drm.devices is too long a list");
    EXPECT_EQ(fault(adapters(256)), "manifest.json: adapters[0] is no object");
    EXPECT_EQ(fault(adapters(257)), "manifest.json: adapters is too long a list");
    EXPECT_EQ(fault(functions(64)), "");
    EXPECT_EQ(fault(functions(65)),
              "manifest.json: adapters[0].kernel_interface.functions is too long a list");
}

TEST(Manifest, ALibraryIsAFileNameAlone)
{
    const auto adapter = [](const std::string& file) {
        return with(R"("adapters": [])",
                    R"("adapters": [{"slot": 0, "bus_id": "0000:01:00.0", "card": 0, "name": null,
                       "vendor": 1, "device": 2, "va_driver": true, "kernel_interface": {"file": ")" +
                        file + R"(", "functions": [], "struct_size": 1, "init_result": null}}])");
    };
    EXPECT_EQ(fault(adapter("libx.so.0")), "");
    for (const char* const file : {"../libx.so", "lib/../x", "/lib/x", "x.so", "", "lib\\nx"}) {
        EXPECT_EQ(fault(adapter(file)),
                  "manifest.json: adapters[0].kernel_interface.file is no library's file name")
            << file;
    }
}

TEST(Manifest, WhatADriverSaysOfItselfBecomesALine)
{
    Manifest manifest = full_manifest();
    manifest.drm.devices[0].version =
        DrmVersion{"j\nw", 1, 2, 3, "2024\x7f", "\x1b" + std::string(5000, '\xFF')};
    const auto read = parse_manifest(manifest_json(manifest)).drm.devices[0].version;
    EXPECT_EQ(read->name, "j?w");
    EXPECT_EQ(read->date, "2024?");
    EXPECT_EQ(read->description.size(), 1U + 999U * 3U);
}

TEST(Manifest, TextsAreLines)
{
    EXPECT_EQ(fault(with(R"("tool": "0.1.0")", R"("tool": "a\nb")")),
              "manifest.json: tool is no line of text");
}

}  // namespace
}  // namespace nimba::archive
