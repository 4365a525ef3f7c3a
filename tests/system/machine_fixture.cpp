// SPDX-License-Identifier: MIT
#include "machine_fixture.hpp"

#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <fcntl.h>

#include <sys/stat.h>
#include <sys/vfs.h>

#include <algorithm>

namespace nimba::test {

bool is_open_on(int fd, const std::string& path)
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(fd, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

std::string machine_file(const std::string& path)
{
    return read_file(path);
}

void MachineTest::expect_adapter(int slot, const Adapter& adapter)
{
    const find_adapter_header& header = record_.header;
    EXPECT_EQ(header.chip_id[slot], adapter.chip_id);
    EXPECT_EQ(header.chip_name[slot], adapter.chip_name);
    EXPECT_EQ(header.IS_VA_driver[slot], adapter.is_va);
    EXPECT_EQ(header.drm_card_idx[slot], adapter.card);
    EXPECT_TRUE(is_open_on(header.drm_fd[slot], "/dev/dri/" + adapter.node));
    EXPECT_EQ(::fcntl(header.drm_fd[slot], F_GETFL) & O_ACCMODE, O_RDWR);

    const gpu_infos& infos = record_.gpu_infos[slot];
    const std::string pci = "/sys/bus/pci/devices/" + adapter.busid;
    EXPECT_EQ(infos.busid, adapter.busid);
    EXPECT_EQ(infos.vendor_id, adapter.vendor);
    std::vector<std::pair<int, std::string>> directories{{infos.pci_dir_fd, pci}};
    for (const auto& [fd, name] : {std::pair{infos.jw_info_dir_fd, adapter.info},
                                   std::pair{infos.hwmon_dir_fd, adapter.hwmon}}) {
        if (name.empty()) {
            EXPECT_EQ(fd, 0);
        } else {
            directories.emplace_back(fd, pci + "/" + name);
        }
    }
    for (const auto& [fd, path] : directories) {
        EXPECT_TRUE(is_open_on(fd, path)) << path;
        EXPECT_EQ(::fcntl(fd, F_GETFL) & O_ACCMODE, O_RDONLY) << path;
    }

    EXPECT_EQ(cache().vendor_id[slot], adapter.vendor);
    EXPECT_EQ(cache().luid[slot].low, adapter.luid_low);
    EXPECT_EQ(cache().luid[slot].high, adapter.luid_high);
}

void MachineTest::expect_foreign(const ForeignGpu& gpu)
{
    EXPECT_EQ(record_.header.chip_id[2], gpu.device);
    EXPECT_EQ(record_.header.chip_name[2], gpu.chip_name);
    EXPECT_EQ(record_.header.drm_card_idx[2], gpu.card);
    EXPECT_EQ(record_.header.drm_fd[2], 0);
    EXPECT_STREQ(record_.gpu_infos[2].busid, "");
    EXPECT_EQ(cache().vendor_id[2], gpu.vendor);
    EXPECT_EQ(cache().luid[2].low, gpu.luid_low);
    EXPECT_EQ(cache().luid[2].high, gpu.luid_high);
    EXPECT_EQ(std::ranges::count_if(
                  opened_,
                  [&](const auto& file) { return is_open_on(file.first, "/dev/dri/" + gpu.node); }),
              1);
}

void MachineTest::expect_found(const std::vector<Adapter>& adapters,
                               const std::vector<ForeignGpu>& foreign)
{
    discover();
    EXPECT_EQ(result_, 0);
    EXPECT_EQ(control_enable(), 1);
    ASSERT_EQ(record_.header.chip_num, static_cast<std::int32_t>(adapters.size()));
    EXPECT_EQ(cache().other_vendor_chip_num, static_cast<std::int32_t>(foreign.size()));
    std::size_t files = foreign.size();
    for (std::size_t slot = 0; slot < adapters.size(); ++slot) {
        expect_adapter(static_cast<int>(slot), adapters[slot]);
        files +=
            2U + (adapters[slot].info.empty() ? 0U : 1U) + (adapters[slot].hwmon.empty() ? 0U : 1U);
    }
    for (const ForeignGpu& gpu : foreign) {
        expect_foreign(gpu);
    }
    EXPECT_EQ(opened_.size(), files);
    for (const auto& [fd, file] : opened_) {
        EXPECT_TRUE(closes_on_exec(fd)) << file;
    }
}

bool MachineTest::drivers_are_live() const
{
    constexpr long kFuse = 0x65735546;
    struct statfs system {};
    return fstatfs(record_.gpu_infos[0].jw_info_dir_fd, &system) == 0 && system.f_type == kFuse;
}

std::int32_t MachineTest::init(int slot)
{
    record_.chip_id_idx = slot;
    take_messages();
    return library_.symbol<decltype(gfx_global_init)>("gfx_global_init")(&record_);
}

std::int32_t MachineTest::exit(int slot)
{
    take_messages();
    return library_.symbol<decltype(gfx_global_exit)>("gfx_global_exit")(slot);
}

void MachineTest::expect_life(int slot, std::uint32_t chip_id, const std::string& usage_node,
                              const std::string& debug_directory)
{
    const std::string slot_text = std::to_string(slot);
    const OpenFiles files = open_files();
    EXPECT_EQ(machine_file(usage_node), "0\n");
    EXPECT_EQ(init(slot), static_cast<std::int32_t>(chip_id));
    EXPECT_EQ(take_messages(), (Texts{"gpuinfo_select_new_chip index: " + slot_text +
                                          ", name: " + record_.header.chip_name[slot] + " \n",
                                      "initGPUPreference_config.\n "}));
    EXPECT_EQ(machine_file(usage_node), "1\n");
    EXPECT_EQ(debug_path(), debug_directory);
    EXPECT_EQ(library_.symbol<std::int32_t>("__perf_event_fd"), record_.header.drm_fd[slot]);
    EXPECT_EQ(library_.symbol<gpu_infos*>("pCurrent_gpu_infos"), &record_.gpu_infos[slot]);
    EXPECT_NE(block(), nullptr);

    EXPECT_EQ(exit(slot), 0);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: " + slot_text + " \n",
                                      "uninitGPUPreference_config.\n "}));
    EXPECT_EQ(machine_file(usage_node), "0\n");
    EXPECT_EQ(block(), nullptr);
    EXPECT_EQ(open_files(), files);
}

void MachineTest::expect_no_life(int slot, const Texts& messages)
{
    EXPECT_EQ(init(slot), -1);
    Texts expected{"gpuinfo_select_new_chip index: " + std::to_string(slot) +
                       ", name: " + record_.header.chip_name[slot] + " \n",
                   "initGPUPreference_config.\n "};
    expected.insert(expected.end(), messages.begin(), messages.end());
    EXPECT_EQ(take_messages(), expected);
    EXPECT_EQ(block(), nullptr);
}

}  // namespace nimba::test
