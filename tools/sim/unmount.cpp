// SPDX-License-Identifier: MIT
#include "unmount.hpp"

#include "fusermount.hpp"

#include <sys/mount.h>

#include <fstream>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

// The kernel writes blanks and the like in a path as "\040".
std::string unescaped(const std::string& text)
{
    std::string plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 3 < text.size()) {
            plain += static_cast<char>(std::stoi(text.substr(i + 1, 3), nullptr, 8));
            i += 3;
        } else {
            plain += text[i];
        }
    }
    return plain;
}

// The places below the directory at which something is mounted, in the order of mounting.
std::vector<fs::path> mounts_below(const fs::path& directory)
{
    std::error_code ignored;
    const std::string start = fs::weakly_canonical(directory, ignored).native() + "/";
    std::vector<fs::path> places;
    std::ifstream stream{"/proc/self/mountinfo"};
    for (std::string line; std::getline(stream, line);) {
        std::istringstream words{line};
        std::string place;
        for (int word = 0; word < 5; ++word) {  // the fifth word is the place
            words >> place;
        }
        place = unescaped(place);
        if (place.starts_with(start)) {
            places.emplace_back(place);
        }
    }
    return places;
}

}  // namespace

void unmount(const fs::path& directory)
{
    if (umount2(directory.c_str(), MNT_DETACH | UMOUNT_NOFOLLOW) != 0) {
        run_fusermount({"-u", "-q", "-z", "--", directory.native()}, -1);
    }
}

void unmount_below(const fs::path& directory)
{
    const auto places = mounts_below(directory);
    for (auto place = places.rbegin(); place != places.rend(); ++place) {
        unmount(*place);
    }
}

}  // namespace nimba::sim
