// SPDX-License-Identifier: MIT
#include "tools/smi/capture/redaction.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace nimba::smi {
namespace {

// Draws 1, 2, 3 and so on.
Redactor counting_redactor()
{
    return Redactor{[number = uint32_t{0}]() mutable { return ++number; }};
}

TEST(Redaction, EachPartOfAPathHasItsStandIn)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.path("/usr/bin/viewer"), "/name-00000001/name-00000002/name-00000003");
    EXPECT_EQ(redactor.path("viewer"), "name-00000003");
    EXPECT_EQ(redactor.path("//bin/"), "//name-00000002/");
    EXPECT_EQ(redactor.path(""), "");
}

TEST(Redaction, ANameThatIsDrawnTwiceIsDrawnAgain)
{
    Redactor redactor{[calls = 0]() mutable { return ++calls < 3 ? 7U : 8U; }};
    EXPECT_EQ(redactor.path("one"), "name-00000007");
    EXPECT_EQ(redactor.path("two"), "name-00000008");
}

TEST(Redaction, AProcessNameThatIsCutIsThatOfItsProgram)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.process_name("a-very-long-pro", "/bin/a-very-long-program"),
              "name-00000001");
    EXPECT_EQ(redactor.path("a-very-long-program"), "name-00000001");
    EXPECT_EQ(redactor.process_name("other", "/bin/a-very-long-program"), "name-00000002");
}

TEST(Redaction, NamesAreReplacedInTextsWhereTheyCanBeValues)
{
    Redactor redactor = counting_redactor();
    redactor.path("viewer/two words/size/balance/12/fee");
    EXPECT_EQ(redactor.text("size=12\nby viewer, viewers\nviewer : two words\nlevel:balance fee\n"),
              "size=12\nby name-00000001, viewers\nname-00000001 : name-00000002\n"
              "level:balance fee\n");
    EXPECT_EQ(redactor.text("of size"), "of name-00000003");
}

TEST(Redaction, TheNameOfAnAddressSpaceIsReplacedUnseen)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.text("device_pid = 7\ndevice_pname = some one\nsize = 4000\n"),
              "device_pid = 7\ndevice_pname = name-00000001\nsize = 4000\n");
}

TEST(Redaction, ANameThatIsPartOfALongerOneLeavesNothingOfThat)
{
    Redactor redactor = counting_redactor();
    redactor.path("two words/my two words");
    EXPECT_EQ(redactor.text("of my two words\n"), "of name-00000002\n");
}

TEST(Redaction, NamesCanBeLearntBeforeATextIsLookedThrough)
{
    Redactor redactor = counting_redactor();
    redactor.learn("size = 1\ndevice_pname = viewer\n");
    EXPECT_EQ(redactor.text("made for viewer\n"), "made for name-00000001\n");
}

TEST(Redaction, ANameThatIsNoKeyOfTheDriverIsReplacedBeforeASign)
{
    Redactor redactor = counting_redactor();
    redactor.path("acmetrader");
    EXPECT_EQ(redactor.text("name: acmetrader: beta\nowner acmetrader=alice\n"),
              "name: name-00000001: beta\nowner name-00000001=alice\n");
}

TEST(Redaction, WhatTheLibraryLooksForStaysWhateverProgramsAreCalled)
{
    Redactor redactor = counting_redactor();
    redactor.path("GPU/Memory/used/segment/size/node/entry/pid = 7/ 4100/DP/Max/= 4/ cg_3d:0x1");
    constexpr const char* kText =
        "=====vm node info=====\npid = 7\nsize = 4100\nKMD used segment memory:  268\n"
        "GPU Memory Usage : 6\nSupport Display Type : VGA DP\n"
        "0:128: entry addr:41000, buffer:pt0_128\npg_3d:0x64  cg_3d:0x10\n";
    EXPECT_EQ(redactor.text(kText), kText);
}

TEST(Redaction, PathsInSentencesAreReplacedPartByPart)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.sentence("cannot load liba.so: /home/alice/my lib/liba.so: too short"),
              "cannot load liba.so: /name-00000001/name-00000002/name-00000003/liba.so: too short");
    EXPECT_EQ(redactor.sentence("type: mv \"/home/alice/a b\" \"/home/alice/a b.bad\""),
              "type: mv \"/name-00000001/name-00000002/name-00000004\" "
              "\"/name-00000001/name-00000002/name-00000005\"");
    EXPECT_EQ(redactor.sentence("/srv/ps, and (/srv/own.tool)"),
              "/name-00000006/ps, and (/name-00000006/name-00000007)");
    EXPECT_EQ(redactor.sentence("alice has /dev/shm/liba.so."),
              "name-00000002 has /name-00000008/name-00000009/liba.so.");
}

TEST(Redaction, PathsOfTheSystemStayInSentences)
{
    Redactor redactor = counting_redactor();
    redactor.path("/usr/kernel/allocations/viewer");
    EXPECT_EQ(redactor.sentence("no permission to read /sys/kernel/debug/dri/0/jw/allocations"),
              "no permission to read /sys/kernel/debug/dri/0/jw/allocations");
    EXPECT_EQ(redactor.sentence("/dev/dri/card0 and /usr/sbin/dmidecode at 3 MT/s"),
              "/dev/dri/card0 and /usr/sbin/dmidecode at 3 MT/s");
    EXPECT_EQ(redactor.sentence("/usr/lib/viewer/libviewer.so (see https://viewer/)"),
              "/usr/lib/name-00000004/libviewer.so (see https://name-00000004/)");
}

TEST(Redaction, OfPreferencesStaysWhatTheLibraryReads)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.preferences("; by somebody\n[game] ; of mine\nFullPath = /opt/game ; mine\n"
                                   "PreferGpuName = Gpu0:Nimba-K1 ; for Alice\n"
                                   "PreferGpuBusID = 0000:01:00.0 mine\n"
                                   "GpuPrefer = 1 ; mine\nNote = secret\n[other]]\n",
                                   std::vector<std::string>{"Gpu0:Nimba-K1"}),
              "[name-00000001]\nFullPath = /name-00000002/name-00000001\n"
              "PreferGpuName = Gpu0:Nimba-K1\nPreferGpuBusID = 0000:01:00.0\nGpuPrefer = 1\n"
              "[name-00000003]\n");
}

TEST(Redaction, ValuesThatAreNoneAreReplacedInPreferences)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.preferences("PreferGpuName = Gpu1:secret\nPreferGpuBusID = secret\n"
                                   "GpuPrefer = secret\n",
                                   std::vector<std::string>{"Gpu0:Nimba-K1"}),
              "PreferGpuName = name-00000001\nPreferGpuBusID = \nGpuPrefer = \n");
}

TEST(Redaction, SerialNumbersOfModulesAreReplaced)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.memory_modules("\tType: DDR4\n\tSerial Number: AB12\n\tAsset Tag: AB12\n"),
              "\tType: DDR4\n\tSerial Number: name-00000001\n\tAsset Tag: name-00000001\n");
}

TEST(Redaction, WhatTheFirmwareDoesNotTellIsNoName)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.memory_modules("\tSerial Number: Not Specified\n\tAsset Tag: Unknown\n"),
              "\tSerial Number: Not Specified\n\tAsset Tag: Unknown\n");
    EXPECT_EQ(redactor.text("Unknown, Not Specified"), "Unknown, Not Specified");
}

}  // namespace
}  // namespace nimba::smi
