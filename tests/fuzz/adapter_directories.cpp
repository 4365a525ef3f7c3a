// SPDX-License-Identifier: MIT
// The names in the directories of an adapter's PCI device: the connectors that DRM lists, and the
// entries of hwmon; with the text of its link's width. An input has the connectors, a line for
// each, those of hwmon behind what they are, "d" a directory, "l" a link to one, else a file, and
// the text.
#include "core/adapter_sysfs.hpp"
#include "core/chip_table.hpp"
#include "core/handles.hpp"
#include "fuzz/support/check.hpp"
#include "fuzz/support/entry_names.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/target.hpp"
#include "nimba_mgmt_interface.h"
#include "support/temp_directory.hpp"

#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::fuzz {
namespace {

constexpr std::string_view kBusId = "0000:01:00.0";
constexpr std::size_t kMostEntries = 16;
constexpr std::array kCards{0, 12};
constexpr int kCardWithoutDirectory = 7;

// The entries of a directory by their names. Changing them costs what differs.
class NamedEntries final {
  public:
    using Kinds = std::map<std::string, char>;

    explicit NamedEntries(std::filesystem::path directory) : directory_{std::move(directory)}
    {
        std::filesystem::create_directories(directory_);
    }

    void show(const Kinds& entries)
    {
        for (const auto& [name, kind] : entries_) {
            const auto same = entries.find(name);
            if (same == entries.end() || same->second != kind) {
                std::filesystem::remove(directory_ / name);
            }
        }
        for (const auto& [name, kind] : entries) {
            const auto same = entries_.find(name);
            if (same == entries_.end() || same->second != kind) {
                make(directory_ / name, kind);
            }
        }
        entries_ = entries;
    }

    [[nodiscard]] const Kinds& entries() const { return entries_; }
    [[nodiscard]] const std::filesystem::path& directory() const { return directory_; }

  private:
    void make(const std::filesystem::path& path, char kind) const
    {
        if (kind == 'd') {
            std::filesystem::create_directory(path);
        } else if (kind == 'l') {
            std::filesystem::create_directory_symlink(directory_, path);
        } else {
            std::ofstream{path};
        }
    }

    std::filesystem::path directory_;
    Kinds entries_;
};

// The directory of the PCI device, whatever of kCards the card's number is.
struct Device {
    Device()
    {
        std::filesystem::create_directory(path() / "drm");
        for (const int card : kCards) {
            std::filesystem::create_directory_symlink(
                connectors.directory(), path() / "drm" / ("card" + std::to_string(card)));
            redirect("/proc/gpuinfo_" + std::to_string(card), "");
        }
        redirect("/proc/gpuinfo_" + std::to_string(kCardWithoutDirectory), "");
        std::filesystem::create_directory(path() / "qv_info");
        std::filesystem::create_symlink(link_width.path(), path() / "current_link_width");
        redirect("/sys/bus/pci/devices/" + std::string{kBusId}, path());
    }

    [[nodiscard]] const std::filesystem::path& path() const { return directory.path(); }

    test::TempDirectory directory;
    NamedEntries connectors{directory.path() / "connectors"};
    NamedEntries monitors{directory.path() / "hwmon"};
    NodeFile link_width;
};

std::vector<std::string_view> lines_of(std::string_view text)
{
    std::vector<std::string_view> lines;
    while (!text.empty() && lines.size() < kMostEntries) {
        lines.push_back(take_line(text));
    }
    return lines;
}

NamedEntries::Kinds files_named(std::string_view text)
{
    NamedEntries::Kinds kinds;
    for (const std::string& name : names_of(lines_of(text))) {
        kinds[name] = 'f';
    }
    return kinds;
}

NamedEntries::Kinds entries_named(std::string_view text)
{
    std::vector<std::string_view> lines = lines_of(text);
    std::vector<char> kinds;
    kinds.reserve(lines.size());
    for (std::string_view& line : lines) {
        kinds.push_back(static_cast<char>(take_byte(line)));
    }
    const std::vector<std::string> names = names_of(lines);
    NamedEntries::Kinds entries;
    for (std::size_t entry = 0; entry < names.size(); ++entry) {
        entries[names[entry]] = kinds[entry];
    }
    return entries;
}

// Where the descriptor leads is what stands at the path.
bool leads_to(int descriptor, const std::filesystem::path& path)
{
    struct stat one {};
    struct stat other {};
    return ::fstat(descriptor, &one) == 0 && ::stat(path.c_str(), &other) == 0 &&
           one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

// The first directory in the order in which the system lists them; empty for none.
std::filesystem::path first_monitor(const NamedEntries& monitors)
{
    for (const auto& found : std::filesystem::directory_iterator{monitors.directory()}) {
        const std::string name = found.path().filename();
        if (name.starts_with("hwmon") && monitors.entries().at(name) == 'd') {
            return found.path();
        }
    }
    return {};
}

// Opens and closes the adapter's directories.
void check_directories(const Device& device)
{
    gpu_infos infos{};
    kBusId.copy(infos.busid, kBusId.size());
    infos.hwmon_dir_fd = -1;
    infos.jw_info_dir_fd = -1;
    open_sysfs_directories(infos, *find_family(QV_VENDOR_ID));
    const Descriptor pci{infos.pci_dir_fd};
    const Descriptor hwmon{infos.hwmon_dir_fd};
    const Descriptor info{infos.jw_info_dir_fd};
    check(leads_to(pci.get(), device.path()), "the device's directory is opened");
    check(leads_to(info.get(), device.path() / "qv_info"), "the driver's directory is opened");
    const std::filesystem::path expected = first_monitor(device.monitors);
    check(expected.empty() ? hwmon.get() == -1 : leads_to(hwmon.get(), expected),
          "the first directory of hwmon is opened, or none");
}

struct Outputs {
    uint32_t count = 0;
    uint32_t types = 0;
};

Outputs outputs_of(const NamedEntries::Kinds& connectors, int card)
{
    constexpr std::array<std::pair<const char*, uint32_t>, 5> kTypes{
        {{"VGA", 1}, {"DVI", 2}, {"HDMI", 4}, {"DP", 8}, {"EDP", 16}}};
    Outputs outputs;
    for (const auto& [name, kind] : connectors) {
        for (const auto& [type, bit] : kTypes) {
            const std::string key = "card" + std::to_string(card) + "-" + type + "-";
            if (name.find(key) != std::string::npos) {
                ++outputs.count;
                outputs.types |= bit;
            }
        }
    }
    return outputs;
}

uint32_t width_of(const std::string& text)
{
    int width = 0;
    // NOLINTNEXTLINE(cert-err34-c): scanf's rules are what the text is defined by
    std::sscanf(up_to_nul(text.substr(0, 64)).c_str(), "%d", &width);
    return static_cast<uint32_t>(width);
}

// What lasts of a chip is kept; another chip's is read anew.
void check_summary(const Device& device, int card)
{
    static find_adapter adapters{};
    uint32_t& chip = adapters.header.chip_id[0];
    chip = chip == DEVICE_ID_QV_M20 ? DEVICE_ID_QV_M30 : DEVICE_ID_QV_M20;
    adapters.header.drm_card_idx[0] = card;
    adapters.gpu_infos[0].jw_info_dir_fd = -1;
    adapters.gpu_infos[0].hwmon_dir_fd = -1;
    kBusId.copy(adapters.gpu_infos[0].busid, kBusId.size());
    gpuinfo_select_new_chip(&adapters);
    adapter_summary summary{};
    get_adapter_summary(&summary, &adapters);
    check(summary.pcie_link_width == width_of(device.link_width.text()),
          "a width is that of its node");
    const Outputs outputs =
        card == kCardWithoutDirectory ? Outputs{} : outputs_of(device.connectors.entries(), card);
    check(summary.display_port_num == outputs.count && summary.display_type_mask == outputs.types,
          "outputs are those that the names tell");
}

}  // namespace

void try_input(std::string_view input)
{
    static Device device;
    const uint8_t control = take_byte(input);
    const std::vector<std::string_view> parts = split_into(input, 3);
    device.connectors.show(files_named(parts[0]));
    device.monitors.show(entries_named(parts[1]));
    device.link_width.set(parts[2]);
    check_directories(device);
    check_summary(device, (control & 8U) != 0 ? kCardWithoutDirectory : kCards[control & 1U]);
}

}  // namespace nimba::fuzz
