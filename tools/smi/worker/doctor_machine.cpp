// SPDX-License-Identifier: MIT
#include "tools/smi/worker/doctor_machine.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/drm_nodes.hpp"
#include "tools/smi/worker/loaded_file.hpp"

#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

namespace nimba::smi {
namespace {

namespace fs = std::filesystem;

constexpr std::array kLibdrmNames{"libdrm.so", "libdrm.so.2"};

struct StreamCloser {
    void operator()(std::FILE* stream) const { ::pclose(stream); }
};

// What a shell command writes on standard output.
std::string output_of(const std::string& command)
{
    // NOLINTNEXTLINE(cert-env33-c): the library runs its commands through the shell, too.
    const std::unique_ptr<std::FILE, StreamCloser> stream{::popen(command.c_str(), "re")};
    std::string output;
    std::array<char, 4096> piece{};
    for (std::size_t length = 1; stream && length > 0;) {
        length = std::fread(piece.data(), 1, piece.size(), stream.get());
        output.append(piece.data(), length);
    }
    return output;
}

std::string last_line(const std::string& text)
{
    std::istringstream lines{text};
    std::string last;
    for (std::string line; std::getline(lines, line);) {
        if (!line.empty()) {
            last = line;
        }
    }
    return last;
}

std::string environment_path()
{
    const char* const path = std::getenv("PATH");
    return path == nullptr ? "" : path;
}

// Nothing for a device of another vendor.
std::optional<PciAdapter> product_device(const fs::path& directory)
{
    const tools::Descriptor opened{::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    const auto vendor = opened ? pci_id_in(opened.get(), "vendor") : std::nullopt;
    if (vendor != NIMBA_VENDOR_ID && vendor != QV_VENDOR_ID) {
        return std::nullopt;
    }
    std::error_code error;
    return PciAdapter{directory.filename(), pci_id_in(opened.get(), "device").value_or(0),
                      fs::read_symlink(directory / "driver", error).filename(),
                      exists(directory / "drm")};
}

}  // namespace

LibdrmFacts libdrm_facts()
{
    const LoadedFile library = load_first(kLibdrmNames, RTLD_LAZY);
    LibdrmFacts facts{library.name, library.path, {}, {}};
    if (!library.handle) {
        facts.error = library.errors.back();
        return facts;
    }
    for (const char* const function : {"drmGetVersion", "drmFreeDevices"}) {
        if (library.symbol(function) == nullptr) {
            facts.missing.emplace_back(function);
        }
    }
    if (library.symbol("drmGetDevices2") == nullptr && library.symbol("drmGetDevices") == nullptr) {
        facts.missing.emplace_back("drmGetDevices2");
    }
    return facts;
}

std::vector<PciAdapter> product_pci_devices(int& error, const std::string& directory)
{
    std::vector<PciAdapter> devices;
    std::error_code listing_error;
    for (const auto& entry : fs::directory_iterator(directory, listing_error)) {
        if (auto device = product_device(entry.path())) {
            devices.push_back(*std::move(device));
        }
    }
    error = listing_error.value();
    std::ranges::sort(devices, {}, &PciAdapter::bus_id);
    return devices;
}

DeviceFacts device_facts()
{
    DeviceFacts facts;
    facts.adapters = product_pci_devices(facts.pci_error);
    const auto nodes = drm_nodes();
    facts.denied_directory = denied_directory();
    facts.denied_nodes = denied_devices(nodes);
    facts.drm_devices = device_count(nodes);
    return facts;
}

DebugfsFacts debugfs_facts(const std::string& directory)
{
    std::error_code error;
    const fs::directory_iterator listing{directory, error};
    return {error.value(), !error && listing == fs::directory_iterator{}};
}

std::string command_on(const std::string& path, const char* name)
{
    std::istringstream directories{path};
    for (std::string directory; std::getline(directories, directory, ':');) {
        // An empty entry means the current directory.
        std::string file = fmt::format("{}/{}", directory.empty() ? "." : directory, name);
        struct stat status {};
        if (::stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
            ::access(file.c_str(), X_OK) == 0) {
            return file;
        }
    }
    return {};
}

void look_at_ps(CommandFacts& facts)
{
    facts.ps = command_on(environment_path(), "ps");
    facts.ps_names =
        !facts.ps.empty() && !output_of(fmt::format("ps -p {} -o comm=", ::getpid())).empty();
}

void look_at_dmidecode(CommandFacts& facts)
{
    facts.root = ::geteuid() == 0;
    facts.dmidecode = command_on(environment_path(), "dmidecode");
    if (facts.dmidecode.empty()) {
        return;
    }
    const std::string output = output_of("dmidecode -t memory 2>&1");
    facts.dmi_tells = output.find("\nMemory Device\n") != std::string::npos;
    if (!facts.dmi_tells) {
        facts.dmi_said = last_line(output);
    }
}

}  // namespace nimba::smi
