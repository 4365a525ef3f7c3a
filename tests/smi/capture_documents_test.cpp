// SPDX-License-Identifier: MIT
#include "tools/smi/capture/documents.hpp"

#include <stdlib.h>

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
        redacted_document(Document::parse(R"({"schema": "nimba-smi.alloc.1", "viewer": "by viewer",
            "adapters": [{"name": "Gpu0:Nimba-K1", "bus_id": "viewer", "driver": "viewer"}],
            "allocations": [{"processes": [{"pid": 7, "name": "/opt/viewer"},
                                           {"pid": 8, "name": "other"}, {"pid": 9, "name": null}]}],
            "errors": [{"message": "process viewer went away"}]})"),
                          redactor, "");
    EXPECT_EQ(document,
              Document::parse(R"({"schema": "nimba-smi.alloc.1", "viewer": "by name-00000002",
            "adapters": [{"name": "Gpu0:Nimba-K1", "bus_id": "viewer", "driver": "viewer"}],
            "allocations": [{"processes": [{"pid": 7, "name": "/name-00000001/name-00000002"},
                                           {"pid": 8, "name": "name-00000003"},
                                           {"pid": 9, "name": null}]}],
            "errors": [{"message": "process name-00000002 went away"}]})"));
}

TEST(CaptureDocuments, ThePlacesOfTheUserGo)
{
    ASSERT_EQ(::setenv("HOME", "/home/alice", 1), 0);
    Redactor redactor = counting_redactor();
    const Document document = redacted_document(
        Document::parse(R"json({"library": {"path": "/home/alice/lib/libnimba.so.0"},
            "checks": [{"group": "machine", "found": "/home/alice/bin/ps"},
                       {"group": "user", "found": "alice, in the group staff"},
                       {"group": "library", "found": "/home/alice/lib/libnimba.so.0 (0.1.0)"}]})json"),
        redactor, "/home/alice/lib/libnimba.so.0");
    EXPECT_EQ(document, Document::parse(R"json({"library": {"path": "libnimba.so.0"},
            "checks": [{"group": "machine", "found": "HOME/bin/ps"},
                       {"group": "library", "found": "libnimba.so.0 (0.1.0)"}]})json"));
}

}  // namespace
}  // namespace nimba::smi
