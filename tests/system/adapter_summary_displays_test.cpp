// SPDX-License-Identifier: MIT
// Display outputs of an adapter: those of the driver's file, or else the connectors in sysfs.
#include "summary_fixture.hpp"

#include <utility>

namespace nimba::test {
namespace {

constexpr const char* kTooLong = "get_line_from_string fail, string too long!!!\n";
constexpr const char* kNoDirectory = "Error opening drm directory\n";

constexpr std::uint32_t kVga = 1;
constexpr std::uint32_t kDvi = 2;
constexpr std::uint32_t kHdmi = 4;
constexpr std::uint32_t kDp = 8;
constexpr std::uint32_t kEdp = 16;

using Displays = std::pair<std::uint32_t, std::uint32_t>;  // their number and their types

constexpr Displays kNone{0, 0};
// What the connectors of the QV chip in SummaryDisplays come to.
constexpr Displays kFromConnectors{3, kVga | kDvi};

struct DriverText {
    std::string text;
    Displays displays;
};

// The list of types behind a port count of 2, for the QV chip.
std::string of_types(const std::string& types)
{
    return "Device ID : 2030\nMax Display Port : 2\nSupport Display Type :" + types;
}

class SummaryDisplays : public SummaryTest {
  protected:
    SummaryDisplays() { set_connectors(kQv, {"card5-VGA-1", "card5-VGA-2", "card5-DVI-D-1"}); }

    // Of the current slot, read anew.
    Displays displays()
    {
        forget_summary();
        const SummaryWords words = summary();
        return {words[6], words[7]};
    }
    Displays displays_of(const std::string& text)
    {
        set_file(kQv, text);
        return displays();
    }
    void expect_displays(const std::vector<DriverText>& texts)
    {
        for (const DriverText& text : texts) {
            EXPECT_EQ(displays_of(text.text), text.displays) << text.text;
            EXPECT_EQ(output_, "");
        }
    }
};

TEST_F(SummaryDisplays, AreThoseOfTheDriversFile)
{
    expect_displays({
        {of_types(" HDMI EDP\n"), {2, kHdmi | kDp | kEdp}},
        {of_types(" VGA\n"), {2, kVga}},
        {of_types(" DVI\n"), {2, kDvi}},
        {of_types(" HDMI\n"), {2, kHdmi}},
        {of_types(" DP\n"), {2, kDp}},
        {of_types(" EDP\n"), {2, kDp | kEdp}},
        {of_types(" VGA DVI HDMI DP EDP\n"), {2, 31}},
        {of_types("HDMI\n"), {2, kHdmi}},
        {of_types("xHDMI-A,DisplayPort/DPx"), {2, kHdmi | kDp}},
        {of_types(" DP\nSupport Display Type : VGA\n"), {2, kDp}},
    });
}

TEST_F(SummaryDisplays, AreLoggedBehindTheLink)
{
    EXPECT_EQ(displays_of("Device ID : 2030\nMax Display Port : a\n"
                          "Support Display Type : HDMI EDP\n"),
              (Displays{10, 28}));
    EXPECT_EQ(messages_, (Texts{"cached_current_link_width: 0x10\n",
                                "cached_display_port_number: 0xa, "
                                "cached_support_disp_port_type: 0x1c\n"}));
    hide_file(kQv);
    EXPECT_EQ(displays(), kFromConnectors);
    EXPECT_EQ(messages_, (Texts{"cached_current_link_width: 0x10\n",
                                "cached_display_port_number: 0x3, "
                                "cached_support_disp_port_type: 0x3\n"}));
}

TEST_F(SummaryDisplays, OfTheDriversFileNeedNoDirectory)
{
    set_file(kQv, of_types(" DP\n"));
    watch(kQv);
    summary();
    EXPECT_EQ(journal_.taken(),
              (Texts{"fb_size", "dmidecode", "dmidecode", "dmidecode", "miu_channel_num",
                     "current_link_width", "gpuinfo_5", "eclk", "mclk", "vclk", "coreclk"}));
}

TEST_F(SummaryDisplays, TheLinesOfTheDriversFileHaveAnyOrder)
{
    expect_displays({
        {"Support Display Type : DP\nMax Display Port : 1\nDriver Version : 1.2.a\n"
         "Device ID : 2030\n",
         {1, kDp}},
    });
}

TEST_F(SummaryDisplays, OfTheDriversFileCountIfItsDeviceIdIsTheChips)
{
    const std::string rest = "\nMax Display Port : 2\nSupport Display Type : DP\n";
    expect_displays({
        {"Device ID : 0x2030" + rest, {2, kDp}},
        {"Device ID :   00002030 (rev 1)" + rest, {2, kDp}},
        {"Device ID : 2031" + rest, kFromConnectors},
        {"Device ID : 8240" + rest, kFromConnectors},
        {"Device ID : 20300" + rest, kFromConnectors},
        {"Device ID : none" + rest, kFromConnectors},
        {"Device ID: 2030" + rest, kFromConnectors},
        {rest, kFromConnectors},
    });
}

TEST_F(SummaryDisplays, DeviceIdsAreHexadecimal)
{
    chip_id() = 0xABCDEF;
    expect_displays({
        {"Device ID : abcdef\nMax Display Port : 2\nSupport Display Type : DP\n", {2, kDp}},
        {"Device ID : ABCDEF\nMax Display Port : 3\nSupport Display Type : DP\n", {3, kDp}},
    });
}

TEST_F(SummaryDisplays, AMissingDeviceIdIsNotThatOfAnEmptySlot)
{
    chip_id() = 0;
    expect_displays({
        {"Max Display Port : 2\nSupport Display Type : DP\n", kFromConnectors},
        {"Device ID : none\nMax Display Port : 2\nSupport Display Type : DP\n", kFromConnectors},
        {"Device ID : 0\nMax Display Port : 2\nSupport Display Type : DP\n", {2, kDp}},
    });
}

TEST_F(SummaryDisplays, PortsAreAHexadecimalNumber)
{
    const std::string id = "Device ID : 2030\n";
    const std::string types = "\nSupport Display Type : DP\n";
    expect_displays({
        {id + "Max Display Port : 10" + types, {16, kDp}},
        {id + "Max Display Port : 0x1F" + types, {31, kDp}},
        {id + "Max Display Port :   3 ports" + types, {3, kDp}},
        {id + "Max Display Port : 0" + types, kFromConnectors},
        {id + "Max Display Port : none" + types, kFromConnectors},
        {id + "Max Display Port: 2" + types, kFromConnectors},
        {id + types, kFromConnectors},
    });
}

TEST_F(SummaryDisplays, WithoutAKnownTypeThereAreNone)
{
    expect_displays({
        {of_types(" hdmi dp\n"), kFromConnectors},
        {of_types(" LVDS\n"), kFromConnectors},
        {of_types("\n DP HDMI\n"), kFromConnectors},
        {of_types(""), kFromConnectors},
        {"Device ID : 2030\nMax Display Port : 2\nSupport Display Type: DP\n", kFromConnectors},
        {"Device ID : 2030\nMax Display Port : 2\n", kFromConnectors},
    });
}

TEST_F(SummaryDisplays, AListOfTypesHas99CharactersAtMost)
{
    const std::string blanks(93, ' ');
    EXPECT_EQ(displays_of(of_types(blanks + " HDMI\nVersion : 1\n")), (Displays{2, kHdmi}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(displays_of(of_types(blanks + "  HDMI\nVersion : 1\n")), kFromConnectors);
    EXPECT_EQ(output_, kTooLong);
    EXPECT_EQ(displays_of(of_types(" HDMI" + blanks + "  \n")), kFromConnectors);
    EXPECT_EQ(output_, kTooLong);
}

TEST_F(SummaryDisplays, AListOfTypesMayEndWithTheFile)
{
    const std::string blanks(93, ' ');
    EXPECT_EQ(displays_of(of_types(" VGA DP")), (Displays{2, kVga | kDp}));
    EXPECT_EQ(displays_of(of_types(blanks + "   HDM")), kFromConnectors);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(displays_of(of_types(blanks + "  HDMI")), (Displays{2, kHdmi}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(displays_of(of_types(blanks + "   HDMI")), kFromConnectors);
    EXPECT_EQ(output_, kTooLong);
}

TEST_F(SummaryDisplays, AListOfTypesThatIsTooLongLeavesANimbaChipWithout)
{
    use(kNimba);
    set_connectors(kNimba, {"card3-VGA-1"});
    set_file(kNimba, "Device ID : 1003\nMax Display Port : 2\nSupport Display Type : HDMI" +
                         std::string(100, ' ') + "\n");
    EXPECT_EQ(displays(), kNone);
    EXPECT_EQ(output_, kTooLong);
    EXPECT_EQ(messages_, (Texts{"cached_current_link_width: 0x8\n",
                                "cached_display_port_number: 0x0, "
                                "cached_support_disp_port_type: 0x0\n"}));
}

// A list that is too long in the file of another card or chip is not looked at.
TEST_F(SummaryDisplays, AListOfTypesThatIsTooLongIsNotReportedForAnotherChip)
{
    const std::string rest =
        "Support Display Type : HDMI" + std::string(100, ' ') + "\nMax Display Port : 2\n";
    EXPECT_EQ(displays_of("Device ID : 1003\n" + rest), kFromConnectors);
    EXPECT_EQ(output_, "");
}

TEST_F(SummaryDisplays, AListOfTypesThatIsTooLongIsLookedAtBehindACountOfPortsAlone)
{
    const std::string id = "Device ID : 2030\n";
    const std::string types = "Support Display Type : HDMI" + std::string(100, ' ') + "\n";
    EXPECT_EQ(displays_of(id + types), kFromConnectors);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(displays_of(id + "Max Display Port : 0\n" + types), kFromConnectors);
    EXPECT_EQ(output_, kTooLong);
}

TEST_F(SummaryDisplays, OfTheDriversFileAreInItsFirst1024Bytes)
{
    const std::string head = "Device ID : 2030\nMax Display Port : 2\n";
    const std::string types = "Support Display Type :";
    expect_displays({
        {text_ending_at(1024, head, types + " DP"), {2, kDp}},
        {text_ending_at(1024, head, types + " DP") + " HDMI\n", {2, kDp}},
        {text_ending_at(1024, head, types + " HDMI D") + "P\n", {2, kHdmi}},
        {text_ending_at(1024, head, types) + " DP\n", kFromConnectors},
        {text_ending_at(1024, head, types + "  ") + "DP\n", kFromConnectors},
        // 60 of 120 characters are among them: that is not too long.
        {text_ending_at(1024, head, types + " HDMI" + std::string(55, ' ')) + std::string(60, ' ') +
             "\n",
         {2, kHdmi}},
        {text_ending_at(1024, "Device ID : 2030\nSupport Display Type : DP\n",
                        "Max Display Port : 1") +
             "2\n",
         {1, kDp}},
        {text_ending_at(1024, "Device ID : 2030\nSupport Display Type : DP\n",
                        "Max Display Port : ") +
             "2\n",
         kFromConnectors},
    });
}

TEST_F(SummaryDisplays, OfTheDriversFileMayStandBehindANul)
{
    const std::string nul(1, '\0');
    expect_displays(
        {{"Version" + nul + "\n" + of_types(" DP\n"), {2, kDp}},
         {"Device ID : 2030" + nul + "Max Display Port : 2" + nul + "Support Display Type : DP\n",
          {2, kDp}}});
}

TEST_F(SummaryDisplays, OfAnUnreadableFileAreTheConnectors)
{
    make_file_a_directory(kQv);
    EXPECT_EQ(displays(), kFromConnectors);
    EXPECT_EQ(displays_of(""), kFromConnectors);
    hide_file(kQv);
    EXPECT_EQ(displays(), kFromConnectors);
    EXPECT_EQ(output_, "");
}

TEST_F(SummaryDisplays, EachConnectorOfAKnownTypeCounts)
{
    const std::vector<std::pair<Texts, Displays>> directories{
        {{}, kNone},
        {{"card5-VGA-1"}, {1, kVga}},
        {{"card5-DVI-I-1"}, {1, kDvi}},
        {{"card5-HDMI-A-1"}, {1, kHdmi}},
        {{"card5-DP-1"}, {1, kDp}},
        {{"card5-EDP-1"}, {1, kEdp}},
        {{"card5-eDP-1"}, kNone},
        {{"card5-DP-1", "card5-DP-2", "card5-HDMI-A-1", "card5-HDMI-A-2", "card5-VGA-1"},
         {5, kVga | kHdmi | kDp}},
        {{"card5-Virtual-1", "card5-LVDS-1", "card5-DP", "card5-hdmi-1", "card5-DP1-1"}, kNone},
        {{"card15-DP-1", "card-DP-1", "card50-VGA-1", "card6-HDMI-A-1"}, kNone},
        {{"xcard5-DP-1", "card15-card5-VGA-"}, {2, kVga | kDp}},
        {{"card5-DP-1-card5-VGA-1"}, {2, kVga | kDp}},
        {{"card5-VGA-card5-DVI-card5-HDMI-card5-DP-card5-EDP-"}, {5, 31}},
        {{".card5-DP-1", "..card5-DP-2"}, {2, kDp}},
    };
    for (const auto& [names, expected] : directories) {
        set_connectors(kQv, names);
        EXPECT_EQ(displays(), expected) << testing::PrintToString(names);
        EXPECT_EQ(output_, "");
    }
}

TEST_F(SummaryDisplays, ConnectorsAreOfTheCardOfTheSlotBelowTheCurrentAdapter)
{
    std::filesystem::create_directory(behind(pci_directory(kQv) + "/drm/card61"));
    std::filesystem::create_directory(behind(pci_directory(kQv) + "/drm/card61/card61-DP-1"));
    std::filesystem::create_directory(behind(pci_directory(kQv) + "/drm/card61/card5-VGA-1"));
    record_.header.drm_card_idx[kQv] = 61;
    EXPECT_EQ(displays(), (Displays{1, kDp}));
    std::filesystem::remove_all(behind(pci_directory(kQv) + "/drm/card61"));
    EXPECT_EQ(displays(), kNone);
    EXPECT_EQ(output_, kNoDirectory);
}

TEST_F(SummaryDisplays, AreNoneWithoutFileAndDirectory)
{
    record_.header.drm_card_idx[kQv] = 61;
    EXPECT_EQ(displays(), kNone);
    EXPECT_EQ(output_, kNoDirectory);
    EXPECT_EQ(messages_, (Texts{"cached_current_link_width: 0x10\n",
                                "cached_display_port_number: 0x0, "
                                "cached_support_disp_port_type: 0x0\n"}));
    summary();
    EXPECT_EQ(output_, "");
}

TEST_F(SummaryDisplays, AListThatIsTooLongAndAMissingDirectoryAreBothReported)
{
    set_file(kQv, of_types(std::string(100, ' ') + "\n"));
    std::filesystem::rename(behind(drm_directory(kQv)), behind(drm_directory(kQv) + "-away"));
    EXPECT_EQ(displays(), kNone);
    EXPECT_EQ(output_, std::string{kTooLong} + kNoDirectory);
    std::filesystem::rename(behind(drm_directory(kQv) + "-away"), behind(drm_directory(kQv)));
}

TEST_F(SummaryDisplays, OfNimbaChipsAreNeverTheConnectors)
{
    for (const std::uint32_t chip : {0x1001U, 0x1002U, 0x1003U, 0x1013U, 0x1005U, 0x1006U}) {
        chip_id() = chip;
        EXPECT_EQ(displays(), kNone) << chip;
    }
    record_.header.drm_card_idx[kQv] = 61;
    EXPECT_EQ(displays(), kNone);
    EXPECT_EQ(output_, "");
    for (const std::uint32_t chip : {0x2020U, 0x2040U, 0U, 0x1004U}) {
        record_.header.drm_card_idx[kQv] = 5;
        chip_id() = chip;
        EXPECT_EQ(displays(), kFromConnectors) << chip;
    }
}

TEST_F(SummaryDisplays, OfANimbaChipAreThoseOfTheDriversFile)
{
    use(kNimba);
    set_file(kNimba, "Device ID : 1003\nMax Display Port : 4\nSupport Display Type : VGA DP\n");
    EXPECT_EQ(displays(), (Displays{4, kVga | kDp}));
    set_file(kNimba, "Device ID : 1005\nMax Display Port : 4\nSupport Display Type : VGA DP\n");
    EXPECT_EQ(displays(), kNone);
    EXPECT_EQ(output_, "");
}

}  // namespace
}  // namespace nimba::test
