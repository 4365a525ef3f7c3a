// SPDX-License-Identifier: MIT
// Three adapters whose nodes, files and connectors a test makes up, and a `dmidecode` that it makes
// up as well. The machine is summary-adapters.
#pragma once

#include "machine_fixture.hpp"
#include "summary_journal.hpp"
#include "support/captured_stdout.hpp"
#include "support/environment.hpp"
#include "support/temp_directory.hpp"

#include <array>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <utility>

namespace nimba::test {

using SummaryWords = std::array<std::uint32_t, 12>;
using Ext2Words = std::array<std::uint32_t, 58>;

inline constexpr std::uint32_t kPoison = 0xA5A5A5A5;
inline constexpr std::uint32_t kNotTold = 0xFFFFFFFF;
inline constexpr std::uint32_t kOtherChip = 0x7777;  // one that nobody knows

// The slots of the three adapters. The twin is of the same chip as the QV one.
inline constexpr int kNimba = 0;
inline constexpr int kQv = 1;
inline constexpr int kTwin = 2;

inline Ext2Words words_of(const adapter_summary_ext2& record)
{
    return std::bit_cast<Ext2Words>(record);
}

// What get_adapter_summary_ext2 leaves when there is no file of the driver.
inline adapter_summary_ext2 nothing_told()
{
    adapter_summary_ext2 record{};
    record.gpu_memory_usage = kNotTold;
    record.gpu_use_rate_3d = kNotTold;
    record.gpu_use_rate_video = kNotTold;
    record.gpu_use_rate_vpp = kNotTold;
    record.realtime_temperature = kNotTold;
    return record;
}

// `head`, what no key is in, and `tail`, which ends with byte `size`.
inline std::string text_ending_at(std::size_t size, const std::string& head,
                                  const std::string& tail)
{
    return head + std::string(size - head.size() - tail.size() - 1, '.') + '\n' + tail;
}

// A directory with a program `dmidecode` that stands before the system's.
class MadeUpDmidecode final {
  public:
    MadeUpDmidecode()
    {
        std::filesystem::create_directory(runs());
        const std::string program = directory_.write(
            "dmidecode", "#!/bin/sh\nhere=" + directory_.path().string() +
                             "\n: >> \"$here/runs/dmidecode\"\n"
                             "echo \"$*\" >> \"$here/asked\"\n"
                             "cat \"$here/answer-$(grep -c '' \"$here/asked\")\" 2>/dev/null || "
                             "cat \"$here/answer\"\n");
        std::filesystem::permissions(program, std::filesystem::perms::owner_all);
        forget();
    }

    // Every run writes this text.
    void answer(std::string_view text) const { directory_.write("answer", text); }
    // The run of this number since the last forget(), from 1 on, writes this text.
    void answer(int run, std::string_view text) const
    {
        directory_.write("answer-" + std::to_string(run), text);
    }
    // The arguments of each run since the last forget(), a line for each.
    std::string asked() const { return directory_.read("asked"); }
    void forget() const { directory_.write("asked", ""); }
    // A directory whose entry "dmidecode" each run opens once.
    std::filesystem::path runs() const { return directory_.path() / "runs"; }

  private:
    TempDirectory directory_;
    ScopedVariable path_{"PATH", directory_.path().string() + ":" + std::getenv("PATH")};
};

// Calls the entry points for the record's slot. What it keeps is that of the last call.
class SummaryCalls : public MachineTest {
  protected:
    ~SummaryCalls() override { exit(0); }

    // Makes the slot the current one.
    void use(int slot)
    {
        EXPECT_GT(init(slot), 0);
        take_messages();
    }

    SummaryWords summary(const char* function = "get_adapter_summary")
    {
        adapter_summary record;
        call<decltype(get_adapter_summary)>(function, record);
        return std::bit_cast<SummaryWords>(record);
    }

    adapter_summary_ext2 ext2(const char* function = "get_adapter_summary_ext2")
    {
        adapter_summary_ext2 record;
        call<decltype(get_adapter_summary_ext2)>(function, record);
        return record;
    }

    std::uint32_t& chip_id() { return record_.header.chip_id[record_.chip_id_idx]; }

    // Has the library keep what it finds for another chip.
    void forget_summary()
    {
        const std::uint32_t chip = std::exchange(chip_id(), kOtherChip);
        summary();
        chip_id() = chip;
    }
    void forget_ext2()
    {
        const std::uint32_t chip = std::exchange(chip_id(), kOtherChip);
        ext2();
        chip_id() = chip;
    }

  private:
    template <class Function, class Record>
    void call(const char* function, Record& record)
    {
        std::memset(&record, 0xA5, sizeof record);
        auto& get = library_.symbol<Function>(function);
        std::int32_t result = -1;
        take_messages();
        output_ = stdout_of([&] { result = get(&record, &record_); });
        EXPECT_EQ(result, 0);
        messages_ = take_messages();
    }
};

class SummaryTest : public SummaryCalls {
  protected:
    struct Place {
        int card;
        const char* bus_id;
        const char* info;
        const char* link_width;
    };
    static constexpr std::array<Place, 3> kPlaces{{{3, "0000:03:00.0", "jw_info", "8\n"},
                                                   {5, "0000:05:00.0", "qv_info", "16\n"},
                                                   {7, "0000:07:00.0", "qv_info", "4\n"}}};

    static const Place& place(int slot) { return kPlaces.at(static_cast<std::size_t>(slot)); }

    SummaryTest()
    {
        discover();
        EXPECT_EQ(record_.header.chip_num, 3);
        for (int slot : {kNimba, kQv, kTwin}) {
            const int hundreds = place(slot).card * 100;
            const std::array names{"eclk", "vclk", "mclk", "fb_size", "coreclk", "miu_channel_num"};
            for (int i = 0; const char* name : names) {
                set_node(slot, name, std::to_string(hundreds + ++i) + "\n");
            }
            hide_file(slot);
            set_link_width(slot, place(slot).link_width);
            set_connectors(slot, {});
        }
        dmidecode_.answer("");
        use(kQv);
    }

    // The directory or file of the machine, by a path that is none of the machine's.
    static std::filesystem::path behind(const std::string& path)
    {
        return std::getenv("UMOCKDEV_DIR") + path;
    }
    static std::string pci_directory(int slot)
    {
        return std::string{"/sys/bus/pci/devices/"} + place(slot).bus_id;
    }
    static std::string info_directory(int slot)
    {
        return pci_directory(slot) + "/" + place(slot).info;
    }
    static std::string drm_directory(int slot)
    {
        return pci_directory(slot) + "/drm/card" + std::to_string(place(slot).card);
    }

    // The text of a node in the info directory.
    static void set_node(int slot, const char* name, std::string_view text)
    {
        write_file(info_directory(slot) + "/" + name, text);
    }
    // The text of the driver's file in /proc, which takes the place of whatever is there.
    static void set_file(int slot, std::string_view text)
    {
        hide_file(slot);
        write_file(file(slot), text);
    }
    static void hide_file(int slot) { std::filesystem::remove(file(slot)); }
    // The file can be opened then, but not be read.
    static void make_file_a_directory(int slot)
    {
        hide_file(slot);
        std::filesystem::create_directory(file(slot));
    }

    static void set_link_width(int slot, std::string_view text)
    {
        write_file(behind(pci_directory(slot) + "/current_link_width"), text);
    }
    static void hide_link_width(int slot)
    {
        std::filesystem::remove(behind(pci_directory(slot) + "/current_link_width"));
    }

    // The connectors in the directory of the primary node, by the whole names of their entries.
    static void set_connectors(int slot, const Texts& names)
    {
        const std::filesystem::path directory = behind(drm_directory(slot));
        for (const auto& entry : std::filesystem::directory_iterator{directory}) {
            if (std::filesystem::exists(entry.path() / "connector")) {
                std::filesystem::remove_all(entry.path());
            }
        }
        for (const std::string& name : names) {
            std::filesystem::create_directory(directory / name);
            write_file(directory / name / "connector", "");
        }
    }

    // From now on sees what is opened to describe the adapter in the slot.
    void watch(int slot)
    {
        journal_.watch(behind(info_directory(slot)));
        journal_.watch(behind(pci_directory(slot)));
        journal_.watch(behind(pci_directory(slot) + "/drm"));
        journal_.watch(behind("/proc"));
        journal_.watch(dmidecode_.runs());
    }

    static std::filesystem::path file(int slot)
    {
        return behind("/proc/gpuinfo_" + std::to_string(place(slot).card));
    }

    MadeUpDmidecode dmidecode_;
    OpenJournal journal_;
};

}  // namespace nimba::test
