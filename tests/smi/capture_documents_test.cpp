// SPDX-License-Identifier: MIT
#include "tools/smi/capture/documents.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace nimba::smi {
namespace {

// Draws 1, 2, 3 and so on.
Redactor counting_redactor()
{
    return Redactor{[number = uint32_t{0}]() mutable { return ++number; }};
}

TEST(CaptureDocuments, NamesOfProcessesHaveTheirStandInsWhereverTheyAre)
{
    Redactor redactor = counting_redactor();
    redactor.path("/opt/viewer");
    const Document document =
        redacted_document(Document::parse(R"({"schema": "nimba-smi.alloc.1", "found": "by viewer",
            "adapters": [{"name": "Gpu0:Nimba-K1", "bus_id": "viewer", "driver": "viewer"}],
            "allocations": [{"processes": [{"pid": 7, "name": "/opt/viewer"},
                                           {"pid": 8, "name": "other"}, {"pid": 9, "name": null}]}],
            "errors": [{"message": "process viewer went away"}]})"),
                          redactor);
    EXPECT_EQ(document,
              Document::parse(R"({"schema": "nimba-smi.alloc.1", "found": "by name-00000002",
            "adapters": [{"name": "Gpu0:Nimba-K1", "bus_id": "viewer", "driver": "viewer"}],
            "allocations": [{"processes": [{"pid": 7, "name": "/name-00000001/name-00000002"},
                                           {"pid": 8, "name": "name-00000003"},
                                           {"pid": 9, "name": null}]}],
            "errors": [{"message": "process name-00000002 went away"}]})"));
}

TEST(CaptureDocuments, WordsOfTheDocumentsStayWhateverProgramsAreCalled)
{
    Redactor redactor = counting_redactor();
    redactor.path("/node/MiB/legacy/balance/heap_local/0x10/Not Specified/ok");
    const Document document = Document::parse(R"({"adapters": [{"driver": "legacy",
        "memory": {"source": "node", "unit": "MiB", "segments": [{"segment": "1", "name": "heap_local"}]},
        "clocks": {"dvfs_level": "balance"}, "processes": {"devices": [{"device": "0x10"}]}}],
        "checks": [{"id": "node", "group": "library", "result": "ok"}]})");
    EXPECT_EQ(redacted_document(document, redactor), document);
}

TEST(CaptureDocuments, PlacesOutsideOfTheSystemGo)
{
    Redactor redactor = counting_redactor();
    const Document document =
        redacted_document(Document::parse(R"json({"library": {"path": "/home/alice/libnimba.so.0"},
            "checks": [{"group": "machine", "found": "/home/alice/bin/ps"},
                       {"group": "machine", "found": "/usr/bin/ps"},
                       {"group": "library", "found": "/home/alice/libnimba.so.0 (0.1.0)"}]})json"),
                          redactor);
    EXPECT_EQ(
        document,
        Document::parse(R"json({"library": {"path": "/name-00000001/name-00000002/libnimba.so.0"},
            "checks": [{"group": "machine", "found": "/name-00000001/name-00000002/name-00000003/ps"},
                       {"group": "machine", "found": "/usr/bin/ps"},
                       {"group": "library", "found": "/name-00000001/name-00000002/libnimba.so.0 (0.1.0)"}]})json"));
}

TEST(CaptureDocuments, WhatTheDoctorSaysOfTheUserGoes)
{
    EXPECT_EQ(without_user(Document::parse(R"({"checks": [{"group": "machine", "found": "it"},
            {"group": "user", "found": "alice, in the group staff"}]})")),
              Document::parse(R"({"checks": [{"group": "machine", "found": "it"}]})"));
    EXPECT_EQ(without_user(Document::parse(R"({"summary": "it"})")),
              Document::parse(R"({"summary": "it"})"));
}

}  // namespace
}  // namespace nimba::smi
