// SPDX-License-Identifier: MIT
#include "config/preference_file_fixture.hpp"
#include "support/descriptor.hpp"

#include <vector>

namespace nimba::test {
namespace {

using PreferenceParse = PreferenceFile;

// `count` times `character` between two texts.
std::string run(std::string_view before, std::size_t count, char character,
                std::string_view after = "")
{
    return std::string{before}.append(count, character).append(after);
}

struct Case {
    std::string what;
    std::string text;
    std::vector<Preference> records;
};

class PreferenceParseTable : public PreferenceFile {
  protected:
    // Parses each case's text with an empty list.
    void expect(const std::vector<Case>& cases) const
    {
        for (const Case& one : cases) {
            SCOPED_TRACE(one.what);
            interface_config_list.clear();
            write_file(path, one.text);
            EXPECT_EQ(parseINI(path.c_str()), static_cast<int32_t>(one.records.size()));
            EXPECT_TRUE(same_records(interface_config_list, one.records));
        }
    }
};

const std::string k511 = std::string(511, 'p');
const std::string k512 = std::string(512, 'p');
const std::string k64 = std::string(64, 'f');

TEST_F(PreferenceParseTable, WholeFileOfSections)
{
    expect({{"two sections",
             "; wmt_gfx_util.ini\n\n"
             "[game]\nFullPath = /opt/app/bin/game\nPreferGpuName = Nimba-K1\n"
             "PreferGpuBusID = 0000:03:00.0\nGpuPrefer = 2\n\n\n"
             "[app]\nFullPath = /usr/bin/app\nPreferGpuName = QV M-30\n"
             "PreferGpuBusID = 0016:255:31.7\nGpuPrefer = -1\n\n\n",
             {{.file_name = "game",
               .full_path = "/opt/app/bin/game",
               .prefer = 2,
               .gpu_name = "Nimba-K1",
               .bus = 3},
              {.file_name = "app",
               .full_path = "/usr/bin/app",
               .prefer = -1,
               .gpu_name = "QV M-30",
               .domain = 16,
               .bus = 255,
               .device = 31,
               .function = 7}}}});
}

TEST_F(PreferenceParseTable, FilesWithoutASectionYieldNothing)
{
    expect({{"empty", "", {}},
            {"one byte", "[", {}},
            {"two bytes", "a=", {}},
            {"header only", "; wmt_gfx_util.ini\n\n", {}},
            {"byte-order mark only", "\xEF\xBB\xBF", {}},
            {"blank lines", "\n \t\n\r\n", {}},
            {"keys only", "FullPath = /usr/bin/app\nGpuPrefer = 1\n", {}}});
}

TEST_F(PreferenceParseTable, ByteOrderMarkIsSkippedOnce)
{
    expect({{"mark", "\xEF\xBB\xBF[app]\n", {{.file_name = "app"}}},
            {"no mark in three bytes", "[a]", {{.file_name = "a"}}},
            {"no mark", "[app]\n", {{.file_name = "app"}}},
            {"first byte of a mark", "\xEF[app]\n[b]\n", {{.file_name = "b"}}},
            {"two marks", "\xEF\xBB\xBF\xEF\xBB\xBF[app]\n[b]\n", {{.file_name = "b"}}}});
}

TEST_F(PreferenceParseTable, SectionHeaderNamesTheFile)
{
    expect({{"no keys", "[game]\n", {{.file_name = "game"}}},
            {"no newline at the end", "[game]", {{.file_name = "game"}}},
            {"white space around", " \t\v\f[game]\r\n", {{.file_name = "game"}}},
            {"text behind the bracket", "[game] is a game\n", {{.file_name = "game"}}},
            {"value behind the bracket", "[game] GpuPrefer = 3\n", {{.file_name = "game"}}},
            {"second closing bracket", "[ga]me]\n", {{.file_name = "ga"}}},
            {"second opening bracket", "[[game]\n", {{.file_name = "[game"}}},
            {"equals sign inside", "[game=1]\n", {{.file_name = "game=1"}}},
            {"white space inside the brackets", "[ game ]\n", {{.file_name = " game "}}},
            {"empty name", "[]\n", {{}}},
            {"63 characters", run("[", 63, 'f', "]\n"), {{.file_name = k64.substr(1)}}},
            {"64 characters", "[" + k64 + "]\n", {{.file_name = k64}}},
            {"65 characters",
             "[" + k64 + "g]\nFullPath = /g\n",
             {{.file_name = k64, .full_path = "/g"}}}});
}

TEST_F(PreferenceParseTable, OtherLinesAreIgnored)
{
    expect(
        {{"no closing bracket",
          "[game]\n[app without\nGpuPrefer = 1\n",
          {{.file_name = "game", .prefer = 1}}},
         {"no closing bracket, but a value", "[game]\n[FullPath = /x\n", {{.file_name = "game"}}},
         {"bracket behind text", "x[game]\n", {}},
         {"bracket cut off by a comment", "[game;]\n", {}},
         {"no equals sign", "[game]\nFullPath /x\n", {{.file_name = "game"}}},
         {"unknown keys",
          "[game]\nPath = /x\nFullPath2 = /x\nFull Path = /x\n= /x\n",
          {{.file_name = "game"}}},
         {"keys in another case",
          "[game]\nfullpath = /x\nGPUPREFER = 1\nPreferGPUName = x\n",
          {{.file_name = "game"}}}});
}

TEST_F(PreferenceParseTable, SemicolonStartsACommentAnywhere)
{
    expect({{"behind a value",
             "[game]\nFullPath = /opt/app/bin/game ; comment\n",
             {{.file_name = "game", .full_path = "/opt/app/bin/game"}}},
            {"inside a value",
             "[game]\nFullPath = /a;b;c\n",
             {{.file_name = "game", .full_path = "/a"}}},
            {"behind a header", "[game];[app]\n", {{.file_name = "game"}}},
            {"before a header", ";[game]\n", {}},
            {"before a key", "[game]\n;GpuPrefer = 1\n", {{.file_name = "game"}}},
            {"behind an equals sign",
             "[game]\nFullPath = /x\nFullPath =;/y\n",
             {{.file_name = "game"}}}});
}

TEST_F(PreferenceParseTable, KeysAndValuesAreTrimmed)
{
    const std::vector<Preference> expected = {{.file_name = "game", .full_path = "/x"}};
    expect({{"no blanks", "[game]\nFullPath=/x\n", expected},
            {"blanks", "[game]\nFullPath  =  /x\n", expected},
            {"every kind", "[game]\n\t\v\fFullPath\v\t=\f\v /x \t\r\n", expected},
            {"carriage returns", "[game]\r\nFullPath = /x\r\n", expected},
            {"inner blanks stay",
             "[game]\nFullPath = /x  y\n",
             {{.file_name = "game", .full_path = "/x  y"}}},
            {"split at the first equals sign",
             "[game]\nFullPath = a = b\n",
             {{.file_name = "game", .full_path = "a = b"}}}});
}

TEST_F(PreferenceParseTable, TextsAreCutToTheirFields)
{
    expect({{"511", "[g]\nFullPath = " + k511 + "\n", {{.file_name = "g", .full_path = k511}}},
            {"512", "[g]\nFullPath = " + k512 + "\n", {{.file_name = "g", .full_path = k512}}},
            {"513", "[g]\nFullPath = " + k512 + "q\n", {{.file_name = "g", .full_path = k512}}},
            {"name of 15",
             "[g]\nPreferGpuName = 123456789012345\n",
             {{.file_name = "g", .gpu_name = "123456789012345"}}},
            {"name of 16",
             "[g]\nPreferGpuName = 1234567890123456\n",
             {{.file_name = "g", .gpu_name = "1234567890123456"}}},
            {"name of 17",
             "[g]\nPreferGpuName = 12345678901234567\n",
             {{.file_name = "g", .gpu_name = "1234567890123456"}}}});
}

TEST_F(PreferenceParseTable, LongLinesAreReadInPiecesOf611Characters)
{
    expect({{"610 characters and the newline",
             run("[g]\nFullPath = ", 599, 'p', "\n[h]\n"),
             {{.file_name = "g", .full_path = k512}, {.file_name = "h"}}},
            {"611 characters",
             run("[g]\nFullPath = ", 600, 'p', "\n[h]\n"),
             {{.file_name = "g", .full_path = k512}, {.file_name = "h"}}},
            {"a header as second piece", run("", 611, 'x', "[g]\n"), {{.file_name = "g"}}},
            {"a header one character too early", run("", 610, 'x', "[g]\n"), {}},
            {"a header as third piece", run("", 1222, 'x', "[g]\n"), {{.file_name = "g"}}},
            {"a comment ends with its piece", run(";", 610, 'x', "[g]\n"), {{.file_name = "g"}}},
            {"a key as second piece",
             run("[g]\n", 611, 'x', "GpuPrefer = 5\n"),
             {{.file_name = "g", .prefer = 5}}}});
}

TEST_F(PreferenceParseTable, PreferenceIsScannedAsADecimalNumber)
{
    expect(
        {{"positive", "[g]\nGpuPrefer = 2\n", {{.file_name = "g", .prefer = 2}}},
         {"negative", "[g]\nGpuPrefer = -2\n", {{.file_name = "g", .prefer = -2}}},
         {"signed", "[g]\nGpuPrefer = +2\n", {{.file_name = "g", .prefer = 2}}},
         {"largest", "[g]\nGpuPrefer = 2147483647\n", {{.file_name = "g", .prefer = 2147483647}}},
         {"leading zeros", "[g]\nGpuPrefer = 010\n", {{.file_name = "g", .prefer = 10}}},
         {"text behind", "[g]\nGpuPrefer = 12abc\n", {{.file_name = "g", .prefer = 12}}},
         {"not hexadecimal", "[g]\nGpuPrefer = 0x10\n", {{.file_name = "g"}}},
         {"no number", "[g]\nGpuPrefer = 4\nGpuPrefer = four\n", {{.file_name = "g", .prefer = 4}}},
         {"nothing", "[g]\nGpuPrefer = 4\nGpuPrefer =\n", {{.file_name = "g", .prefer = 4}}}});
}

TEST_F(PreferenceParseTable, BusIdIsScannedAsFourDecimalNumbers)
{
    const Preference every{.file_name = "g", .domain = 9, .bus = 8, .device = 7, .function = 6};
    const std::string set = "[g]\nPreferGpuBusID = 9:8:7.6\nPreferGpuBusID = ";
    const auto with = [&](uint16_t domain, uint8_t bus, uint8_t device, uint8_t function) {
        Preference changed = every;
        changed.domain = domain;
        changed.bus = bus;
        changed.device = device;
        changed.function = function;
        return std::vector<Preference>{changed};
    };
    expect({{"zero-padded", set + "0000:03:00.0\n", with(0, 3, 0, 0)},
            {"padding is not octal", set + "0010:011:012.013\n", with(10, 11, 12, 13)},
            {"largest", set + "65535:255:255.255\n", with(65535, 255, 255, 255)},
            {"low 16 and low 8 bits", set + "65537:258:515.1028\n", with(1, 2, 3, 4)},
            {"negative", set + "-1:-1:-1.-1\n", with(65535, 255, 255, 255)},
            {"blanks before a number", set + "1: 2: 3. 4\n", with(1, 2, 3, 4)},
            {"text behind", set + "1:2:3.4 and more\n", with(1, 2, 3, 4)},
            {"domain alone", set + "70000\n", with(4464, 8, 7, 6)},
            {"domain and bus", set + "1:2\n", with(1, 2, 7, 6)},
            {"no function", set + "1:2:3\n", with(1, 2, 3, 6)},
            {"colon for the point", set + "1:2:3:4\n", with(1, 2, 3, 6)},
            {"hexadecimal", set + "000a:0b:00.0\n", with(0, 8, 7, 6)},
            {"no number", set + "none\n", with(9, 8, 7, 6)},
            {"nothing", set + "\n", with(9, 8, 7, 6)}});
}

TEST_F(PreferenceParseTable, TextsBeyondAsciiAreTakenByteForByte)
{
    expect({{"several scripts",
             "[игра]\nFullPath = /opt/größe/游戏/игра\nPreferGpuName = K1™ é\n",
             {{.file_name = "игра", .full_path = "/opt/größe/游戏/игра", .gpu_name = "K1™ é"}}},
            {"behind a byte-order mark", "\xEF\xBB\xBF[é]\n", {{.file_name = "é"}}},
            {"blanks of other kinds stay",
             "[g]\nFullPath = \xC2\xA0/x\xE2\x80\x89\nPreferGpuName = \x85\xA0\n",
             {{.file_name = "g", .full_path = "\xC2\xA0/x\xE2\x80\x89", .gpu_name = "\x85\xA0"}}},
            {"cut inside a character",
             "[g]\nPreferGpuName = 123456789012345é\n",
             {{.file_name = "g", .gpu_name = "123456789012345\xC3"}}}});
}

TEST_F(PreferenceParseTable, LastOfAKeyGivenTwiceWins)
{
    expect({{"every key",
             "[g]\nFullPath = /a/long/path\nPreferGpuName = long name\nGpuPrefer = 1\n"
             "PreferGpuBusID = 1:2:3.4\n"
             "FullPath = /b\nPreferGpuName = b\nGpuPrefer = 2\nPreferGpuBusID = 5:6:7.8\n",
             {{.file_name = "g",
               .full_path = "/b",
               .prefer = 2,
               .gpu_name = "b",
               .domain = 5,
               .bus = 6,
               .device = 7,
               .function = 8}}},
            {"empty text",
             "[g]\nFullPath = /a\nPreferGpuName = a\nFullPath =\nPreferGpuName =\n",
             {{.file_name = "g"}}}});
}

TEST_F(PreferenceParseTable, KeysBeforeTheFirstSectionBelongToIt)
{
    expect(
        {{"carried over",
          "FullPath = /x\nGpuPrefer = 3\n[a]\nPreferGpuName = n\n[b]\n",
          {{.file_name = "a", .full_path = "/x", .prefer = 3, .gpu_name = "n"},
           {.file_name = "b"}}},
         {"overridden", "GpuPrefer = 3\n[a]\nGpuPrefer = 4\n", {{.file_name = "a", .prefer = 4}}}});
}

TEST_F(PreferenceParseTable, SectionsOfOneNameAreKeptApart)
{
    expect({{"twice",
             "[a]\nGpuPrefer = 1\n[a]\nGpuPrefer = 2\n",
             {{.file_name = "a", .prefer = 1}, {.file_name = "a", .prefer = 2}}}});
}

TEST_F(PreferenceParse, AppendsToTheList)
{
    interface_config_list = {record({.file_name = "earlier", .prefer = 1})};
    write_file(path, "[a]\n[b]\n");
    EXPECT_EQ(parseINI(path.c_str()), 2);
    EXPECT_EQ(parseINI(path.c_str()), 2);
    EXPECT_TRUE(same_records(interface_config_list, {{.file_name = "earlier", .prefer = 1},
                                                     {.file_name = "a"},
                                                     {.file_name = "b"},
                                                     {.file_name = "a"},
                                                     {.file_name = "b"}}));
}

TEST_F(PreferenceParse, LogsTheFileAndEachRecordBehindIt)
{
    write_file(path,
               "[game]\nFullPath = /opt/game\nPreferGpuName = Nimba-K1\n"
               "PreferGpuBusID = 0016:3:4.5\nGpuPrefer = 2\n[app]\n");
    parseINI(path.c_str());
    EXPECT_EQ(take_messages(), (Texts{"parseINI " + path + "\n",
                                      "Load from config: game: /opt/game, Nimba-K1, 0016:03:04.5\n",
                                      "Load from config: app: , , 0000:00:00.0\n"}));
}

TEST_F(PreferenceParse, LogsTheFileAloneWhenItHoldsNoSection)
{
    write_file(path, "; wmt_gfx_util.ini\n\n");
    EXPECT_EQ(parseINI(path.c_str()), 0);
    EXPECT_EQ(take_messages(), (Texts{"parseINI " + path + "\n"}));
}

TEST_F(PreferenceParse, DirectoryCountsAsAFileWithoutText)
{
    interface_config_list = {record({.file_name = "earlier"})};
    EXPECT_EQ(parseINI(directory.path().c_str()), 0);
    EXPECT_TRUE(same_records(interface_config_list, {{.file_name = "earlier"}}));
    EXPECT_EQ(take_messages(), (Texts{"parseINI " + directory.path().string() + "\n"}));
}

TEST_F(PreferenceParse, FileThatCannotBeOpenedIsLoggedAndChangesNothing)
{
    const auto missing_directory = (directory.path() / "missing/file.ini").string();
    for (const std::string& unopenable : {path, missing_directory, std::string{}}) {
        SCOPED_TRACE(unopenable);
        interface_config_list = {record({.file_name = "earlier"})};
        EXPECT_EQ(parseINI(unopenable.c_str()), -1);
        EXPECT_TRUE(same_records(interface_config_list, {{.file_name = "earlier"}}));
        EXPECT_EQ(take_messages(), (Texts{"parseINI fail to open " + unopenable + "\n"}));
    }
}

TEST_F(PreferenceParse, LeavesTheFileAsItIsAndNoDescriptorOpen)
{
    const std::string text = run("[a]\n", 2000, 'x', "\n[b]");
    write_file(path, text);
    const auto before = open_descriptors();
    parseINI(path.c_str());
    parseINI((path + ".missing").c_str());
    EXPECT_EQ(open_descriptors(), before);
    EXPECT_EQ(read_file(path), text);
}

}  // namespace
}  // namespace nimba::test
