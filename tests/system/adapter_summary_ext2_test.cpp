// SPDX-License-Identifier: MIT
// Versions, fill rates, resolutions, use and temperature of an adapter, and how long they are kept.
#include "summary_fixture.hpp"

namespace nimba::test {
namespace {

constexpr const char* kText =
    "Device ID : 2030\n"
    "Driver Version : 1.2.a\n"
    "Firmware Version : 8.f.0.1c\n"
    "Firmware Name : Golden Image\n"
    "Bus Type : PCIE4.0 x8\n"
    "Pixel Fillrate : 9600\n"
    "Texture Fillrate : 19200\n"
    "Memory Clock Freq : 883\n"
    "HDMI Max Display Resolution : 3840 x 2160@60\n"
    "DP Max Display Resolution : 7680 x 4320@30\n"
    "VGA Max Display Resolution : 1920 x 1080@75\n"
    "GPU Memory Usage : 3\n"
    "GPU Use Rate(3d) : 41\n"
    "GPU Use Rate(video) : 42\n"
    "GPU Use Rate(vpp) : 43\n"
    "Realtime Temperature : 45\n";

// What is kept of kText, without what is read at each call.
adapter_summary_ext2 kept_of_text()
{
    adapter_summary_ext2 record = nothing_told();
    record.driver_version = 0x10002000A;
    record.firmware_version = 0x0008000F0000001C;
    std::strcpy(record.firmware_name, "Golden Image");
    record.pixel_fillrate = 9600;
    record.texture_fillrate = 19200;
    record.max_resolution_hdmi_dp = 0x0F0008700000003C;
    record.max_resolution_vga = 0x078004380000004B;
    record.pcie_gen = 4;
    return record;
}

adapter_summary_ext2 all_of_text()
{
    adapter_summary_ext2 record = kept_of_text();
    record.memory_clock_freq = 883;
    record.gpu_memory_usage = 3;
    record.gpu_use_rate_3d = 41;
    record.gpu_use_rate_video = 42;
    record.gpu_use_rate_vpp = 43;
    record.realtime_temperature = 45;
    return record;
}

class SummaryExt2 : public SummaryTest {
  protected:
    // Expects this record of the current slot.
    void expect(const adapter_summary_ext2& expected)
    {
        EXPECT_EQ(words_of(ext2()), words_of(expected));
        EXPECT_EQ(output_, "");
    }
    // What a file of this text comes to at the first call for a chip.
    adapter_summary_ext2 of(const std::string& text)
    {
        forget_ext2();
        set_file(kQv, text);
        return ext2();
    }
};

TEST_F(SummaryExt2, IsThatOfTheDriversFile)
{
    set_file(kQv, kText);
    expect(all_of_text());
    EXPECT_EQ(messages_, Texts{"cached_current_pcie_gen: 4\n"});
    expect(all_of_text());
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(SummaryExt2, OfANimbaChipIsThatOfTheDriversFileAsWell)
{
    use(kNimba);
    set_file(kNimba, kText);
    set_file(kQv, "Pixel Fillrate : 1\n");
    expect(all_of_text());
}

TEST_F(SummaryExt2, TheWorkerDoesTheSame)
{
    set_file(kQv, kText);
    EXPECT_EQ(words_of(ext2("gpu_info_get_adapter_summary_ext2")), words_of(all_of_text()));
    EXPECT_EQ(messages_, Texts{"cached_current_pcie_gen: 4\n"});
}

TEST_F(SummaryExt2, IsOfTheSlotNotOfTheCurrentAdapter)
{
    set_file(kTwin, kText);
    record_.chip_id_idx = kTwin;
    expect(all_of_text());
    EXPECT_EQ(dmidecode_.asked(), "");
}

TEST_F(SummaryExt2, ReadsTheFileTwiceAtTheFirstCallAndOnceAtALaterOne)
{
    set_file(kQv, kText);
    watch(kQv);
    ext2();
    EXPECT_EQ(journal_.taken(), (Texts{"gpuinfo_5", "gpuinfo_5"}));
    ext2();
    EXPECT_EQ(journal_.taken(), (Texts{"gpuinfo_5"}));
}

TEST_F(SummaryExt2, UseAndTemperatureAreOfTheCallAndTheRestIsKept)
{
    set_file(kQv, kText);
    ext2();
    set_file(kQv,
             "Driver Version : 9.9.9\nFirmware Version : 9.9.9.9\nFirmware Name : Other\n"
             "Bus Type : PCIE9.0 x9\nPixel Fillrate : 9\nTexture Fillrate : 9\n"
             "Memory Clock Freq : 1\nHDMI Max Display Resolution : 9 x 9@9\n"
             "VGA Max Display Resolution : 9 x 9@9\nGPU Memory Usage : 2\nGPU Use Rate(3d) : 4\n"
             "GPU Use Rate(video) : 0\nGPU Use Rate(vpp) : 6\nRealtime Temperature : 4294967294\n");
    adapter_summary_ext2 expected = kept_of_text();
    expected.memory_clock_freq = 1;
    expected.gpu_memory_usage = 2;
    expected.gpu_use_rate_3d = 4;
    expected.gpu_use_rate_video = 0;
    expected.gpu_use_rate_vpp = 6;
    expected.realtime_temperature = 4294967294;
    expect(expected);
    set_file(kQv, "Device ID : 2030\n");
    expect(kept_of_text());
}

TEST_F(SummaryExt2, WithoutTheFileNothingIsToldNotEvenWhatIsKept)
{
    set_file(kQv, kText);
    ext2();
    hide_file(kQv);
    expect(nothing_told());
    make_file_a_directory(kQv);
    expect(nothing_told());
    set_file(kQv, "");
    expect(nothing_told());
    set_file(kQv, kText);
    expect(all_of_text());
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(SummaryExt2, OfAChipWithoutTheFileAtTheFirstCallNothingIsKept)
{
    adapter_summary_ext2 expected = nothing_told();
    expected.memory_clock_freq = 883;
    expected.gpu_memory_usage = 3;
    expected.gpu_use_rate_3d = 41;
    expected.gpu_use_rate_video = 42;
    expected.gpu_use_rate_vpp = 43;
    expected.realtime_temperature = 45;
    for (void (*take)(int) : {hide_file, make_file_a_directory}) {
        forget_ext2();
        take(kQv);
        messages_.clear();
        expect(nothing_told());
        EXPECT_EQ(messages_, Texts{"cached_current_pcie_gen: 0\n"});
        set_file(kQv, kText);
        expect(expected);
    }
    forget_ext2();
    expect(all_of_text());
}

TEST_F(SummaryExt2, NothingOfAnotherChipIsLeftWhereAChipHasNoFile)
{
    set_file(kQv, kText);
    ext2();
    chip_id() = DEVICE_ID_QV_M20;
    hide_file(kQv);
    expect(nothing_told());
    set_file(kQv, "GPU Use Rate(3d) : 5\n");
    adapter_summary_ext2 expected = nothing_told();
    expected.gpu_use_rate_3d = 5;
    expect(expected);
    forget_ext2();
    expect(expected);
}

TEST_F(SummaryExt2, OfAFileWithoutAnyKeyIsNothingToldEither)
{
    set_file(kQv, kText);
    ext2();
    chip_id() = DEVICE_ID_QV_M20;
    set_file(kQv, "no key\n");
    expect(nothing_told());
    EXPECT_EQ(messages_, Texts{"cached_current_pcie_gen: 0\n"});
}

TEST_F(SummaryExt2, TwoAdaptersOfAChipShareWhatTheFirstWasFoundToHave)
{
    set_file(kQv, kText);
    ext2();
    set_file(kTwin, "Driver Version : 9.9.9\nFirmware Name : Other\nGPU Use Rate(3d) : 5\n");
    use(kTwin);
    adapter_summary_ext2 expected = kept_of_text();
    expected.gpu_use_rate_3d = 5;
    expect(expected);
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(SummaryExt2, AnotherChipIsReadAnewAndSoIsTheFirstAfterIt)
{
    set_file(kQv, kText);
    ext2();
    use(kNimba);
    set_file(kNimba, "Firmware Name : Other\nBus Type : PCIE3.0 x4\n");
    adapter_summary_ext2 expected = nothing_told();
    std::strcpy(expected.firmware_name, "Other");
    expected.pcie_gen = 3;
    expect(expected);
    EXPECT_EQ(messages_, Texts{"cached_current_pcie_gen: 3\n"});
    use(kQv);
    set_file(kQv, "Pixel Fillrate : 6\n");
    expected = nothing_told();
    expected.pixel_fillrate = 6;
    expect(expected);
}

TEST_F(SummaryExt2, IsKeptWhenTheLibraryStopsAndStarts)
{
    set_file(kQv, kText);
    ext2();
    exit(kQv);
    set_file(kQv, "Pixel Fillrate : 6\n");
    use(kQv);
    expect(kept_of_text());
}

TEST_F(SummaryExt2, OfAnEmptySlotIsReadAtTheFirstCallAndKept)
{
    chip_id() = 0;
    set_file(kQv, kText);
    expect(all_of_text());
    set_file(kQv, "Pixel Fillrate : 6\n");
    expect(kept_of_text());
}

// Nothing is kept for this number at load.
TEST_F(SummaryExt2, OfAChipIdOfAllOnesKeepsNothingAtTheFirstCall)
{
    chip_id() = 0xFFFFFFFF;
    set_file(kQv, "Pixel Fillrate : 6\nGPU Use Rate(3d) : 5\n");
    adapter_summary_ext2 expected = nothing_told();
    expected.gpu_use_rate_3d = 5;
    expect(expected);
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(SummaryExt2, IsKeptApartFromTheSummary)
{
    set_file(kQv, kText);
    summary();
    expect(all_of_text());
    chip_id() = DEVICE_ID_QV_M20;
    summary();
    chip_id() = DEVICE_ID_QV_M30;
    set_file(kQv, "Pixel Fillrate : 6\n");
    expect(kept_of_text());
}

struct DriverVersion {
    const char* text;
    std::uint64_t version;
};

TEST_F(SummaryExt2, ADriverVersionIsThreeHexadecimalNumbersOf32BitsAddedUp)
{
    for (const auto& [text, version] : {DriverVersion{"1.2.a", 0x10002000A},
                                        {"1f.2.3", 0x1F00020003},
                                        {"0x10.0.0 (beta)", 0x1000000000},
                                        {"  1.2.3.4", 0x100020003},
                                        {"FFFF.FFFF.FFFF", 0xFFFFFFFFFFFF},
                                        {"80000000.0.1", 0x8000000000000001},
                                        {"0.80000000.1", 0x800000000001},
                                        {"0.0.80000000", 0x80000000},
                                        {"1.1ffff.2", 0x2FFFF0002},
                                        {"1.1.10001", 0x100020001}}) {
        EXPECT_EQ(of(std::string{"Driver Version : "} + text + "\n").driver_version, version)
            << text;
    }
}

TEST_F(SummaryExt2, AFirmwareVersionIsFourHexadecimalNumbersOf32BitsAddedUp)
{
    for (const auto& [text, version] : {DriverVersion{"8.f.0.1c", 0x0008000F0000001C},
                                        {"1.2.3.4", 0x0001000200030004},
                                        {"ffff.ffff.ffff.ffff", 0xFFFFFFFFFFFFFFFF},
                                        {"0.1ffff.0.0", 0x0001FFFF00000000},
                                        {"1.10001.10001.10001", 0x0002000200020001},
                                        {"10000.0.0.1", 1},
                                        {"0.0.0.80000000", 0x80000000}}) {
        EXPECT_EQ(of(std::string{"Firmware Version : "} + text + "\n").firmware_version, version)
            << text;
    }
}

TEST_F(SummaryExt2, AResolutionIsOfHdmiOrElseOfDp)
{
    const std::string hdmi = "HDMI Max Display Resolution : 1280 x 720@50\n";
    const std::string dp = "DP Max Display Resolution : 3840 x 2160@60\n";
    EXPECT_EQ(of("HDMI Max Display Resolution : 3840 x 2160@-1\n").max_resolution_hdmi_dp,
              0x0F00086FFFFFFFFFU);
    EXPECT_EQ(of("HDMI Max Display Resolution : 1 x 65537@1\n").max_resolution_hdmi_dp,
              0x0002000100000001U);
    EXPECT_EQ(of("HDMI Max Display Resolution : 65536 x 1@1\n").max_resolution_hdmi_dp,
              0x0000000100000001U);
    EXPECT_EQ(of(dp).max_resolution_hdmi_dp, 0x0F0008700000003CU);
    EXPECT_EQ(of(hdmi).max_resolution_hdmi_dp, 0x050002D000000032U);
    EXPECT_EQ(of(dp + hdmi).max_resolution_hdmi_dp, 0x050002D000000032U);
    EXPECT_EQ(of("e" + dp).max_resolution_hdmi_dp, 0x0F0008700000003CU);
    EXPECT_EQ(of("HDMI Max Display Resolution : none\n" + dp).max_resolution_hdmi_dp, 0U);
    EXPECT_EQ(of("VGA Max Display Resolution : 1 x 2@3\n").max_resolution_hdmi_dp, 0U);
    EXPECT_EQ(of(hdmi + dp).max_resolution_vga, 0U);
    EXPECT_EQ(of("VGA Max Display Resolution : 640x480@60\n").max_resolution_vga,
              0x028001E00000003CU);
}

TEST_F(SummaryExt2, APcieGenerationStandsRightBehindTheBusType)
{
    EXPECT_EQ(of("Bus Type : PCIE3.0 x16\n").pcie_gen, 3U);
    EXPECT_EQ(of("Bus Type : PCIE 5.0 x4\n").pcie_gen, 5U);
    EXPECT_EQ(of("Bus Type : PCIE2\n").pcie_gen, 2U);
    EXPECT_EQ(of("Bus Type : PCIE12.5 x4\n").pcie_gen, 12U);
    EXPECT_EQ(of("Bus Type : PCIE-1\n").pcie_gen, 0xFFFFFFFFU);
    EXPECT_EQ(of("Bus Type : AGP8\n").pcie_gen, 0U);
    EXPECT_EQ(of("Bus Type: PCIE3.0 x16\n").pcie_gen, 0U);
}

TEST_F(SummaryExt2, AFirmwareNameIsTheRestOfItsLineUpTo31Characters)
{
    const std::string key = "Firmware Name : ";
    const auto name_of = [&](const std::string& text) {
        const adapter_summary_ext2 record = of(text);
        return std::string{record.firmware_name, sizeof record.firmware_name};
    };
    const auto name = [](std::string text) {
        text.resize(32);
        return text;
    };
    const std::string digits = "0123456789abcdefghijklmnopqrstuvwxyz";
    EXPECT_EQ(name_of(key + "  a b \t\nPixel Fillrate : 1\n"), name("  a b \t"));
    EXPECT_EQ(name_of(key + digits.substr(0, 31) + "\n"), name(digits.substr(0, 31)));
    EXPECT_EQ(name_of(key + digits.substr(0, 32) + "\n"), name(digits.substr(0, 31)));
    EXPECT_EQ(name_of(key + digits), name(digits.substr(0, 31)));
    EXPECT_EQ(name_of(key + "end"), name("end"));
    EXPECT_EQ(name_of(key + "\nnext"), name(""));
    EXPECT_EQ(name_of(key), name(""));
    EXPECT_EQ(name_of(key + "one" + std::string(1, '\0') + "two\n"), name("one"));
    EXPECT_EQ(name_of(text_ending_at(1024, "", key + "tail")), name("tail"));
    EXPECT_EQ(name_of(text_ending_at(1024, "", key + "tail") + "s\n"), name("tail"));
    EXPECT_EQ(name_of(text_ending_at(1024, "", key) + "lost\n"), name(""));
}

TEST_F(SummaryExt2, EachKeyCountsWhereItStandsFirst)
{
    std::string twice = kText;
    twice += "Pixel Fillrate : 1\nGPU Use Rate(3d) : 1\nFirmware Name : x\n";
    set_file(kQv, twice);
    expect(all_of_text());
}

}  // namespace
}  // namespace nimba::test
