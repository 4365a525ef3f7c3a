// SPDX-License-Identifier: MIT
#include "tools/archive/document.hpp"

#include "made_archive.hpp"
#include "tools/archive/archive_error.hpp"
#include "tools/archive/load.hpp"
#include "tools/archive/reader.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::archive {
namespace {

std::string fault_of(const std::string& text)
{
    try {
        check_document("alloc", "here", text);
        return "";
    } catch (const ArchiveError& error) {
        return error.what();
    }
}

std::string document_with(const std::string& value)
{
    return R"({"schema": "nimba-smi.alloc.1", "more": )" + value + "}";
}

// So many lists, one in the other.
std::string lists(std::size_t depth)
{
    return std::string(depth, '[') + std::string(depth, ']');
}

std::string object_with(int members)
{
    std::string text{"{"};
    for (int i = 0; i < members; ++i) {
        text += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\":0";
    }
    return text + "}";
}

TEST(Document, IsOfTheFormThatItsNameSays)
{
    EXPECT_EQ(fault_of(document_with(R"([1, -1, 1.5, "a", true, null, {"schema": "x"}])")), "");
    constexpr const char* kFault = "here is no such document";
    EXPECT_EQ(fault_of(R"({"schema": "nimba-smi.leaks.1"})"), kFault);
    EXPECT_EQ(fault_of(R"({"schema": ["nimba-smi.alloc.1"]})"), kFault);
    EXPECT_EQ(fault_of(R"({"in": {"schema": "nimba-smi.alloc.1"}})"), kFault);
    EXPECT_EQ(fault_of("{}"), kFault);
    EXPECT_EQ(fault_of(R"([{"schema": "nimba-smi.alloc.1"}])"), kFault);
    EXPECT_EQ(fault_of(R"("nimba-smi.alloc.1")"), kFault);
    EXPECT_EQ(fault_of(""), kFault);
}

TEST(Document, WhatIsNoJsonIsNone)
{
    constexpr const char* kFault = "here is no such document";
    EXPECT_EQ(fault_of(document_with("1") + "{}"), kFault);
    EXPECT_EQ(fault_of(document_with("1e999")), kFault);
    EXPECT_EQ(fault_of(document_with("NaN")), kFault);
    EXPECT_EQ(fault_of(document_with("\"\xFF\"")), kFault);
    EXPECT_EQ(fault_of(document_with("1").substr(0, 20)), kFault);
}

TEST(Document, IsNeitherTooDeepNorTooWide)
{
    constexpr const char* kFault = "here is no such document";
    EXPECT_EQ(fault_of(document_with(lists(31))), "");
    EXPECT_EQ(fault_of(document_with(lists(32))), kFault);
    EXPECT_EQ(fault_of(document_with(lists(1'000'000))), kFault);
    EXPECT_EQ(fault_of(document_with(object_with(1000))), "");
    EXPECT_EQ(fault_of(document_with(object_with(1001))), kFault);
}

TEST(Document, DocumentsHaveSoManyValuesTogether)
{
    const std::string archive =
        made_archive({{"samples/0/sample.json", small_sample()},
                      {"documents/alloc.json", document_with("[1, 2]")},               // 5 values
                      {"documents/leaks.json", R"({"schema": "nimba-smi.leaks.1"})"},  // 2
                      {"manifest.json", small_manifest()}});
    const auto fault = [&](uint64_t most) -> std::string {
        try {
            load_capture_bytes(archive, {.document_values = most});
            return "";
        } catch (const ArchiveError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(fault(7), "");
    EXPECT_EQ(fault(6), "its documents have too many values");
    std::string zeros{"0"};
    for (int i = 3; i < 1'000'000; ++i) {
        zeros += ",0";
    }
    EXPECT_EQ(fault_of(document_with("[" + zeros.substr(2) + "]")), "");
    EXPECT_EQ(fault_of(document_with("[" + zeros + "]")), "here is no such document");
}

TEST(Document, ComesWithTheCaptureOrIsMissing)
{
    const std::string overview = R"({"schema": "nimba-smi.overview.1", "adapters": []})";
    const Capture capture =
        load_capture_bytes(made_archive({{"samples/0/sample.json", small_sample()},
                                         {"samples/1/sample.json", small_sample()},
                                         {"samples/1/overview.json", overview},
                                         {"documents/alloc.json", document_with("1")},
                                         {"manifest.json", small_manifest(2)}}));
    EXPECT_EQ(capture.samples[0].overview, std::nullopt);
    EXPECT_EQ(capture.samples[1].overview, overview);
    EXPECT_EQ(capture.documents,
              (std::map<std::string, std::string>{{"alloc", document_with("1")}}));
}

TEST(Document, AnArchiveWithAMalformedOneIsRefused)
{
    EXPECT_EQ(fault_in(made_archive({{"samples/0/sample.json", small_sample()},
                                     {"documents/doctor.json", document_with("1")},
                                     {"manifest.json", small_manifest()}})),
              "documents/doctor.json is no such document");
    EXPECT_EQ(fault_in(made_archive({{"samples/0/sample.json", small_sample()},
                                     {"samples/0/overview.json", "[]"},
                                     {"manifest.json", small_manifest()}})),
              "samples/0/overview.json is no such document");
    EXPECT_EQ(fault_in(made_archive({{"samples/0/sample.json", small_sample()},
                                     {"documents/prefer.json", document_with("1")},
                                     {"manifest.json", small_manifest()}})),
              "a capture has no entry \"documents/prefer.json\"");
    EXPECT_EQ(
        fault_in(made_archive({{"samples/0/sample.json", small_sample()},
                               {"samples/1/overview.json", R"({"schema": "nimba-smi.overview.1"})"},
                               {"manifest.json", small_manifest(2)}})),
        "it has no samples/1/sample.json");
}

TEST(Document, HasALimitOfItsOwn)
{
    const auto fault = [](const char* name) -> std::string {
        try {
            read_bytes(made_archive({{name, "0123456789"}}), {.document_bytes = 9},
                       [](const EntryName&, const std::string&) {});
            return "";
        } catch (const ArchiveError& error) {
            return error.what();
        }
    };
    EXPECT_EQ(fault("documents/alloc.json"), "entry \"documents/alloc.json\" is too large");
    EXPECT_EQ(fault("samples/0/overview.json"), "entry \"samples/0/overview.json\" is too large");
    EXPECT_EQ(fault("manifest.json"), "");
}

}  // namespace
}  // namespace nimba::archive
