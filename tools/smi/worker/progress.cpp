// SPDX-License-Identifier: MIT
#include "tools/smi/worker/progress.hpp"

#include "tools/smi/worker/discovery.hpp"

#include <unistd.h>

#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <iterator>

namespace nimba::smi {
namespace {

// The library's callback has no argument for it. Set once by a worker, before discovery.
DiscoveryProgress* noted_in = nullptr;

}  // namespace

void ProgressUnmapper::operator()(DiscoveryProgress* progress) const
{
    ::munmap(progress, sizeof *progress);
}

tools::Descriptor make_progress_memory()
{
    tools::Descriptor memory{::memfd_create("nimba-smi progress", MFD_CLOEXEC)};
    if (memory && ::ftruncate(memory.get(), sizeof(DiscoveryProgress)) != 0) {
        return {};
    }
    return memory;
}

SharedProgress map_progress(int memory)
{
    void* const address =
        ::mmap(nullptr, sizeof(DiscoveryProgress), PROT_READ | PROT_WRITE, MAP_SHARED, memory, 0);
    return SharedProgress{address == MAP_FAILED ? nullptr
                                                : static_cast<DiscoveryProgress*>(address)};
}

void note_messages_in(DiscoveryProgress& progress)
{
    noted_in = &progress;
}

void note_message(std::string_view message)
{
    const auto bus_id = bus_id_in_message(message);
    if (noted_in != nullptr && bus_id) {
        std::ranges::fill(noted_in->reached, '\0');
        bus_id->copy(noted_in->reached, std::size(noted_in->reached) - 1);
    }
}

std::optional<std::string> bus_id_in_message(std::string_view message)
{
    constexpr std::string_view kPrefix = "gpu_busid: 0x";
    if (!message.starts_with(kPrefix)) {
        return std::nullopt;
    }
    message.remove_prefix(kPrefix.size());
    const std::string_view bus_id = message.substr(0, message.find('\n'));
    return bus_id.empty() ? std::nullopt : std::optional<std::string>(bus_id);
}

std::optional<std::string> unfinished_adapter(const DiscoveryProgress& progress)
{
    const std::string_view reached{progress.reached,
                                   ::strnlen(progress.reached, sizeof progress.reached)};
    const DiscoveryRecords records{progress.adapters, {}};
    const auto finished = slot_identities(records);
    if (reached.empty() ||
        std::ranges::find(finished, reached, &SlotIdentity::bus_id) != finished.end()) {
        return std::nullopt;
    }
    return std::string{reached};
}

std::vector<Adapter> finished_adapters(const DiscoveryProgress& progress)
{
    DiscoveryRecords records{progress.adapters, {}};
    records.identity.other_vendor_chip_num = 1;
    std::vector<Adapter> adapters;
    for (int slot = 0; slot < slot_count(records); ++slot) {
        Adapter adapter = adapter_in_slot(records, slot);
        adapter.luid = luid_of(adapter.bus_id);
        adapters.push_back(std::move(adapter));
    }
    return adapters;
}

}  // namespace nimba::smi
