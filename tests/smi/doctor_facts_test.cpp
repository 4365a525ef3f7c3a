// SPDX-License-Identifier: MIT
#include "ordinary_user.hpp"
#include "support/temp_directory.hpp"
#include "tools/smi/worker/doctor_machine.hpp"
#include "tools/smi/worker/doctor_user.hpp"
#include "tools/smi/worker/loaded_file.hpp"

#include <dlfcn.h>

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>
#include <filesystem>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

class DoctorFacts : public testing::Test {
  protected:
    [[nodiscard]] std::string path(const char* name) const { return directory_.path() / name; }

    void add_pci_device(const std::string& bus_id, const char* vendor, const char* device) const
    {
        fs::create_directory(directory_.path() / bus_id);
        test::write_file(directory_.path() / bus_id / "vendor", vendor);
        test::write_file(directory_.path() / bus_id / "device", device);
    }

    // Of a home directory with this text in its preference file.
    [[nodiscard]] PreferenceFacts preferences(const char* text) const
    {
        fs::create_directories(directory_.path() / ".local/share");
        test::write_file(file(), text);
        return preference_facts(directory_.path());
    }

    [[nodiscard]] std::string file() const { return path(".local/share/wmt_gfx_util.ini"); }

    test::TempDirectory directory_;
};

TEST_F(DoctorFacts, HaveTheProductsPciDevicesInOrder)
{
    add_pci_device("0000:02:00.0", "0x5156\n", "0x2030\n");
    add_pci_device("0000:00:02.0", "0x8086\n", "0x4680\n");
    add_pci_device("0000:01:00.0", "0x4e4d\n", "0x1001\n");
    fs::create_directory(directory_.path() / "0000:01:00.0/drm");
    fs::create_directory_symlink("/drivers/nimba", directory_.path() / "0000:01:00.0/driver");
    int error = -1;
    const std::vector<PciAdapter> expected{{"0000:01:00.0", 0x1001, "nimba", true},
                                           {"0000:02:00.0", 0x2030, "", false}};
    EXPECT_EQ(product_pci_devices(error, directory_.path()), expected);
    EXPECT_EQ(error, 0);
}

TEST_F(DoctorFacts, TellWhyPciDevicesCannotBeListed)
{
    int error = 0;
    EXPECT_TRUE(product_pci_devices(error, path("absent")).empty());
    EXPECT_EQ(error, ENOENT);
}

TEST_F(DoctorFacts, TellAnEmptyDebugfsFromAMountedOne)
{
    EXPECT_EQ(debugfs_facts(directory_.path()), (DebugfsFacts{0, true}));
    fs::create_directory(directory_.path() / "dri");
    EXPECT_EQ(debugfs_facts(directory_.path()), (DebugfsFacts{0, false}));
    EXPECT_EQ(debugfs_facts(path("absent")), (DebugfsFacts{ENOENT, false}));
}

TEST_F(DoctorFacts, FindACommandThatCanBeRun)
{
    fs::create_directory(directory_.path() / "a");
    fs::create_directory(directory_.path() / "b");
    fs::create_directory(directory_.path() / "a/tool");
    test::write_file(directory_.path() / "b/tool", "#!/bin/sh\n");
    const std::string on = path("a") + ":" + path("b");
    EXPECT_EQ(command_on(on, "tool"), "");
    fs::permissions(directory_.path() / "b/tool", fs::perms::owner_all);
    EXPECT_EQ(command_on(on, "tool"), path("b") + "/tool");
    EXPECT_EQ(command_on("", "tool"), "");
}

TEST_F(DoctorFacts, LoadTheFirstFileThatCanBeLoaded)
{
    const LoadedFile file =
        load_first(std::array{"libno-such-library.so.9", "libc.so.6"}, RTLD_LAZY);
    EXPECT_EQ(file.name, "libc.so.6");
    EXPECT_EQ(file.errors.size(), 1U);
    EXPECT_TRUE(fs::path(file.path).is_absolute());
    EXPECT_NE(file.symbol("puts"), nullptr);
    EXPECT_EQ(file.symbol("no_such_entry_point"), nullptr);
}

TEST_F(DoctorFacts, TellWhyNoFileCanBeLoaded)
{
    const LoadedFile file = load_first(std::array{"libno-such-library.so.9"}, RTLD_LAZY);
    EXPECT_EQ(file.name, "");
    EXPECT_EQ(file.symbol("puts"), nullptr);
    EXPECT_EQ(file.errors,
              std::vector<std::string>{"libno-such-library.so.9: cannot open shared object file: "
                                       "No such file or directory"});
}

TEST_F(DoctorFacts, CountThePreferencesOfAFile)
{
    const PreferenceFacts facts = preferences("[viewer]\nGpuPrefer = 1\nnonsense\n");
    EXPECT_TRUE(facts.exists);
    EXPECT_EQ(facts.path, file());
    EXPECT_EQ(facts.applications, 1);
    EXPECT_EQ(facts.bad_lines, 1);
    EXPECT_EQ(facts.first_bad_line, 3);
    EXPECT_EQ(facts.read_error, 0);
    EXPECT_EQ(facts.write_error, 0);
}

TEST_F(DoctorFacts, KnowNoPreferenceFileWithoutAHome)
{
    EXPECT_EQ(preference_facts(std::nullopt).path, "");
    EXPECT_EQ(preference_facts("").path, "");
    EXPECT_EQ(preference_facts(std::string(600, 'x')).path, "");
}

TEST_F(DoctorFacts, TellADirectoryThatIsMissing)
{
    EXPECT_EQ(preference_facts(directory_.path()).directory_error, ENOENT);
    test::write_file(path(".local"), "");
    EXPECT_EQ(preference_facts(directory_.path()).directory_error, ENOTDIR);
}

TEST_F(DoctorFacts, DoNotWaitForAPipeInPlaceOfTheFile)
{
    fs::create_directories(directory_.path() / ".local/share");
    ASSERT_EQ(::mkfifo(file().c_str(), 0600), 0);
    EXPECT_FALSE(preference_facts(directory_.path()).regular);
}

TEST_F(DoctorFacts, TellAFileThatBelongsToAnother)
{
    static_cast<void>(preferences("[viewer]\n"));
    fs::permissions(directory_.path(), fs::perms::owner_all | fs::perms::others_exec);
    fs::permissions(file(), fs::perms::none);
    EXPECT_TRUE(holds_for_ordinary_user([&] {
        const PreferenceFacts facts = preference_facts(directory_.path());
        return facts.read_error == EACCES && facts.write_error == EACCES;
    }));
}

}  // namespace
}  // namespace nimba::smi
