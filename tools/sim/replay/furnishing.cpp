// SPDX-License-Identifier: MIT
#include "replay/furnishing.hpp"

#include "test_bed_error.hpp"

#include <ios>

#include <fmt/core.h>

#include <fstream>
#include <string_view>

namespace nimba::sim {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kShowOutput = "#!/bin/sh\nexec cat \"${0%/*}/dmidecode.txt\"\n";
constexpr std::string_view kNotFound = "#!/bin/sh\nexit 127\n";

void write_file(const fs::path& file, std::string_view text)
{
    fs::create_directories(file.parent_path());
    std::ofstream stream{file, std::ios::binary};
    stream << text;
    stream.close();
    if (!stream) {
        throw TestBedError{fmt::format("cannot write {}", file.native())};
    }
}

}  // namespace

void furnish(const archive::Capture& capture, const fs::path& directory, Environment& environment)
{
    const fs::path programs = directory / "bin";
    write_file(programs / "dmidecode", capture.dmidecode ? kShowOutput : kNotFound);
    fs::permissions(programs / "dmidecode", fs::perms::owner_all);
    write_file(programs / "dmidecode.txt", capture.dmidecode.value_or(""));
    environment.prepend("PATH", programs.native(), ':');

    const fs::path home = directory / "home";
    fs::create_directories(home / ".local/share");
    if (capture.preferences) {
        write_file(home / ".local/share/wmt_gfx_util.ini", *capture.preferences);
    }
    environment.set("HOME", home.native());
}

}  // namespace nimba::sim
