// SPDX-License-Identifier: MIT
#include "tools/archive/entry_name.hpp"

#include <gtest/gtest.h>

namespace nimba::archive {
namespace {

TEST(EntryName, NodesAreFoundByTheirPathOnTheMachine)
{
    EXPECT_EQ(node_entry(3, "/proc/gpuinfo_0"), "samples/3/nodes/proc/gpuinfo_0");
    EXPECT_EQ(parse_entry_name("samples/3/nodes/proc/gpuinfo_0"),
              (EntryName{EntryKind::kNode, 3, "/proc/gpuinfo_0"}));
    EXPECT_EQ(parse_entry_name("samples/12/sample.json"), (EntryName{EntryKind::kSample, 12, ""}));
    EXPECT_EQ(parse_entry_name("manifest.json"), (EntryName{EntryKind::kManifest, 0, ""}));
}

TEST(EntryName, WhatCommandsSaidIsFoundByTheirNames)
{
    EXPECT_EQ(document_entry("alloc"), "documents/alloc.json");
    EXPECT_EQ(parse_entry_name("documents/alloc.json"),
              (EntryName{EntryKind::kDocument, 0, "alloc"}));
    EXPECT_EQ(overview_entry(12), "samples/12/overview.json");
    EXPECT_EQ(parse_entry_name("samples/12/overview.json"),
              (EntryName{EntryKind::kOverview, 12, ""}));
    for (const char* const name :
         {"documents/overview.json", "documents/other.json", "documents/alloc", "documents/.json",
          "documents/", "documents", "documents/x/alloc.json", "documents/../alloc.json",
          "documents/alloc.json/", "overview.json", "samples/0/alloc.json"}) {
        EXPECT_FALSE(parse_entry_name(name)) << name;
    }
}

TEST(EntryName, WhatLeadsElsewhereIsNone)
{
    for (const char* const name : {"/etc/passwd",
                                   "../manifest.json",
                                   "samples/0/nodes/../../x",
                                   "samples/0/nodes//x",
                                   "samples/0/nodes/./x",
                                   "samples/0/nodes/x/",
                                   "samples/0/nodes/",
                                   "samples/0/nodes",
                                   "samples/0/nodes/a/..",
                                   "samples/00/sample.json",
                                   "samples/-1/sample.json",
                                   "samples/1e3/sample.json",
                                   "samples//sample.json",
                                   "samples/0/other",
                                   "samples/0",
                                   "samples/99999999999999999999/sample.json",
                                   "./manifest.json",
                                   "manifest.json/",
                                   "",
                                   "samples/0/nodes/a b",
                                   "samples/0/nodes/a%2",
                                   "samples/0/nodes/a%2f",
                                   "samples/0/nodes/a%00"}) {
        EXPECT_FALSE(parse_entry_name(name)) << name;
    }
}

TEST(EntryName, PathsAreAsLongAndAsDeepAsThoseOfNodes)
{
    EXPECT_TRUE(is_node_path("/" + std::string(1023, 'a')));
    EXPECT_FALSE(is_node_path("/" + std::string(1024, 'a')));
    std::string deep;
    for (int i = 0; i < 16; ++i) {
        deep += "/a";
    }
    EXPECT_TRUE(is_node_path(deep));
    EXPECT_FALSE(is_node_path(deep + "/a"));
}

TEST(EntryName, BytesThatNamesDoNotHaveAreEncoded)
{
    EXPECT_EQ(encode_path("/a b%\n\xFF/c-1.2_3:@+"), "/a%20b%25%0A%FF/c-1.2_3:@+");
    EXPECT_EQ(decode_path("/a%20b%25%0A%FF"), "/a b%\n\xFF");
}

TEST(EntryName, APathHasOneSpellingAlone)
{
    EXPECT_FALSE(decode_path("%61"));  // an a that needs no encoding
    EXPECT_FALSE(decode_path("%2F"));  // so does a slash not
    EXPECT_FALSE(decode_path("%ff"));  // lower case
    EXPECT_FALSE(decode_path("%"));
    EXPECT_FALSE(decode_path("%F"));
    EXPECT_FALSE(decode_path(" "));
}

}  // namespace
}  // namespace nimba::archive
