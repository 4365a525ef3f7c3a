// SPDX-License-Identifier: MIT
// Archives that an input describes, as their own bytes could not be changed without breaking a
// checksum.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::fuzz {

struct DescribedEntry {
    char type = 0;  // 'd' directory, 'l' symbolic and 'h' hard link, 'p' pipe, 'c' and 'b' devices;
                    // 's' a file that has its zeros as a hole, any other a file
    std::string name;
    std::string bytes;

    [[nodiscard]] bool is_file() const;
};

// Of each text the first line is "TYPE[ZEROS] NAME", as in "f manifest.json" or "f500
// dmidecode.txt"; its bytes stand behind, and behind them so many zeros. A manifest or a sample's
// record without bytes is given those that fit the other entries, so that what is changed of these
// can be loaded.
std::vector<DescribedEntry> described_entries(std::string_view input);

// The tar archive of the entries: bits of `form` choose the format and whether it is compressed.
// Entries that the format cannot hold are taken out.
std::string archive_of(std::vector<DescribedEntry>& entries, uint8_t form);

}  // namespace nimba::fuzz
