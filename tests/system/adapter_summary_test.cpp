// SPDX-License-Identifier: MIT
// Clocks, memory and PCIe link of an adapter, and for how long they are kept.
#include "summary_fixture.hpp"
#include "support/no_more_descriptors.hpp"

namespace nimba::test {
namespace {

constexpr const char* kModules =
    "\tSpeed: 3600 MT/s\n\tConfigured Memory Speed: 3200 MT/s\n\tConfigured Voltage: 1.2 V\n";

std::string memory_of(const std::string& width, const std::string& type)
{
    return "Memory Device\n\tTotal Width: " + width +
           " bits\n\tBank Locator: P0 CHANNEL A\n\tType: " + type + "\n";
}

class Summary : public SummaryTest {
  protected:
    Summary() { dmidecode_.answer(kModules + memory_of("72", "DDR5")); }

    const SummaryWords words_of_qv_{501, 502, 503, 504, 3200, 505, 0, 0, 506, 16, 5, 72};
};

TEST_F(Summary, ConnectorTypesAreThoseOfTheInterface)
{
    const auto& types = library_.symbol<const connect_type[5]>("support_CONNECT_type_list");
    EXPECT_STREQ(types[0].name, "VGA");
    EXPECT_STREQ(types[1].name, "DVI");
    EXPECT_STREQ(types[2].name, "HDMI");
    EXPECT_STREQ(types[3].name, "DP");
    EXPECT_STREQ(types[4].name, "EDP");
    EXPECT_EQ(types[0].bit, 1U);
    EXPECT_EQ(types[1].bit, 2U);
    EXPECT_EQ(types[2].bit, 4U);
    EXPECT_EQ(types[3].bit, 8U);
    EXPECT_EQ(types[4].bit, 16U);
}

TEST_F(Summary, OfANimbaChipLeavesMemoryTypeAndWidthUntouched)
{
    use(kNimba);
    EXPECT_EQ(summary(),
              (SummaryWords{301, 302, 303, 304, 606, 305, 0, 0, 306, 8, kPoison, kPoison}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(summary(),
              (SummaryWords{301, 302, 303, 304, 606, 305, 0, 0, 306, 8, kPoison, kPoison}));
}

TEST_F(Summary, OfAQvChipTellsOfTheSystemsMemory)
{
    EXPECT_EQ(summary(), words_of_qv_);
    EXPECT_EQ(output_, "");
    EXPECT_EQ(summary(), words_of_qv_);
}

TEST_F(Summary, TheWorkerDoesTheSame)
{
    EXPECT_EQ(summary("gpu_info_get_adapter_summary"), words_of_qv_);
    EXPECT_EQ(messages_, (Texts{"cached_current_link_width: 0x10\n",
                                "cached_display_port_number: 0x0, "
                                "cached_support_disp_port_type: 0x0\n"}));
    EXPECT_EQ(summary("gpu_info_get_adapter_summary"), words_of_qv_);
}

TEST_F(Summary, SixChipsHaveTheirOwnMemoryAndAllOthersThatOfTheSystem)
{
    for (const std::uint32_t chip : {0x1001U, 0x1002U, 0x1003U, 0x1013U, 0x1005U, 0x1006U}) {
        chip_id() = chip;
        EXPECT_EQ(summary(),
                  (SummaryWords{501, 502, 503, 504, 1006, 505, 0, 0, 506, 16, kPoison, kPoison}))
            << chip;
    }
    for (const std::uint32_t chip :
         {0x2020U, 0x2030U, 0x2040U, 0U, 0x1004U, 0x1007U, 0x10001001U, 0xFFFFFFFEU}) {
        chip_id() = chip;
        EXPECT_EQ(summary(), words_of_qv_) << chip;
    }
}

TEST_F(Summary, ADoubledClockKeeps32Bits)
{
    use(kNimba);
    set_node(kNimba, "mclk", "2147483647\n");
    EXPECT_EQ(summary()[4], 0xFFFFFFFEU);
    set_node(kNimba, "mclk", "-2147483647\n");
    EXPECT_EQ(summary()[4], 2U);
    set_node(kNimba, "mclk", "0\n");
    EXPECT_EQ(summary()[4], 0U);
}

TEST_F(Summary, ClocksAreOfTheCallAndTheRestIsKept)
{
    EXPECT_EQ(summary(), words_of_qv_);
    for (const char* name : {"fb_size", "miu_channel_num"}) {
        set_node(kQv, name, "9\n");
    }
    set_node(kQv, "eclk", "11\n");
    set_node(kQv, "vclk", "12\n");
    set_node(kQv, "mclk", "13\n");
    set_node(kQv, "coreclk", "15\n");
    set_link_width(kQv, "2\n");
    set_file(kQv, "Device ID : 2030\nMax Display Port : 2\nSupport Display Type : DP\n");
    set_connectors(kQv, {"card5-DP-1"});
    dmidecode_.answer("\tConfigured Memory Speed: 1 MT/s\n" + memory_of("8", "DDR4"));
    EXPECT_EQ(summary(), (SummaryWords{11, 12, 13, 504, 3200, 15, 0, 0, 506, 16, 5, 72}));
    EXPECT_EQ(output_, "");
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(Summary, ReadsInOrderAndAtALaterCallOnlyClocks)
{
    watch(kQv);
    summary();
    EXPECT_EQ(journal_.taken(),
              (Texts{"fb_size", "dmidecode", "dmidecode", "dmidecode", "miu_channel_num",
                     "current_link_width", "card5", "eclk", "mclk", "vclk", "coreclk"}));
    summary();
    EXPECT_EQ(journal_.taken(), (Texts{"eclk", "mclk", "vclk", "coreclk"}));
}

TEST_F(Summary, ReadsTheDriversFileBetweenLinkAndConnectors)
{
    set_file(kQv, "Device ID : 2030\n");
    watch(kQv);
    summary();
    EXPECT_EQ(journal_.taken(), (Texts{"fb_size", "dmidecode", "dmidecode", "dmidecode",
                                       "miu_channel_num", "current_link_width", "gpuinfo_5",
                                       "card5", "eclk", "mclk", "vclk", "coreclk"}));
}

TEST_F(Summary, AsksForTheSystemsMemoryOnceForEachChipWhateverTheChip)
{
    use(kNimba);
    dmidecode_.forget();
    summary();
    EXPECT_EQ(dmidecode_.asked(), "-t memory\n-t memory\n-t memory\n");
    dmidecode_.forget();
    summary();
    summary();
    EXPECT_EQ(dmidecode_.asked(), "");
    use(kQv);
    summary();
    EXPECT_EQ(dmidecode_.asked(), "-t memory\n-t memory\n-t memory\n");
}

TEST_F(Summary, AsksForSpeedThenTypeThenWidth)
{
    dmidecode_.answer(1, "\tConfigured Memory Speed: 1 MT/s\n" + memory_of("8", "DDR4"));
    dmidecode_.answer(2, "\tConfigured Memory Speed: 2 MT/s\n" + memory_of("16", "DDR5"));
    dmidecode_.answer(3, "\tConfigured Memory Speed: 3 MT/s\n" + memory_of("24", "DDR4"));
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 504, 1, 505, 0, 0, 506, 16, 5, 24}));
}

TEST_F(Summary, TheNodesAreOfTheCurrentAdapterAndChipAndCardOfTheSlot)
{
    set_file(kTwin, "Device ID : 2030\nMax Display Port : 2\nSupport Display Type : DVI\n");
    record_.chip_id_idx = kTwin;
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 504, 3200, 505, 2, 2, 506, 16, 5, 72}));
}

TEST_F(Summary, TwoAdaptersOfAChipShareWhatTheFirstWasFoundToHave)
{
    set_file(kTwin, "Device ID : 2030\nMax Display Port : 2\nSupport Display Type : DVI\n");
    summary();
    use(kTwin);
    EXPECT_EQ(summary(), (SummaryWords{701, 702, 703, 504, 3200, 705, 0, 0, 506, 16, 5, 72}));
    record_.header.drm_card_idx[kTwin] = 5;
    EXPECT_EQ(summary(), (SummaryWords{701, 702, 703, 504, 3200, 705, 0, 0, 506, 16, 5, 72}));
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(Summary, AnotherChipIsReadAnewAndSoIsTheFirstAfterIt)
{
    set_file(kQv, "Device ID : 2030\nMax Display Port : 2\nSupport Display Type : DVI\n");
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 504, 3200, 505, 2, 2, 506, 16, 5, 72}));
    use(kNimba);
    EXPECT_EQ(summary(),
              (SummaryWords{301, 302, 303, 304, 606, 305, 0, 0, 306, 8, kPoison, kPoison}));
    use(kTwin);
    dmidecode_.answer("\tConfigured Memory Speed: 800 MT/s\n" + memory_of("16", "DDR4"));
    EXPECT_EQ(summary(), (SummaryWords{701, 702, 703, 704, 800, 705, 0, 0, 706, 4, 4, 16}));
}

TEST_F(Summary, NothingOfAnotherChipIsLeftWhereAChipTellsNothing)
{
    set_file(kQv, "Device ID : 2030\nMax Display Port : 2\nSupport Display Type : DVI\n");
    summary();
    use(kTwin);
    chip_id() = DEVICE_ID_QV_M20;
    record_.gpu_infos[kTwin].jw_info_dir_fd = -1;
    hide_link_width(kTwin);
    dmidecode_.answer("");
    EXPECT_EQ(summary(), (SummaryWords{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 4, 0}));
    EXPECT_EQ(messages_, (Texts{"cached_current_link_width: 0x0\n",
                                "cached_display_port_number: 0x0, "
                                "cached_support_disp_port_type: 0x0\n"}));
}

TEST_F(Summary, IsKeptWhenTheLibraryStopsAndStarts)
{
    summary();
    exit(kQv);
    set_node(kQv, "fb_size", "9\n");
    set_link_width(kQv, "2\n");
    use(kQv);
    EXPECT_EQ(summary(), words_of_qv_);
    EXPECT_EQ(messages_, Texts{});
}

TEST_F(Summary, OfAnEmptySlotIsReadAtTheFirstCallAndKept)
{
    chip_id() = 0;
    set_file(kQv, "Device ID : 0\nMax Display Port : 2\nSupport Display Type : DVI\n");
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 504, 3200, 505, 2, 2, 506, 16, 5, 72}));
    dmidecode_.forget();
    set_node(kQv, "fb_size", "9\n");
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 504, 3200, 505, 2, 2, 506, 16, 5, 72}));
    EXPECT_EQ(dmidecode_.asked(), "");
}

// Nothing is kept for this number at load.
TEST_F(Summary, OfAChipIdOfAllOnesKeepsNothingAtTheFirstCall)
{
    chip_id() = 0xFFFFFFFF;
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 0, 0, 505, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(messages_, Texts{});
    EXPECT_EQ(dmidecode_.asked(), "");
}

TEST_F(Summary, IsKeptApartFromTheExtendedOne)
{
    set_file(kQv,
             "Device ID : 2030\nMax Display Port : 2\nSupport Display Type : DVI\n"
             "Pixel Fillrate : 7\n");
    const SummaryWords words{501, 502, 503, 504, 3200, 505, 2, 2, 506, 16, 5, 72};
    EXPECT_EQ(ext2().pixel_fillrate, 7U);
    EXPECT_EQ(summary(), words);
    chip_id() = DEVICE_ID_QV_M20;
    set_file(kQv, "Pixel Fillrate : 8\n");
    EXPECT_EQ(ext2().pixel_fillrate, 8U);
    chip_id() = DEVICE_ID_QV_M30;
    EXPECT_EQ(summary(), words);
    chip_id() = DEVICE_ID_QV_M20;
    set_file(kQv, "Pixel Fillrate : 9\n");
    EXPECT_EQ(ext2().pixel_fillrate, 8U);
}

TEST_F(Summary, OfUnreadableNodesIsZero)
{
    record_.gpu_infos[kQv].jw_info_dir_fd = -1;
    EXPECT_EQ(summary(), (SummaryWords{0, 0, 0, 0, 3200, 0, 0, 0, 0, 16, 5, 72}));
}

TEST_F(Summary, OfNodesWithoutANumberIsZero)
{
    for (const char* name : {"eclk", "vclk", "mclk", "fb_size", "coreclk", "miu_channel_num"}) {
        set_node(kQv, name, "none\n");
    }
    EXPECT_EQ(summary(), (SummaryWords{0, 0, 0, 0, 3200, 0, 0, 0, 0, 16, 5, 72}));
}

struct Speed {
    std::string text;
    std::uint32_t speed;
};

TEST_F(Summary, TheSpeedIsThatOfTheFirstConfiguredModule)
{
    const std::string line = "Configured MT/s" + std::string(979, ' ') + '\n';
    const std::vector<Speed> speeds{
        {"\tConfigured Memory Speed: 3200 MT/s\n", 3200},
        {"Configured Memory Speed: 3200 MT/s", 3200},
        {"\tConfigured Memory Speed: 2133 MT/s\n\tConfigured Memory Speed: 1866 MT/s\n", 2133},
        {"\tSpeed: 3600 MT/s\n\tMemory Speed: 3 MT/s\n\tConfigured Memory Speed: 5 MT/s\n", 5},
        {"\tConfigured Memory Speed: 3200 MHz\n\tConfigured Memory Speed: 2400 MT/s\n", 2400},
        {"\tConfigured Memory Speed: Unknown MT/s\n\tConfigured Memory Speed: 2400 MT/s\n", 0},
        {"Memory Speed: 77 MT/s Configured\n", 77},
        {"\tConfigured Memory Speed: Unknown\n", 0},
        {"\tConfigured Clock Speed: 2400 MT/s\n", 0},
        {"\tConfigured memory speed: 2400 MT/s\n", 0},
        {"Configured MT/s\n", 0},
        {"", 0},
        // 1023 bytes are read, of which the last three are of the number.
        {line + "Configured Memory Speed: 4321 MT/s\n", 432},
    };
    for (const Speed& speed : speeds) {
        forget_summary();
        dmidecode_.answer(speed.text);
        EXPECT_EQ(summary()[4], speed.speed) << speed.text;
    }
}

TEST_F(Summary, WithoutDmidecodeTheSystemsMemoryIsUnknown)
{
    const TempDirectory commands;
    std::filesystem::create_symlink("/bin/grep", commands.path() / "grep");
    const ScopedVariable path{"PATH", commands.path().string()};
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 504, 0, 505, 0, 0, 506, 16, 4, 0}));
}

TEST_F(Summary, WithoutDescriptorsNothingIsToldButThatNoCommandRan)
{
    adapter_summary record;
    std::memset(&record, 0xA5, sizeof record);
    auto& get = library_.symbol<decltype(get_adapter_summary)>("get_adapter_summary");
    std::int32_t result = -1;
    const std::string output = stdout_of([&] {
        const NoMoreDescriptors none;
        result = get(&record, &record_);
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(output,
              "Failed to run command\nFailed to run command\nFailed to run command\n"
              "Error opening drm directory\n");
    EXPECT_EQ(std::bit_cast<SummaryWords>(record),
              (SummaryWords{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 1}));
    // What was not found is kept.
    EXPECT_EQ(summary(), (SummaryWords{501, 502, 503, 0, 0, 505, 0, 0, 0, 0, 1, 1}));
}

struct Width {
    std::string text;
    std::uint32_t width;
    const char* message;
};

TEST_F(Summary, TheLinkWidthIsADecimalNumberInTheFirst64Bytes)
{
    const std::vector<Width> widths{
        {"1\n", 1, "cached_current_link_width: 0x1\n"},
        {"16\n", 16, "cached_current_link_width: 0x10\n"},
        {"32", 32, "cached_current_link_width: 0x20\n"},
        {"010\n", 10, "cached_current_link_width: 0xa\n"},
        {"0x10\n", 0, "cached_current_link_width: 0x0\n"},
        {"Unknown\n", 0, "cached_current_link_width: 0x0\n"},
        {"", 0, "cached_current_link_width: 0x0\n"},
        {"-1\n", 0xFFFFFFFF, "cached_current_link_width: 0xffffffff\n"},
        {std::string(62, ' ') + "16\n", 16, "cached_current_link_width: 0x10\n"},
        {std::string(63, ' ') + "16\n", 1, "cached_current_link_width: 0x1\n"},
        {std::string(64, ' ') + "16\n", 0, "cached_current_link_width: 0x0\n"},
    };
    for (const Width& width : widths) {
        forget_summary();
        set_link_width(kQv, width.text);
        EXPECT_EQ(summary()[9], width.width) << width.text;
        ASSERT_EQ(messages_.size(), 2U);
        EXPECT_EQ(messages_[0], width.message);
    }
    forget_summary();
    hide_link_width(kQv);
    EXPECT_EQ(summary()[9], 0U);
}

}  // namespace
}  // namespace nimba::test
