// SPDX-License-Identifier: MIT
#include "lifecycle_fixture.hpp"

#include <array>
#include <ostream>
#include <vector>

namespace nimba::test {
namespace {

struct Chip {
    std::uint32_t id;
    const char* first;
    const char* fallback;  // null: none
    const char* debug_path;
    const char* name;
};

void PrintTo(const Chip& row, std::ostream* out)
{
    *out << row.name;
}

constexpr Chip kChips[] = {
    {DEVICE_ID_NIMBA_K1, kNimbaLibrary, nullptr, "/sys/kernel/debug/dri/7/jw", "NimbaK1"},
    {DEVICE_ID_NIMBA_K2, kNimbaLibrary, nullptr, "/sys/kernel/debug/dri/7/jw", "NimbaK2"},
    {DEVICE_ID_NIMBA_K3, kNimbaLibrary, nullptr, "/sys/kernel/debug/dri/7/jw", "NimbaK3"},
    {DEVICE_ID_NIMBA_K3T, kNimbaLibrary, nullptr, "/sys/kernel/debug/dri/7/jw", "NimbaK3t"},
    {DEVICE_ID_NIMBA_K5, kNimbaLibrary, nullptr, "/sys/kernel/debug/dri/7/jw", "NimbaK5"},
    {DEVICE_ID_NIMBA_K6, kNimbaLibrary, nullptr, "/sys/kernel/debug/dri/7/jw", "NimbaK6"},
    {DEVICE_ID_QV_M30, kMv9Library, kMv9Fallback, "/sys/kernel/debug/dri/7/qv", "QvM30"},
    {DEVICE_ID_QV_M40, kMv9Library, kMv9Fallback, "/sys/kernel/debug/dri/7/qv", "QvM40"},
    {DEVICE_ID_QV_M20, kQvLibrary, nullptr, "/sys/kernel/debug/dri/7/qv", "QvM20"},
};

constexpr std::array<const char*, 4> kLibraries{kNimbaLibrary, kMv9Library, kMv9Fallback,
                                                kQvLibrary};

class KernelInterfaceChoice : public LifecycleTest, public testing::WithParamInterface<Chip> {
  protected:
    KernelInterfaceChoice() { fill_slot(1, GetParam().id, 7); }

    // The loader looks for a library that is not in its first directory elsewhere.
    static void hide(const char* library)
    {
        if (library != nullptr) {
            install_garbage(library);
        }
    }
    void expect_started()
    {
        EXPECT_FALSE(visible_to_everyone("gfx_get_struct_size"));
        EXPECT_EQ(init(1), static_cast<std::int32_t>(GetParam().id));
        EXPECT_STREQ(debug_path(), GetParam().debug_path);
        EXPECT_EQ(usage(1), "1");
        EXPECT_NE(block(), nullptr);
        EXPECT_TRUE(visible_to_everyone("gfx_get_struct_size"));
        EXPECT_EQ(take_messages(),
                  (Texts{"gpuinfo_select_new_chip index: 1, name: Gpu1:Test \n", kStartMessage}));
    }
    void expect_no_library()
    {
        EXPECT_EQ(init(1), -1);
        EXPECT_EQ(take_messages(), (Texts{"gpuinfo_select_new_chip index: 1, name: Gpu1:Test \n",
                                          kStartMessage, "open libhwbridge module fail. \n "}));
        EXPECT_STREQ(debug_path(), GetParam().debug_path);
        EXPECT_EQ(usage(1), "1");
        EXPECT_EQ(block(), nullptr);
        EXPECT_EQ(global<std::int32_t>("__perf_event_fd"), 41);
    }
};

TEST_P(KernelInterfaceChoice, IsTheChipsFirstLibrary)
{
    for (const char* library : kLibraries) {
        install_stub("kernel_interface_gfx", library);
    }
    expect_started();
    for (const char* library : kLibraries) {
        EXPECT_EQ(in_process(library), library == std::string{GetParam().first}) << library;
    }
}

TEST_P(KernelInterfaceChoice, IsTheFallbackOnlyWhereThereIsOne)
{
    hide(GetParam().first);
    for (const char* library : kLibraries) {
        if (library != std::string{GetParam().first}) {
            install_stub("kernel_interface_gfx", library);
        }
    }
    if (GetParam().fallback == nullptr) {
        expect_no_library();
    } else {
        expect_started();
    }
    for (const char* library : kLibraries) {
        EXPECT_EQ(in_process(library),
                  GetParam().fallback != nullptr && library == std::string{GetParam().fallback})
            << library;
    }
}

TEST_P(KernelInterfaceChoice, FailsWithoutALibrary)
{
    hide(GetParam().first);
    hide(GetParam().fallback);
    for (const char* library : kLibraries) {
        if (library != std::string{GetParam().first} &&
            (GetParam().fallback == nullptr || library != std::string{GetParam().fallback})) {
            install_stub("kernel_interface_gfx", library);
        }
    }
    expect_no_library();
    for (const char* library : kLibraries) {
        EXPECT_FALSE(in_process(library)) << library;
    }
}

INSTANTIATE_TEST_SUITE_P(, KernelInterfaceChoice, testing::ValuesIn(kChips),
                         [](const testing::TestParamInfo<Chip>& row) { return row.param.name; });

struct UnknownChip {
    std::uint32_t id;
    const char* name;
};

void PrintTo(const UnknownChip& row, std::ostream* out)
{
    *out << row.name;
}

class UnknownChips : public LifecycleTest, public testing::WithParamInterface<UnknownChip> {};

TEST_P(UnknownChips, LoadNothingAndFail)
{
    for (const char* library : kLibraries) {
        install_stub("kernel_interface_gfx", library);
    }
    fill_slot(2, GetParam().id, 7);
    EXPECT_EQ(init(2), -1);
    EXPECT_EQ(take_messages(),
              (Texts{"gpuinfo_select_new_chip index: 2, name: Gpu2:Test \n", kStartMessage,
                     "invalidate chip id. \n ", "open libhwbridge module fail. \n "}));
    EXPECT_STREQ(debug_path(), "");
    EXPECT_EQ(usage(2), GetParam().id == 0 ? "?" : "1");
    EXPECT_EQ(block(), nullptr);
    EXPECT_EQ(global<std::int32_t>("__perf_event_fd"), 42);
    EXPECT_EQ(global<gpu_infos*>("pCurrent_gpu_infos"), &record_.gpu_infos[2]);
    EXPECT_STREQ(global<char[60]>("sys_bus_pci_devices_BUSID_path"),
                 "/sys/bus/pci/devices/9a02:01:00.0");
    for (const char* library : kLibraries) {
        EXPECT_FALSE(in_process(library)) << library;
    }
}

INSTANTIATE_TEST_SUITE_P(, UnknownChips,
                         testing::Values(UnknownChip{0, "Zero"},
                                         UnknownChip{0x2204, "AnotherVendorsGpu"},
                                         UnknownChip{0x7777, "OfTheProductsVendor"},
                                         UnknownChip{0x10000 + DEVICE_ID_NIMBA_K1, "WithMoreBits"},
                                         UnknownChip{0xFFFFFFFF, "AllBits"}),
                         [](const testing::TestParamInfo<UnknownChip>& row) {
                             return row.param.name;
                         });

}  // namespace
}  // namespace nimba::test
