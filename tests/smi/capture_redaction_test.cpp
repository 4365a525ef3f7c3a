// SPDX-License-Identifier: MIT
#include "tools/smi/capture/redaction.hpp"

#include <gtest/gtest.h>

#include <cstdint>

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
              "size=12\nby name-00000001, viewers\nviewer : name-00000002\nlevel:balance fee\n");
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

TEST(Redaction, OfPreferencesTheGpusStay)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.preferences("; by somebody\n[game]\nFullPath = /opt/game\n"
                                   "PreferGpuName = Gpu0:Nimba-K1\nGpuPrefer = 1\nNote = secret\n"),
              "[name-00000001]\nFullPath = /name-00000002/name-00000001\n"
              "PreferGpuName = Gpu0:Nimba-K1\nGpuPrefer = 1\n");
}

TEST(Redaction, SerialNumbersOfModulesAreReplaced)
{
    Redactor redactor = counting_redactor();
    EXPECT_EQ(redactor.memory_modules("\tType: DDR4\n\tSerial Number: AB12\n\tAsset Tag: AB12\n"),
              "\tType: DDR4\n\tSerial Number: name-00000001\n\tAsset Tag: name-00000001\n");
}

}  // namespace
}  // namespace nimba::smi
