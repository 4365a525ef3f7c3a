// SPDX-License-Identifier: MIT
#include "fault_reader.hpp"

#include "machine_file_error.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <regex>
#include <span>
#include <string>

namespace nimba::sim {
namespace {

constexpr int kGreatestCard = 63;
constexpr int64_t kGreatestCount = 1'000'000'000;
constexpr int64_t kGreatestBytes = 16 << 20;
constexpr int64_t kDefaultGarbage = 4096;
constexpr int64_t kLongest = 3'600'000;  // an hour, in ms
constexpr std::size_t kLongestPath = 1024;

// A kind, and the keys that only some kinds have.
struct Row {
    FaultKind kind;
    std::array<std::string_view, 6> keys;
};

constexpr std::array kRows{
    Row{FaultKind::kOpen, {"directory", "path", "error", "first", "every"}},
    Row{FaultKind::kRead, {"directory", "path", "error", "bytes", "first", "every"}},
    Row{FaultKind::kShort, {"directory", "path", "bytes", "first", "every"}},
    Row{FaultKind::kBlock, {"directory", "path", "ms", "first", "every"}},
    Row{FaultKind::kGarbage, {"directory", "path", "bytes", "seed", "first", "every"}},
    Row{FaultKind::kWrite, {"directory", "path", "error", "first", "every"}},
    Row{FaultKind::kVanish, {"directory", "path"}},
    Row{FaultKind::kList, {"directory", "path", "error", "entries", "first", "every"}},
    Row{FaultKind::kGone, {}},
};

const Row& read_row(const TableReader& reader)
{
    std::array<std::string_view, kRows.size()> names{};
    std::ranges::transform(kRows, names.begin(), [](const Row& row) { return to_text(row.kind); });
    const std::string name = reader.choice("kind", names);
    return *std::ranges::find_if(kRows, [&](const Row& row) { return to_text(row.kind) == name; });
}

void reject_keys_of_others(const TableReader& reader, const Row& row)
{
    for (const std::string_view key :
         {"directory", "path", "error", "bytes", "entries", "ms", "seed", "first", "every"}) {
        if (reader.has(key) && std::ranges::find(row.keys, key) == row.keys.end()) {
            reader.reject(key, fmt::format("no such key for a fault \"{}\"", to_text(row.kind)));
        }
    }
}

NodeDirectory read_directory(const TableReader& reader)
{
    if (!reader.has("directory")) {
        return NodeDirectory::kDebug;
    }
    std::array<std::string_view, kNodeDirectories.size()> names{};
    std::ranges::transform(kNodeDirectories, names.begin(),
                           [](const auto& row) { return row.first; });
    const std::string name = reader.choice("directory", names);
    return std::ranges::find_if(kNodeDirectories,
                                [&](const auto& row) { return row.first == name; })
        ->second;
}

// Without the key it is the directory itself.
std::string read_path(const TableReader& reader)
{
    static const std::regex kShape{
        R"((\*|[A-Za-z0-9_-][A-Za-z0-9_.-]*)(/(\*|[A-Za-z0-9_-][A-Za-z0-9_.-]*))*)"};
    if (!reader.has("path")) {
        return "";
    }
    std::string path = reader.text("path");
    if (path.size() > kLongestPath || !std::regex_match(path, kShape)) {
        reader.reject("path", fmt::format("a path of {} bytes at most, of letters, digits, \"_\", "
                                          "\"-\", \".\" and \"*\" for a whole name",
                                          kLongestPath));
    }
    return path;
}

bool is_of_files(FaultKind kind)
{
    return kind == FaultKind::kRead || kind == FaultKind::kShort || kind == FaultKind::kGarbage ||
           kind == FaultKind::kWrite;
}

// What is in /proc is a file; it has no path, and cannot be listed.
void read_place(const TableReader& reader, Fault& fault)
{
    fault.directory = read_directory(reader);
    fault.path = read_path(reader);
    if (fault.directory == NodeDirectory::kProc) {
        if (fault.kind == FaultKind::kList) {
            reader.reject("directory", "a directory that can be listed");
        }
        if (!fault.path.empty()) {
            reader.reject("path", "no such key beside the directory \"proc\"");
        }
    } else if (is_of_files(fault.kind) && fault.path.empty()) {
        reader.reject("path", "the path of a file");
    }
}

int read_error(const TableReader& reader)
{
    if (!reader.has("error")) {
        return EIO;
    }
    const auto number = error_number(reader.text("error"));
    if (!number) {
        reader.reject("error", "the name of an error, such as \"EIO\" or \"ENOENT\"");
    }
    return *number;
}

// How much of a file: what may be 0, and what is meant without the key, depends on the kind.
uint64_t read_bytes(const TableReader& reader, FaultKind kind)
{
    const int64_t least = kind == FaultKind::kShort ? 1 : 0;
    const int64_t fallback = kind == FaultKind::kGarbage ? kDefaultGarbage : least;
    return static_cast<uint64_t>(reader.integer_or("bytes", least, kGreatestBytes, fallback));
}

void read_times(const TableReader& reader, Fault& fault)
{
    if (reader.has("first") && reader.has("every")) {
        reader.reject("every", "no such key beside 'first'");
    }
    for (const auto& [key, times] :
         {std::pair{"first", FaultTimes::kFirst}, std::pair{"every", FaultTimes::kEvery}}) {
        if (reader.has(key)) {
            fault.times = times;
            fault.count = static_cast<uint64_t>(reader.integer(key, 1, kGreatestCount));
        }
    }
    fault.after = std::chrono::milliseconds{reader.integer_or("after_ms", 0, kLongest, 0)};
    if (reader.has("for_ms")) {
        fault.duration = std::chrono::milliseconds{reader.integer("for_ms", 1, kLongest)};
    }
}

}  // namespace

Fault read_fault(const TableReader& reader)
{
    const Row& row = read_row(reader);
    reject_keys_of_others(reader, row);
    Fault fault;
    fault.kind = row.kind;
    if (reader.has("adapter")) {
        fault.card = static_cast<int>(reader.integer("adapter", 0, kGreatestCard));
    }
    read_place(reader, fault);
    fault.error = read_error(reader);
    fault.bytes = read_bytes(reader, fault.kind);
    if (reader.has("entries")) {
        fault.entries = static_cast<uint64_t>(reader.integer("entries", 0, kGreatestCount));
    }
    if (fault.kind == FaultKind::kBlock) {
        fault.length = std::chrono::milliseconds{reader.integer("ms", 1, kLongest)};
    }
    fault.seed = static_cast<uint64_t>(reader.integer_or("seed", 0, kGreatestCount, 0));
    read_times(reader, fault);
    return fault;
}

std::vector<Fault> read_faults(const TableReader& machine, std::span<const Adapter> adapters)
{
    std::vector<Fault> faults;
    for (const TableReader& table : machine.tables("fault", kFaultKeys)) {
        const Fault& fault = faults.emplace_back(read_fault(table));
        const auto is_of = [&](const Adapter& adapter) { return adapter.drm.card == fault.card; };
        if (fault.card && std::ranges::none_of(adapters, is_of)) {
            table.reject("adapter", "the card number of an adapter");
        }
    }
    return faults;
}

Fault parse_fault(std::string_view text)
{
    try {
        const toml::table table = toml::parse(text);
        return read_fault(TableReader{table, "", "fault", kFaultKeys});
    } catch (const toml::parse_error& error) {
        throw MachineFileError{fmt::format("fault: {}", error.description())};
    }
}

}  // namespace nimba::sim
