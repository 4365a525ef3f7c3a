// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/entry_text.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace nimba::smi {
namespace {

const std::vector<VmDevice> kDevices{{0, "4100001", "a\"b,", {0, 0, 1}, {0, 0, 1}},
                                     {5, "x", "", {0, 0, 0}, {0, 0, 1}}};
const std::vector<TableRecord> kTables{{2, 2048, "10002000", "pt\xFF"}};
const std::vector<PageRecord> kPages{{2, 17, 2, 2048, 0, 1, 3, "1a2b3000"}};
const std::vector<PageRecord> kNonsense{{2, -1, 2, 2048, 0, 0, 0, "none"}};
const std::vector<VmAllocationRecord> kAllocations{{"4100001", "A1", "100000000", "40000"},
                                                   {"", "", "", ""}};

// All pieces in their order.
std::string whole_text(EntryText& text)
{
    std::string whole = text.begin(kDevices);
    whole += text.tables(0, kTables);
    whole += text.pages(0, kPages);
    whole += text.pages(1, kNonsense);
    whole += text.allocations({kAllocations.data(), 1});
    whole += text.allocations({kAllocations.data() + 1, 1});
    return whole + text.end({});
}

TEST(JsonEntries, HaveALineForEach)
{
    EXPECT_EQ(whole_text(*entries_as_json({})), R"({
  "schema": "nimba-smi.pagetable.1",
  "split": [9,9,9,9,12],
  "processes": [
    {"space":0,"pid":4100001,"name":"a\"b,","tables":[0,0,1],"pages":[0,0,1]},
    {"space":1,"pid":null,"name":null,"tables":[0,0,0],"pages":[0,0,1]}
  ],
  "entries": [
    {"space": 0, "pid": 4100001, "kind": "table", "level": 2, "index": 2048, "va": "0x100000000", )"
                                                R"("size": 2097152, "address": "0x10002000", )"
                                                "\"buffer\": \"pt\xEF\xBF\xBD\"},"
                                                R"(
    {"space": 0, "pid": 4100001, "kind": "page", "level": 2, "index": 17, "parent_level": 2, )"
                                                R"("parent_index": 2048, "va": "0x100011000", )"
                                                R"("size": 4096, "segment": 3, "snoop": 1, )"
                                                R"("large_page": 0, "address": "0x1a2b3000"},
    {"space": 1, "pid": null, "kind": "page", "level": 2, "index": -1, "parent_level": 2, )"
                                                R"("parent_index": 2048, "va": null, )"
                                                R"("size": null, "segment": 0, "snoop": 0, )"
                                                R"("large_page": 0, "address": null}
  ],
  "allocations": [
    {"pid": 4100001, "handle": "0xa1", "va": "0x100000000", "size": 262144},
    {"pid": null, "handle": null, "va": null, "size": null}
  ],
  "errors": []
}
)");
}

TEST(JsonEntries, AreADocumentWithoutAnyToo)
{
    const auto text = entries_as_json({});
    const std::vector<Problem> problems{{ExitStatus::kNoAdapter, std::nullopt, "c", "m"}};
    std::string whole = text->begin({});
    whole += text->end(problems);
    EXPECT_NE(whole.find("\n  \"entries\": [],\n  \"allocations\": [],\n  \"errors\": ["),
              std::string::npos)
        << whole;
    const auto document = nlohmann::json::parse(whole);
    EXPECT_EQ(document.at("processes").size(), 0U);
    EXPECT_EQ(document.at("entries").size(), 0U);
    EXPECT_EQ(document.at("allocations").size(), 0U);
    EXPECT_EQ(document.at("errors").at(0).at("status"), 3);
}

TEST(JsonEntries, AreNoDocumentWithoutTheirEnd)
{
    const auto text = entries_as_json({});
    std::string piece = text->begin(kDevices);
    EXPECT_FALSE(nlohmann::json::accept(piece));
    piece += text->pages(0, kPages);
    EXPECT_FALSE(nlohmann::json::accept(piece));
    piece += text->allocations(kAllocations);
    EXPECT_FALSE(nlohmann::json::accept(piece));
}

TEST(CsvEntries, HaveALineForEach)
{
    EXPECT_EQ(whole_text(*entries_as_csv({})),
              "space,pid,process,kind,level,index,parent_level,parent_index,va,size,segment,snoop,"
              "large_page,address,buffer,handle\n"
              "0,4100001,\"a\"\"b,\",table,2,2048,,,0x100000000,2097152,,,,0x10002000,"
              "pt\xEF\xBF\xBD,\n"
              "0,4100001,\"a\"\"b,\",page,2,17,2,2048,0x100011000,4096,3,1,0,0x1a2b3000,,\n"
              "1,x,,page,2,-1,2,2048,,,0,0,0,none,,\n"
              ",4100001,\"a\"\"b,\",allocation,,,,,0x100000000,262144,,,,,,0xa1\n"
              ",,,allocation,,,,,,,,,,,,\n");
}

}  // namespace
}  // namespace nimba::smi
