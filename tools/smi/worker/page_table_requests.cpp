// SPDX-License-Identifier: MIT
#include "tools/smi/worker/page_table_requests.hpp"

#include "tools/smi/decimal.hpp"
#include "tools/smi/pagetable/record.hpp"
#include "tools/smi/worker/driver_directory.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/page_tables.hpp"

#include <fcntl.h>

#include <fmt/core.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace nimba::smi {
namespace {

constexpr const char* kGetPageTables = "get_pagetable_data";

// Where the library reads, whatever the adapter.
const std::string kDirectory = "/sys/kernel/debug/dri/0/qv";
const std::string kDevices = kDirectory + "/devices";
const std::string kAllocations = kDirectory + "/allocations";
constexpr const char* kMinorDevice = "/sys/class/drm/card0/device";

// For each device the library reads a dump and runs a command.
constexpr std::chrono::milliseconds kTimePerDevice{1000};
constexpr std::chrono::milliseconds kTimePerAllocation{1};

std::chrono::milliseconds reading_time(Session& session)
{
    const auto devices = session.call("open " + kDevices, [] { return entries_in(kDevices); });
    const auto allocations =
        session.call("open " + kAllocations, [] { return entries_in(kAllocations); });
    return kTimePerDevice * devices + kTimePerAllocation * allocations;
}

// Why DRM minor 0 cannot have page tables; nothing when it is an adapter of the product, or may be.
std::optional<Failure> foreign_minor(Session& session)
{
    const tools::Descriptor device{::open(kMinorDevice, O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    const auto vendor = device ? pci_id_in(device.get(), "vendor") : std::nullopt;
    if (device && (!vendor || *vendor == NIMBA_VENDOR_ID || *vendor == QV_VENDOR_ID)) {
        return std::nullopt;
    }
    return Failure{ExitStatus::kNoAdapter, session.current_call(),
                   fmt::format("page tables can only be read of DRM minor 0, which {}: its driver "
                               "has to be loaded before those of other GPUs",
                               device ? "is no Nimba or QV adapter" : "is not there")};
}

Failure reading_failure(Session& session)
{
    struct Node {
        const std::string& directory;
        const char* name;
        const char* what;
    };
    const std::array nodes{Node{kDevices, "info", "page tables"},
                           Node{kDevices, "vm_info", "page tables"},
                           Node{kAllocations, "vm_info", "allocations in address spaces"}};
    for (const Node& node : nodes) {
        const auto fault = session.call("open " + node.directory,
                                        [&] { return first_fault(node.directory, node.name); });
        if (fault) {
            const FaultSentence sentence = describe_fault(fault, node.directory, node.what);
            auto foreign = sentence.status == ExitStatus::kNoPermission ? std::nullopt
                                                                        : foreign_minor(session);
            return foreign ? *foreign : Failure{sentence.status, kGetPageTables, sentence.text};
        }
    }
    const FaultSentence sentence = describe_fault(std::nullopt, kDirectory, "page tables");
    return {sentence.status, kGetPageTables, sentence.text};
}

// The library stops at such a number, and does not say where it was.
Failure bad_number(const char* fault)
{
    return {ExitStatus::kNoAdapter, kGetPageTables,
            fmt::format("a page-table dump of the driver has a number {}, which the library cannot "
                        "read: look for it in {}/*/vm_info",
                        fault, kDevices)};
}

std::optional<Failure> read_driver(Session& session, const PageTableEntryPoints& entry)
{
    const auto extra = reading_time(session);
    const char* fault = nullptr;
    session.call(
        kGetPageTables,
        [&] {
            try {
                uint32_t count = 0;
                entry.get_pagetable_data(nullptr, &count);
            } catch (const std::invalid_argument&) {
                fault = "without digits";
            } catch (const std::out_of_range&) {
                fault = "beyond 32 bits";
            }
        },
        extra);
    if (fault != nullptr) {
        return bad_number(fault);
    }
    return *entry.status < 0 ? std::optional(reading_failure(session)) : std::nullopt;
}

template <std::size_t Size>
std::string bounded(const char (&text)[Size])
{
    return {text, ::strnlen(text, Size)};
}

VmDevice description_of(const data_vectors& device, std::size_t number)
{
    VmDevice description{number, bounded(device.pid), bounded(device.app_name), {}, {}};
    for (std::size_t level = 0; level < kPageTableLevels; ++level) {
        description.tables.at(level) = (device.*kDeviceTables[level]).size();
        description.pages.at(level) = (device.*kDevicePages[level]).size();
    }
    return description;
}

TableRecord record_of(const vidmm_vm_pt& entry)
{
    return {entry.PT_Level, entry.PT_index, bounded(entry.Addr), bounded(entry.Buffer)};
}

PageRecord record_of(const vidmm_vm_pte_elt3k& entry)
{
    return {entry.ST_Level,  entry.Index, entry.parent_level, entry.parent_index,
            entry.LargePage, entry.Snoop, entry.Segment,      bounded(entry.Addr)};
}

VmAllocationRecord record_of(const allcation_Info& node)
{
    return {node.device_pid, node.allocation_handle, node.gpu_va, node.size};
}

// The records from `first` on, of `count`; `at` gives the one with a number.
template <typename At>
Message block_of(std::size_t count, std::size_t first, At at)
{
    using Record = decltype(record_of(at(0)));
    Block<Record> block;
    const std::size_t end = std::min(count, first + kRecordsInBlock);
    for (std::size_t i = first; i < end; ++i) {
        block.records.push_back(record_of(at(i)));
    }
    return Answer{to_json_value(block)};
}

// The numbers of a request, with blanks between them; nothing when they are others than as many.
template <std::size_t Count>
std::optional<std::array<std::size_t, Count>> numbers_in(std::string_view text)
{
    std::array<std::size_t, Count> numbers{};
    for (std::size_t& number : numbers) {
        const auto blank = text.find(' ');
        const auto parsed =
            parse_number<std::size_t>(text.substr(0, blank), 0, std::numeric_limits<int>::max());
        if (!parsed) {
            return std::nullopt;
        }
        number = *parsed;
        text = blank == std::string_view::npos ? std::string_view{} : text.substr(blank + 1);
    }
    return text.empty() ? std::optional(numbers) : std::nullopt;
}

Failure bad_request(const Session& session)
{
    return {ExitStatus::kFailed, session.current_call(), "a request asks for what is not there"};
}

// A block of what a request with a device and a level is about.
template <typename Levels>
Message answer_entries(Session& session, std::string_view arguments, const Levels& levels)
{
    const auto numbers = numbers_in<3>(arguments);
    const auto& tables = session.page_tables();
    if (!numbers || !tables || (*numbers)[0] >= tables->entry.devices->size() ||
        (*numbers)[1] >= std::size(levels)) {
        return bad_request(session);
    }
    const auto& [device, level, first] = *numbers;
    const auto& entries = (*tables->entry.devices)[device].*levels[level];
    return block_of(
        entries.size(), first, [&](std::size_t i) -> const auto& { return entries[i]; });
}

}  // namespace

Message answer_page_tables(Session& session)
{
    auto found =
        session.call("dlsym", [&] { return find_page_table_entry_points(session.library()); });
    if (const auto* const message = std::get_if<std::string>(&found)) {
        return Failure{ExitStatus::kNoLibrary, session.current_call(), *message};
    }
    const auto& entry = std::get<PageTableEntryPoints>(found);
    if (auto failure = read_driver(session, entry)) {
        return *std::move(failure);
    }
    const PageTables& tables = session.page_tables().emplace(PageTables{
        entry, distinct_devices(*entry.devices), distinct_allocations(*entry.allocations)});
    PageTableContents contents;
    for (const std::size_t number : tables.devices) {
        contents.devices.push_back(description_of((*entry.devices)[number], number));
    }
    contents.allocations = tables.allocations.size();
    return Answer{to_json_value(contents)};
}

Message answer_table_entries(Session& session, std::string_view arguments)
{
    return answer_entries(session, arguments, kDeviceTables);
}

Message answer_pages(Session& session, std::string_view arguments)
{
    return answer_entries(session, arguments, kDevicePages);
}

Message answer_vm_allocations(Session& session, std::string_view arguments)
{
    const auto numbers = numbers_in<1>(arguments);
    const auto& tables = session.page_tables();
    if (!numbers || !tables) {
        return bad_request(session);
    }
    return block_of(
        tables->allocations.size(), numbers->front(), [&](std::size_t i) -> const auto& {
            return (*tables->entry.allocations)[tables->allocations[i]];
        });
}

}  // namespace nimba::smi
