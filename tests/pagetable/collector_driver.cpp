// SPDX-License-Identifier: MIT
#include "collector_driver.hpp"

#include "support/temp_directory.hpp"

#include <dirent.h>
#include <dlfcn.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <iterator>
#include <optional>
#include <system_error>

namespace nimba::test {
namespace {

const DriverTree* driver = nullptr;
std::optional<std::size_t> entries_before_failure;
bool commands_fail = false;
std::map<DIR*, std::size_t> positions;  // of the listings that are under way

dirent* next_listed(DIR* directory, const std::vector<std::string>& names)
{
    static dirent entry{};
    std::size_t& position = positions[directory];
    if (entries_before_failure && position == *entries_before_failure) {
        errno = EIO;
        return nullptr;
    }
    if (position == names.size()) {
        return nullptr;
    }
    const std::string& name = names[position++];
    *std::copy(name.begin(), name.end(), std::begin(entry.d_name)) = '\0';
    entry.d_type = DT_UNKNOWN;
    return &entry;
}

}  // namespace

DriverTree::DriverTree()
{
    std::filesystem::create_directory(devices());
    std::filesystem::create_directory(allocations());
    forget_devices();
    forget_allocations();
    driver = this;
}

DriverTree::~DriverTree()
{
    driver = nullptr;
}

void DriverTree::add_device(const std::string& name, std::string_view info,
                            std::string_view vm_info)
{
    std::filesystem::create_directories(devices() / name);
    write_file(devices() / name / "info", info);
    write_file(devices() / name / "vm_info", vm_info);
    list_device(name);
}

void DriverTree::add_allocation(const std::string& name, std::string_view vm_info)
{
    std::filesystem::create_directories(allocations() / name);
    write_file(allocations() / name / "vm_info", vm_info);
    list_allocation(name);
}

void DriverTree::forget_devices()
{
    listings_["devices"] = {".", ".."};
}

void DriverTree::forget_allocations()
{
    listings_["allocations"] = {".", ".."};
}

const std::vector<std::string>* DriverTree::listing_of(int directory) const
{
    std::error_code closed;
    const auto path =
        std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(directory), closed);
    if (path.parent_path() != root_.path()) {
        return nullptr;
    }
    return &listings_.at(path.filename().string());
}

BrokenDriverListing::BrokenDriverListing(std::size_t entries)
{
    const std::size_t dots = 2;
    entries_before_failure = dots + entries;
}

BrokenDriverListing::~BrokenDriverListing()
{
    entries_before_failure.reset();
}

NoCommands::NoCommands()
{
    commands_fail = true;
}

NoCommands::~NoCommands()
{
    commands_fail = false;
}

}  // namespace nimba::test

// These stand before the C library's functions in this program.
extern "C" {
dirent* readdir(DIR* dirp)
{
    using namespace nimba::test;
    const int error = errno;
    const auto* names = driver == nullptr ? nullptr : driver->listing_of(::dirfd(dirp));
    errno = error;
    if (names != nullptr) {
        return next_listed(dirp, *names);
    }
    static const auto next = reinterpret_cast<dirent* (*)(DIR*)>(::dlsym(RTLD_NEXT, "readdir"));
    return next(dirp);
}

int closedir(DIR* dirp)
{
    nimba::test::positions.erase(dirp);
    static const auto next = reinterpret_cast<int (*)(DIR*)>(::dlsym(RTLD_NEXT, "closedir"));
    return next(dirp);
}

std::FILE* popen(const char* command, const char* modes)
{
    if (nimba::test::commands_fail) {
        errno = EAGAIN;
        return nullptr;
    }
    static const auto next =
        reinterpret_cast<std::FILE* (*)(const char*, const char*)>(::dlsym(RTLD_NEXT, "popen"));
    return next(command, modes);
}
}
