// SPDX-License-Identifier: MIT
#include "tools/smi/worker/driver_files.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <memory>
#include <string_view>

namespace nimba::smi {
namespace {

struct ListingCloser {
    void operator()(DIR* listing) const { ::closedir(listing); }
};

// The number that all of `text` spells.
template <typename Number>
std::optional<Number> number_in(std::string_view text, int base)
{
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
    if (error != std::errc{} || end != text.data() + text.size()) {
        return std::nullopt;
    }
    return number;
}

}  // namespace

std::string driver_info_path(int card, uint32_t vendor_id)
{
    return fmt::format("/sys/kernel/debug/dri/{}/{}/info", card,
                       vendor_id == QV_VENDOR_ID ? "qv" : "jw");
}

std::string primary_node_path(int card)
{
    return fmt::format("/dev/dri/card{}", card);
}

bool exists(const std::string& path)
{
    return ::access(path.c_str(), F_OK) == 0;
}

Access read_access(const std::string& path)
{
    const tools::Descriptor file{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    if (file) {
        return Access::kOpen;
    }
    return errno == EACCES || errno == EPERM ? Access::kDenied : Access::kAbsent;
}

DriverKind driver_kind_without_va(Access info_node)
{
    return info_node == Access::kOpen ? DriverKind::kLegacy : DriverKind::kUnknown;
}

std::optional<uint32_t> pci_id_in(int pci_directory, const char* name)
{
    const tools::Descriptor file{::openat(pci_directory, name, O_RDONLY | O_CLOEXEC)};
    std::array<char, 16> text{};
    const ssize_t length = file ? ::read(file.get(), text.data(), text.size()) : -1;
    constexpr std::string_view kPrefix = "0x";
    std::string_view digits{text.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
    if (!digits.starts_with(kPrefix)) {
        return std::nullopt;
    }
    digits.remove_prefix(kPrefix.size());
    return number_in<uint32_t>(digits.substr(0, digits.find('\n')), 16);
}

std::optional<int> card_in(int pci_directory)
{
    constexpr std::string_view kPrefix = "card";
    const int fd = ::openat(pci_directory, "drm", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        return std::nullopt;
    }
    const std::unique_ptr<DIR, ListingCloser> listing{::fdopendir(fd)};
    while (const dirent* const entry = listing ? ::readdir(listing.get()) : nullptr) {
        const std::string_view name{entry->d_name};
        const auto card = name.starts_with(kPrefix)
                              ? number_in<int>(name.substr(kPrefix.size()), 10)
                              : std::nullopt;
        if (card) {
            return card;
        }
    }
    return std::nullopt;
}

}  // namespace nimba::smi
