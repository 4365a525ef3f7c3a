// SPDX-License-Identifier: MIT
// The devices and allocations that page tables are read from. A program that links
// collector_driver.cpp has its own readdir, closedir and popen; it needs driver_root.cpp, too.
#pragma once

#include "driver_root.hpp"

#include <cstddef>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::test {

// In its scope there is a driver; at first it has no device and no allocation. It lists them in the
// order in which they were added. There is one at a time.
class DriverTree final {
  public:
    DriverTree();
    ~DriverTree();
    DriverTree(const DriverTree&) = delete;
    DriverTree& operator=(const DriverTree&) = delete;

    std::filesystem::path devices() const { return root_.path() / "devices"; }
    std::filesystem::path allocations() const { return root_.path() / "allocations"; }

    void add_device(const std::string& name, std::string_view info, std::string_view vm_info);
    void add_allocation(const std::string& name, std::string_view vm_info);
    // Adds an entry that vanishes before it is read.
    void list_device(const std::string& name) { listings_["devices"].push_back(name); }
    void list_allocation(const std::string& name) { listings_["allocations"].push_back(name); }
    // From now on no entry is listed but those that are added anew.
    void forget_devices();
    void forget_allocations();

    // The names that an open directory lists, or null when it is none of this driver's.
    const std::vector<std::string>* listing_of(int directory) const;

  private:
    DriverRoot root_;
    std::map<std::string, std::vector<std::string>> listings_;
};

// In its scope a listing of the driver's directories breaks off: it has `entries` entries, and then
// fails with EIO.
class BrokenDriverListing final {
  public:
    explicit BrokenDriverListing(std::size_t entries);
    ~BrokenDriverListing();
    BrokenDriverListing(const BrokenDriverListing&) = delete;
    BrokenDriverListing& operator=(const BrokenDriverListing&) = delete;
};

// In its scope no command can be started.
class NoCommands final {
  public:
    NoCommands();
    ~NoCommands();
    NoCommands(const NoCommands&) = delete;
    NoCommands& operator=(const NoCommands&) = delete;
};

}  // namespace nimba::test
