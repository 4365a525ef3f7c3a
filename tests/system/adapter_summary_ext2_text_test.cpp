// SPDX-License-Identifier: MIT
// The extended summary of files whose lines are only partly as expected, or that are cut.
#include "summary_fixture.hpp"

namespace nimba::test {
namespace {

struct Kept {
    std::string text;
    std::uint64_t driver = 0;
    std::uint64_t firmware = 0;
    std::uint32_t pixel = 0;
    std::uint32_t texture = 0;
    std::uint64_t hdmi_dp = 0;
    std::uint64_t vga = 0;
    std::uint32_t pcie_gen = 0;
};

const std::string kDriver = "Driver Version : 1.2.a\n";
const std::string kFirmware = "Firmware Version : 8.f.7.1c\n";
const std::string kPixel = "Pixel Fillrate : 9600\n";
const std::string kTexture = "Texture Fillrate : 19200\n";
const std::string kHdmi = "HDMI Max Display Resolution : 3840 x 2160@60\n";
const std::string kVga = "VGA Max Display Resolution : 1920 x 1080@75\n";

constexpr std::uint64_t kDriverValue = 0x10002000A;
constexpr std::uint64_t kFirmwareValue = 0x0008000F0007001C;
constexpr std::uint64_t kHdmiValue = 0x0F0008700000003C;
constexpr std::uint64_t kVgaValue = 0x078004380000004B;

class SummaryExt2Text : public SummaryTest {
  protected:
    adapter_summary_ext2 of(const std::string& text)
    {
        forget_ext2();
        set_file(kQv, text);
        return ext2();
    }
    void expect_kept(const std::vector<Kept>& texts)
    {
        for (const Kept& kept : texts) {
            adapter_summary_ext2 expected = nothing_told();
            expected.driver_version = kept.driver;
            expected.firmware_version = kept.firmware;
            expected.pixel_fillrate = kept.pixel;
            expected.texture_fillrate = kept.texture;
            expected.max_resolution_hdmi_dp = kept.hdmi_dp;
            expected.max_resolution_vga = kept.vga;
            expected.pcie_gen = kept.pcie_gen;
            EXPECT_EQ(words_of(of(kept.text)), words_of(expected)) << kept.text;
        }
    }
};

TEST_F(SummaryExt2Text, WhatTheFirstLineLacksIsZero)
{
    expect_kept({
        {.text = "Driver Version : 1.2\n", .driver = 0x100020000},
        {.text = "Driver Version : 1\n", .driver = 0x100000000},
        {.text = "Driver Version : new\n", .driver = 0},
        {.text = "Driver Version : ", .driver = 0},
        {.text = "Firmware Version : 8.f\n", .firmware = 0x0008000F00000000},
        {.text = "Texture Fillrate : fast\n", .texture = 0},
        {.text = "VGA Max Display Resolution : 640\n", .vga = 0x0280000000000000},
        {.text = "Bus Type : PCIE\n", .pcie_gen = 0},
    });
}

TEST_F(SummaryExt2Text, WhatAVersionLacksIsThatOfTheDriver)
{
    const std::string key = "Firmware Version : ";
    expect_kept({
        {.text = kDriver + key + "8.f\n", .driver = kDriverValue, .firmware = 0x0008000F000A0000},
        {.text = kDriver + key + "8\n", .driver = kDriverValue, .firmware = 0x00080002000A0000},
        {.text = kDriver + key + "none\n", .driver = kDriverValue, .firmware = 0x00010002000A0000},
        {.text = kDriver + key + "8.f.7\n", .driver = kDriverValue, .firmware = 0x0008000F00070000},
        {.text = kDriver + key + "8-f.7\n", .driver = kDriverValue, .firmware = 0x00080002000A0000},
    });
}

TEST_F(SummaryExt2Text, WhatAFillRateLacksIsTheFirstNumberBeforeIt)
{
    expect_kept({
        {.text = kDriver + "Pixel Fillrate : fast\n", .driver = kDriverValue, .pixel = 1},
        {.text = kDriver + kFirmware + "Pixel Fillrate : fast\n",
         .driver = kDriverValue,
         .firmware = kFirmwareValue,
         .pixel = 8},
        {.text = kFirmware + "Pixel Fillrate : fast\nTexture Fillrate : fast\n",
         .firmware = kFirmwareValue,
         .pixel = 8,
         .texture = 8},
        {.text = kFirmware + "Texture Fillrate : fast\n", .firmware = kFirmwareValue, .texture = 8},
        {.text = kPixel + "Texture Fillrate : fast\n", .pixel = 9600, .texture = 9600},
    });
}

TEST_F(SummaryExt2Text, WhatAResolutionLacksIsOfFillRateAndVersionBeforeIt)
{
    const std::string before = kFirmware + kTexture;
    for (const std::string port : {"HDMI", "DP"}) {
        const std::string key = port + " Max Display Resolution : ";
        expect_kept({
            {.text = before + key + "1280 x 720\n",
             .firmware = kFirmwareValue,
             .texture = 19200,
             .hdmi_dp = 0x050002D000000007},
            {.text = before + key + "1280 x\n",
             .firmware = kFirmwareValue,
             .texture = 19200,
             .hdmi_dp = 0x0500000F00000007},
            {.text = before + key + "none\n",
             .firmware = kFirmwareValue,
             .texture = 19200,
             .hdmi_dp = 0x4B00000F00000007},
            {.text = before + key + "1280 x 720 @50\n",
             .firmware = kFirmwareValue,
             .texture = 19200,
             .hdmi_dp = 0x050002D000000007},
        });
    }
}

TEST_F(SummaryExt2Text, WhatAResolutionLacksIsThatOfTheOneBeforeIt)
{
    const std::string key = "VGA Max Display Resolution : ";
    expect_kept({
        {.text = kHdmi + key + "none\n", .hdmi_dp = kHdmiValue, .vga = kHdmiValue},
        {.text = kHdmi + key + "800 x 600\n", .hdmi_dp = kHdmiValue, .vga = 0x032002580000003C},
        {.text = kHdmi + key + "800\n", .hdmi_dp = kHdmiValue, .vga = 0x032008700000003C},
        {.text = kFirmware + kTexture + key + "none\n",
         .firmware = kFirmwareValue,
         .texture = 19200,
         .vga = 0x4B00000F00000007},
    });
}

TEST_F(SummaryExt2Text, AResolutionOfHdmiWithoutNumbersIsNotThatOfDp)
{
    expect_kept({
        {.text = "DP Max Display Resolution : 7680 x 4320@30\n" + kPixel +
                 "HDMI Max Display Resolution : none\n" + kVga,
         .pixel = 9600,
         .hdmi_dp = 0x2580000000000000,
         .vga = kVgaValue},
        {.text = "DP Max Display Resolution : 7680 x 4320@30\n" + kHdmi +
                 "VGA Max Display Resolution : none\n",
         .hdmi_dp = kHdmiValue,
         .vga = kHdmiValue},
    });
}

TEST_F(SummaryExt2Text, WhatABusLacksIsTheWidthBeforeIt)
{
    expect_kept({
        {.text = kVga + "Bus Type : PCIE\n", .vga = kVgaValue, .pcie_gen = 1920},
        {.text = kVga + "Bus Type : PCIEx8\n", .vga = kVgaValue, .pcie_gen = 1920},
        {.text = kVga + "Bus Type : PCIE3\n", .vga = kVgaValue, .pcie_gen = 3},
        {.text = kDriver + "Bus Type : PCIE\n", .driver = kDriverValue, .pcie_gen = 1},
    });
    forget_ext2();
    ext2();
    EXPECT_EQ(messages_, Texts{"cached_current_pcie_gen: 1\n"});
}

// The order is that in which they are looked up, whatever that of the lines is.
TEST_F(SummaryExt2Text, BeforeIsNotWhereTheLineStands)
{
    expect_kept({
        {.text = "Bus Type : PCIE\nVGA Max Display Resolution : none\n" + kHdmi +
                 "Texture Fillrate : none\nPixel Fillrate : none\nFirmware Version : none\n" +
                 kDriver,
         .driver = kDriverValue,
         .firmware = 0x00010002000A0000,
         .pixel = 1,
         .texture = 1,
         .hdmi_dp = kHdmiValue,
         .vga = kHdmiValue,
         .pcie_gen = 3840},
        {.text = kVga + kHdmi + kTexture + "Pixel Fillrate : none\n" + kFirmware,
         .firmware = kFirmwareValue,
         .pixel = 8,
         .texture = 19200,
         .hdmi_dp = kHdmiValue,
         .vga = kVgaValue},
        {.text = kPixel + kTexture + kFirmware + "Driver Version : 1\n",
         .driver = 0x100000000,
         .firmware = kFirmwareValue,
         .pixel = 9600,
         .texture = 19200},
    });
}

TEST_F(SummaryExt2Text, NumbersAreNotThoseOfAnotherFile)
{
    set_file(kQv,
             kDriver + kFirmware + kPixel + kTexture + kHdmi + kVga + "Bus Type : PCIE4.0 x8\n");
    ext2();
    chip_id() = DEVICE_ID_QV_M20;
    set_file(kQv,
             "Driver Version : none\nFirmware Version : none\nPixel Fillrate : none\n"
             "Texture Fillrate : none\nHDMI Max Display Resolution : none\n"
             "VGA Max Display Resolution : none\nBus Type : PCIE\n");
    EXPECT_EQ(words_of(ext2()), words_of(nothing_told()));
}

TEST_F(SummaryExt2Text, AKeyThatEndsWithTheFileTakesTheNumbersBeforeIt)
{
    expect_kept(
        {{.text = kFirmware + "Pixel Fillrate : ", .firmware = kFirmwareValue, .pixel = 8}});
}

TEST_F(SummaryExt2Text, AKeyThatEndsWithTheLastOf1024BytesIsNotThere)
{
    const std::string more = "77\n";
    expect_kept({
        {.text = text_ending_at(1024, kFirmware, "Pixel Fillrate : ") + more,
         .firmware = kFirmwareValue},
        {.text = text_ending_at(1024, kFirmware, "Texture Fillrate : "),
         .firmware = kFirmwareValue},
        {.text = text_ending_at(1024, kDriver, "Firmware Version : ") + more,
         .driver = kDriverValue},
        {.text = text_ending_at(1024, kPixel, "Driver Version : ") + more, .pixel = 9600},
        {.text = text_ending_at(1024, kHdmi, "VGA Max Display Resolution : ") + more,
         .hdmi_dp = kHdmiValue},
        {.text = text_ending_at(1024, kVga, "Bus Type : PCIE") + more, .vga = kVgaValue},
        {.text = text_ending_at(1024, "DP Max Display Resolution : 3840 x 2160@60\n",
                                "HDMI Max Display Resolution : "),
         .hdmi_dp = kHdmiValue},
        {.text = text_ending_at(1024, kPixel, "DP Max Display Resolution : "), .pixel = 9600},
    });
    for (const char* key :
         {"Memory Clock Freq : ", "GPU Memory Usage : ", "GPU Use Rate(3d) : ",
          "GPU Use Rate(video) : ", "GPU Use Rate(vpp) : ", "Realtime Temperature : "}) {
        EXPECT_EQ(words_of(of(text_ending_at(1024, "", key) + more)), words_of(nothing_told()))
            << key;
    }
}

TEST_F(SummaryExt2Text, ANumberEndsWithTheLastOf1024Bytes)
{
    expect_kept({
        {.text = text_ending_at(1024, "", "Pixel Fillrate : 7") + "7\n", .pixel = 7},
        {.text = text_ending_at(1024, "", "Pixel Fillrate : 77"), .pixel = 77},
        {.text = text_ending_at(1024, kFirmware, "Pixel Fillrate : \n") + "7\n",
         .firmware = kFirmwareValue,
         .pixel = 8},
        {.text = text_ending_at(1024, "", "Driver Version : 1.2.a") + "b\n",
         .driver = kDriverValue},
        {.text = text_ending_at(1024, kDriver, "Firmware Version : 8.f.") + "7.1c\n",
         .driver = kDriverValue,
         .firmware = 0x0008000F000A0000},
        {.text = text_ending_at(1024, "", "Bus Type : PCIE1") + "2.0 x8\n", .pcie_gen = 1},
    });
    adapter_summary_ext2 expected = nothing_told();
    expected.realtime_temperature = 4;
    EXPECT_EQ(words_of(of(text_ending_at(1024, "", "Realtime Temperature : 4") + "5\n")),
              words_of(expected));
    expected.realtime_temperature = 45;
    EXPECT_EQ(words_of(of(text_ending_at(1024, "", "Realtime Temperature : 45"))),
              words_of(expected));
}

TEST_F(SummaryExt2Text, WhatStandsBehind1024BytesIsNotRead)
{
    const std::string fill = std::string(1023, '.') + "\n";
    EXPECT_EQ(words_of(of(fill + kDriver + kFirmware + "Firmware Name : x\n" + kPixel + kTexture +
                          kHdmi + kVga +
                          "Bus Type : PCIE4.0 x8\nMemory Clock Freq : 1\n"
                          "GPU Memory Usage : 2\nGPU Use Rate(3d) : 3\nGPU Use Rate(video) : 4\n"
                          "GPU Use Rate(vpp) : 5\nRealtime Temperature : 6\n")),
              words_of(nothing_told()));
}

TEST_F(SummaryExt2Text, KeysBehindANulAreFoundAndANumberEndsThere)
{
    const std::string nul(1, '\0');
    expect_kept({
        {.text = nul + kDriver + nul + kPixel, .driver = kDriverValue, .pixel = 9600},
        {.text = "Pixel Fillrate : 9" + nul + "600\n" + kTexture, .pixel = 9, .texture = 19200},
        {.text = kFirmware + "Pixel Fillrate : " + nul + "9600\n",
         .firmware = kFirmwareValue,
         .pixel = 8},
    });
    adapter_summary_ext2 expected = nothing_told();
    expected.memory_clock_freq = 883;
    expected.gpu_memory_usage = 3;
    EXPECT_EQ(words_of(of(nul + "Memory Clock Freq : 883" + nul + "1\n" + nul +
                          "GPU Memory Usage : 3\n")),
              words_of(expected));
}

TEST_F(SummaryExt2Text, AKeyWithoutAValueTakesTheNumberOfTheNextLine)
{
    EXPECT_EQ(of("Pixel Fillrate : \n7\n").pixel_fillrate, 7U);
    EXPECT_EQ(of("Realtime Temperature : \n\n 8\n").realtime_temperature, 8U);
}

TEST_F(SummaryExt2Text, EachWordOfTheCallHasAKeyOfItsOwn)
{
    struct Word {
        const char* key;
        std::uint32_t adapter_summary_ext2::*member;
    };
    for (const Word& word :
         {Word{"Memory Clock Freq : ", &adapter_summary_ext2::memory_clock_freq},
          {"GPU Memory Usage : ", &adapter_summary_ext2::gpu_memory_usage},
          {"GPU Use Rate(3d) : ", &adapter_summary_ext2::gpu_use_rate_3d},
          {"GPU Use Rate(video) : ", &adapter_summary_ext2::gpu_use_rate_video},
          {"GPU Use Rate(vpp) : ", &adapter_summary_ext2::gpu_use_rate_vpp},
          {"Realtime Temperature : ", &adapter_summary_ext2::realtime_temperature}}) {
        for (const auto& [text, value] :
             {std::pair{"0\n", 0U}, {"100 %\n", 100U}, {"4294967295\n", 4294967295U}, {" 7", 7U}}) {
            adapter_summary_ext2 expected = nothing_told();
            expected.*word.member = value;
            EXPECT_EQ(words_of(of(std::string{word.key} + text)), words_of(expected))
                << word.key << text;
        }
        for (const char* text : {"none\n", "", "\n"}) {
            EXPECT_EQ(words_of(of(std::string{word.key} + text)), words_of(nothing_told()))
                << word.key << text;
        }
    }
}

}  // namespace
}  // namespace nimba::test
