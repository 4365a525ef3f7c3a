// SPDX-License-Identifier: MIT
#include "toml_file.hpp"

#include "machine_file_error.hpp"

#include <ios>

#include <fmt/format.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace nimba::sim {
namespace {

constexpr std::size_t kGreatestSize = std::size_t{1} << 20U;

std::string read_file(const std::string& file)
{
    std::error_code ignored;
    const auto status = std::filesystem::status(file, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw MachineFileError{fmt::format("{}: is not a regular file", file)};
    }
    std::ifstream stream{file, std::ios::binary};
    std::string text(kGreatestSize + 1, '\0');
    if (!stream || !stream.read(text.data(), static_cast<std::streamsize>(text.size())).eof()) {
        if (stream.good()) {
            throw MachineFileError{fmt::format("{}: is larger than 1 MiB", file)};
        }
        throw MachineFileError{fmt::format("{}: cannot be read: {}", file, std::strerror(errno))};
    }
    text.resize(static_cast<std::size_t>(stream.gcount()));
    return text;
}

}  // namespace

toml::table parse_toml_file(const std::string& file)
{
    const std::string text = read_file(file);
    try {
        return toml::parse(text, file);
    } catch (const toml::parse_error& error) {
        throw MachineFileError{
            fmt::format("{}:{}: {}", file, error.source().begin.line, error.description())};
    }
}

}  // namespace nimba::sim
