// SPDX-License-Identifier: MIT
// The lines that tell about an entry.
#include "nimba_mgmt_interface.h"
#include "support/captured_stdout.hpp"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdio>
#include <string>

namespace nimba::test {
namespace {

// As printf prints it with %p.
std::string pointer(const void* value)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%p", value);
    return text.data();
}

TEST(PageTablePrinter, TellsAllLinksAndTexts)
{
    vidmm_vm_pt parent{};
    vidmm_vm_pt child{};
    vidmm_vm_pt next{};
    vidmm_vm_pt previous{};
    vidmm_vm_pte_elt3k sub_entry{};
    const vidmm_vm_pt entry{.Buffer = "some buffer",
                            .Addr = "1a2b000",
                            .entries = &child,
                            .parent = &parent,
                            .PT_Level = 1,
                            .PT_index = 23,
                            .PT_sub_entries = &sub_entry,
                            .next = &next,
                            .pre = &previous};
    EXPECT_EQ(stdout_of([&] { Print_PageTable(&entry); }),
              "PT_Level:1  PT_index:23  PT_entry:" + pointer(&entry) +
                  "  PT_sub_entries:" + pointer(&sub_entry) + "  parent:" + pointer(&parent) +
                  "  entries:" + pointer(&child) + "  pre:" + pointer(&previous) +
                  "  next:" + pointer(&next) + "  Addr:1a2b000  Buffer:some buffer\n");
}

TEST(PageTablePrinter, TellsOfAnEntryWithoutAnything)
{
    const vidmm_vm_pt entry{};
    EXPECT_EQ(stdout_of([&] { Print_PageTable(&entry); }),
              "PT_Level:0  PT_index:0  PT_entry:" + pointer(&entry) +
                  "  PT_sub_entries:(nil)  parent:(nil)  entries:(nil)  pre:(nil)  next:(nil)"
                  "  Addr:  Buffer:\n");
}

TEST(PageTablePrinter, TellsLongTextsAndSignedNumbers)
{
    vidmm_vm_pt entry{};
    entry.PT_Level = -1;
    entry.PT_index = INT_MIN;
    std::snprintf(entry.Addr, sizeof entry.Addr, "%s", std::string(47, 'a').c_str());
    std::snprintf(entry.Buffer, sizeof entry.Buffer, "%s", "100%s%n");
    EXPECT_EQ(stdout_of([&] { Print_PageTable(&entry); }),
              "PT_Level:-1  PT_index:-2147483648  PT_entry:" + pointer(&entry) +
                  "  PT_sub_entries:(nil)  parent:(nil)  entries:(nil)  pre:(nil)  next:(nil)"
                  "  Addr:aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa  Buffer:100%s%n\n");
}

TEST(SubTablePrinter, TellsItsLinksAndAddress)
{
    vidmm_vm_pt parent{};
    vidmm_vm_pte_elt3k next{};
    vidmm_vm_pte_elt3k previous{};
    vidmm_vm_pte_elt3k entry{};
    std::snprintf(entry.Addr, sizeof entry.Addr, "1a2c");
    entry.Snoop = 8;
    entry.Segment = 9;
    entry.LargePage = 10;
    entry.ST_Level = 2;
    entry.Index = 45;
    entry.next = &next;
    entry.pre = &previous;
    entry.parent = &parent;
    EXPECT_EQ(stdout_of([&] { Print_SubTable(&entry); }),
              "ST_LeveL:2  Index:45  sub_entry:" + pointer(&entry) +
                  "  parent:" + pointer(&parent) + "  pre:" + pointer(&previous) +
                  "  next:" + pointer(&next) + "  Addr:1a2c\n");
}

TEST(SubTablePrinter, TellsOfAnEntryWithoutAnything)
{
    const vidmm_vm_pte_elt3k entry{};
    EXPECT_EQ(stdout_of([&] { Print_SubTable(&entry); }),
              "ST_LeveL:0  Index:0  sub_entry:" + pointer(&entry) +
                  "  parent:(nil)  pre:(nil)  next:(nil)  Addr:\n");
}

}  // namespace
}  // namespace nimba::test
