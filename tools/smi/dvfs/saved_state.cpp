// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/saved_state.hpp"

#include "tools/descriptor.hpp"
#include "tools/smi/pagetable/number.hpp"
#include "tools/smi/text/json.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <set>
#include <utility>

namespace nimba::smi {
namespace {

using Json = nlohmann::json;

constexpr const char* kSchema = "nimba-smi.dvfs-state.1";
constexpr std::array<std::string_view, 5> kMembers{"schema", "chip", "bus_id", "name", "fields"};
constexpr std::size_t kLargestFile = std::size_t{1} << 20;

struct Fault {
    std::string text;
};

// The document of a text. Names that stand twice in an object are a fault: of their values only one
// would count.
Json parsed(std::string_view text)
{
    std::set<std::pair<int, std::string>> names;
    std::optional<std::string> twice;
    const auto look = [&](int depth, Json::parse_event_t event, const Json& value) {
        if (event == Json::parse_event_t::key &&
            !names.emplace(depth, value.get<std::string>()).second) {
            twice = value.get<std::string>();
        }
        return true;
    };
    Json document = Json::parse(text, look, false);
    if (document.is_discarded()) {
        throw Fault{"it is no JSON document"};
    }
    if (twice) {
        throw Fault{fmt::format("it has \"{}\" twice", *twice)};
    }
    return document;
}

void check_members(const Json& document)
{
    if (!document.is_object() || document.value("schema", Json{}) != kSchema) {
        throw Fault{fmt::format("it is no {}", kSchema)};
    }
    for (const auto& [name, value] : document.items()) {
        if (std::ranges::find(kMembers, name) == kMembers.end()) {
            throw Fault{fmt::format("it has an unknown member \"{}\"", name)};
        }
    }
}

std::optional<uint32_t> chip_in(const Json& document)
{
    const Json chip = document.value("chip", Json{});
    if (chip.is_null()) {
        return std::nullopt;
    }
    const auto number =
        chip.is_string() ? hexadecimal_in(chip.get_ref<const std::string&>()) : std::nullopt;
    if (!number || *number > std::numeric_limits<uint32_t>::max()) {
        throw Fault{"its \"chip\" is no PCI device identifier"};
    }
    return static_cast<uint32_t>(*number);
}

std::vector<Assignment> assignments_in(const Json& document)
{
    const Json fields = document.value("fields", Json{});
    if (!fields.is_object() || fields.empty()) {
        throw Fault{"it has no \"fields\""};
    }
    std::vector<Assignment> assignments;
    for (const auto& [name, value] : fields.items()) {
        if (!value.is_string()) {
            throw Fault{fmt::format("the value of \"{}\" is no text", name)};
        }
        auto assignment = make_assignment(name, value.get_ref<const std::string&>());
        if (auto* const fault = std::get_if<std::string>(&assignment)) {
            throw Fault{std::move(*fault)};
        }
        assignments.push_back(std::get<Assignment>(assignment));
    }
    return in_order(std::move(assignments));
}

std::string text_behind(int fd)
{
    std::string text;
    std::array<char, 4096> piece{};
    ssize_t length = 1;
    while (length != 0 && text.size() <= kLargestFile) {
        length = ::read(fd, piece.data(), piece.size());
        if (length < 0 && errno != EINTR) {
            throw Fault{std::strerror(errno)};
        }
        text.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    }
    if (text.size() > kLargestFile) {
        throw Fault{"it is larger than a megabyte"};
    }
    return text;
}

std::string text_of(const std::string& file)
{
    if (file == "-") {
        return text_behind(STDIN_FILENO);
    }
    const tools::Descriptor descriptor{::open(file.c_str(), O_RDONLY | O_CLOEXEC)};
    if (!descriptor) {
        throw Fault{std::strerror(errno)};
    }
    return text_behind(descriptor.get());
}

SavedState state_in(std::string_view text)
{
    const Json document = parsed(text);
    check_members(document);
    return {chip_in(document), assignments_in(document)};
}

}  // namespace

std::vector<Assignment> state_of(const DvfsReading& reading)
{
    std::vector<Assignment> state;
    for (const DvfsField& field : dvfs_fields()) {
        if (const auto value = value_of(reading, field); value && field.writable) {
            state.push_back({&field, *value});
        }
    }
    return state;
}

std::string saved_text(const SlotIdentity& adapter, const SavedState& state)
{
    Document fields = Document::object();
    for (const auto& [field, value] : state.assignments) {
        fields[std::string{field->name}] = value_text(*field, value);
    }
    return json_text({{"schema", kSchema},
                      {"chip", state.chip ? json_id(*state.chip) : Document(nullptr)},
                      {"bus_id", adapter.bus_id},
                      {"name", or_null(adapter.name)},
                      {"fields", std::move(fields)}});
}

std::variant<SavedState, std::string> parse_saved_state(std::string_view text)
{
    try {
        return state_in(text);
    } catch (const Fault& fault) {
        return fault.text;
    }
}

std::variant<SavedState, std::string> read_saved_state(const std::string& file)
{
    try {
        return state_in(text_of(file));
    } catch (const Fault& fault) {
        return fault.text;
    }
}

}  // namespace nimba::smi
