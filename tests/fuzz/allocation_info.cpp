// SPDX-License-Identifier: MIT
// The texts of allocation nodes: a pass of the library's parser, which foresees lines, against one
// that takes each line for itself.
#include "alloc/allocation_text.hpp"
#include "core/node_pieces.hpp"
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/outcome.hpp"
#include "fuzz/support/target.hpp"

#include <cstring>
#include <map>
#include <memory>
#include <utility>

namespace nimba::fuzz {
namespace {

using Record = _GFX_ALLOCATION_INFO;

constexpr std::size_t kMostNodes = 8;
constexpr std::size_t kMostBytes = 9'000;  // more than the reader's buffer
constexpr std::size_t kLongestPart = 127;

const std::map<std::string_view, int32_t Record::*>& fields()
{
    static const std::map<std::string_view, int32_t Record::*> fields{
        {"handle", &Record::handle},
        {"device", &Record::device},
        {"width", &Record::width},
        {"height", &Record::height},
        {"pitch", &Record::pitch},
        {"bit_cnt", &Record::bit_cnt},
        {"secured", &Record::secured},
        {"size", &Record::size},
        {"tile", &Record::tile},
        {"cpu_visible", &Record::cpu_visible},
        {"cache_type", &Record::cache_type},
        {"pool_type", &Record::pool_type},
        {"at_type", &Record::at_type},
        {"segmentid", &Record::segmentid},
        {"hw_format", &Record::hw_format},
        {"compress_format", &Record::compress_format},
        {"bl_slot_index", &Record::bl_slot_index},
        {"gpu_virt_addr", &Record::gpu_virt_addr},
        {"imported", &Record::imported},
        {"fb_offset", &Record::fb_offset},
        {"share", &Record::share},
    };
    return fields;
}

Outcome read_line(std::string_view line, bool va_driver, Record& record)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return Outcome::kDone;
    }
    const std::string_view key = line.substr(0, equals);
    std::string_view value = line.substr(equals + 1);
    if (key.size() > kLongestPart || value.size() > kLongestPart) {
        return Outcome::kBreach;
    }
    value = value.substr(0, value.empty() ? 0 : value.size() - 1);
    const auto field = fields().find(key);
    if (field == fields().end()) {
        return Outcome::kDone;
    }
    int32_t& number = record.*field->second;
    if (key == "handle" || key == "device") {
        return to_int(value, key == "device" && va_driver ? 10 : 16, number);
    }
    number = low_bits(value);
    return Outcome::kDone;
}

Outcome read_plainly(std::string_view text, bool va_driver, Record& record)
{
    record = {};
    Outcome outcome = Outcome::kDone;
    while (outcome == Outcome::kDone && !text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n') + 1);
        const std::string_view whole = line.empty() ? text : line;
        outcome = read_line(whole, va_driver, record);
        text.remove_prefix(whole.size());
    }
    return outcome;
}

void check_same(const AllocationParser& parser, const Record& expected)
{
    check(std::memcmp(&parser.record(), &expected, sizeof expected) == 0,
          "a record is that of the lines read one by one");
}

// In memory of the text's size, behind which nothing may be read.
Outcome parse_in_one_piece(AllocationParser& parser, std::string_view text)
{
    const auto copy = std::make_unique<char[]>(text.size());
    text.copy(copy.get(), text.size());
    parser.begin();
    return outcome_of([&] { parser.add({copy.get(), text.size()}); });
}

Outcome parse_node(AllocationParser& parser, std::string_view text)
{
    static NodeFile file;
    file.set(text);
    NodePieces node;
    parser.begin();
    return outcome_of([&] {
        const bool is_read = node.read_at(0, file.path().c_str(),
                                          [&](std::string_view lines) { parser.add(lines); });
        check(is_read, "a node that is there can be read");
    });
}

}  // namespace

void try_input(std::string_view input)
{
    const uint8_t control = take_byte(input);
    const bool va_driver = (control & 4U) != 0;
    AllocationParser pieces{va_driver};
    AllocationParser whole{va_driver};
    uint8_t times = control;
    for (const std::string_view part : split(input, kMostNodes)) {
        // The first alone: all of them as long would take as long as twenty other inputs.
        const std::string text = repeated(part, std::exchange(times, uint8_t{0}), kMostBytes);
        Record expected{};
        const Outcome outcome = read_plainly(text, va_driver, expected);
        check(parse_node(pieces, text) == outcome, "a node ends as its lines do");
        check(parse_in_one_piece(whole, text) == outcome, "a text ends as its lines do");
        if (outcome != Outcome::kDone) {
            return;
        }
        check_same(pieces, expected);
        check_same(whole, expected);
    }
}

}  // namespace nimba::fuzz
