// SPDX-License-Identifier: MIT
// How a GPU virtual address splits into the indices of the page tables.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace nimba::smi {

// The levels of page tables, 0 being the root's. A sub-table lies below an entry of any level.
inline constexpr int kPageTableLevels = 3;

// A part of an address space.
struct AddressRange {
    uint64_t begin = 0;
    uint64_t end = 0;  // behind the last byte

    [[nodiscard]] uint64_t size() const { return end - begin; }
    [[nodiscard]] bool contains(uint64_t address) const
    {
        return address >= begin && address < end;
    }

    bool operator==(const AddressRange&) const = default;
};

class AddressSplit final {
  public:
    // Address bits of the levels 0, 1 and 2, of the sub-table and of the page.
    static constexpr std::size_t kParts = 5;
    using Bits = std::array<unsigned, kParts>;

    AddressSplit() = default;
    // Each part has one bit at least, and all of them have 63 at most.
    explicit AddressSplit(const Bits& bits) : bits_{bits} {}

    [[nodiscard]] const Bits& bits() const { return bits_; }

    // Bits of an address.
    [[nodiscard]] unsigned total() const;

    // How many of an address's bits lie below the index of a page-table entry of `level`, 0 to 2.
    [[nodiscard]] unsigned table_shift(int level) const;

    // Likewise below the index of a page in a sub-table that lies below an entry of `level`: the
    // page's size is 1 << page_shift. Large pages of level 2 are sixteen times as large.
    [[nodiscard]] unsigned page_shift(int level, bool large) const;

    // The addresses that a page-table entry stands for; nothing for one outside the address space.
    [[nodiscard]] std::optional<AddressRange> table_range(int level, int64_t index) const;

    // The addresses of a page, by its own index in the sub-table below a page-table entry.
    [[nodiscard]] std::optional<AddressRange> page_range(int level, int64_t table_index,
                                                         int64_t index, bool large) const;

    bool operator==(const AddressSplit&) const = default;

  private:
    Bits bits_{9, 9, 9, 9, 12};
};

// "9,9,9,9,12". Nothing for other texts, and for splits that no address can have.
std::optional<AddressSplit> parse_split(std::string_view text);

}  // namespace nimba::smi
