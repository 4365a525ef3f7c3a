// SPDX-License-Identifier: MIT
#include "tools/smi/worker/node_text.hpp"

#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>

namespace nimba::smi {
namespace {

constexpr std::size_t kSize = 64;

}  // namespace

NodeText node_text(int directory, const char* name)
{
    const tools::Descriptor node{::openat(directory, name, O_RDONLY | O_CLOEXEC)};
    std::array<char, kSize> bytes{};
    const ssize_t length = node ? ::read(node.get(), bytes.data(), bytes.size()) : -1;
    if (length < 0) {
        return {errno, ""};
    }
    return {0, {bytes.data(), static_cast<std::size_t>(length)}};
}

bool begins_with_number(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\n\v\f\r";
    text.remove_prefix(std::min(text.find_first_not_of(kBlanks), text.size()));
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool ends = end == text.data() + text.size() || *end == '\0' ||
                      kBlanks.find(*end) != std::string_view::npos;
    return error == std::errc{} && ends;
}

bool means_absent(int error)
{
    return error == ENOENT || error == ENOTDIR || error == EBADF;
}

}  // namespace nimba::smi
