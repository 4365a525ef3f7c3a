// SPDX-License-Identifier: MIT
// Which entries the library sees in a directory, and in which order. A program that links
// directory_listing.cpp has its own readdir and closedir.
#pragma once

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace nimba::test {

// In its scope every directory lists exactly these names, also those that do not exist.
class ListedAs final {
  public:
    explicit ListedAs(std::vector<std::string> names);
    ~ListedAs();
    ListedAs(const ListedAs&) = delete;
    ListedAs& operator=(const ListedAs&) = delete;
};

// The listing of a directory breaks off: readdir lists `entries` entries, counted over all
// directories, and then fails `failures` times with `error`; after these, or its scope, it lists as
// before.
class BrokenListing final {
  public:
    explicit BrokenListing(std::size_t entries, std::size_t failures = SIZE_MAX, int error = EIO);
    ~BrokenListing();
    BrokenListing(const BrokenListing&) = delete;
    BrokenListing& operator=(const BrokenListing&) = delete;
};

}  // namespace nimba::test
