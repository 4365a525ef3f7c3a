// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/faces.hpp"

#include "tools/smi/pagetable/number.hpp"
#include "tools/smi/text/json.hpp"
#include "tools/smi/text/printable.hpp"
#include "tools/smi/text/size.hpp"

#include <fmt/core.h>

namespace nimba::smi {

std::string address_text(uint64_t address)
{
    return fmt::format("{:#x}", address);
}

std::string range_text(const AddressRange& range)
{
    return fmt::format("{:#x}-{:#x}", range.begin, range.end - 1);
}

std::string kind_text(const PageKind& kind)
{
    return fmt::format("segment {}, {} pages{}", kind.segment,
                       size_text(kind.page_size(), SizeUnit::kAuto),
                       kind.snooped ? ", snooped" : "");
}

std::string hexadecimal_text(std::string_view digits)
{
    const auto number = hexadecimal_in(digits);
    return number ? address_text(*number) : std::string{digits};
}

void append_line(std::string& text, int depth, std::string_view line)
{
    constexpr std::size_t kIndent = 2;
    text.append(kIndent * static_cast<std::size_t>(depth), ' ') += printable(line);
    text += '\n';
}

Document json_pid(const std::string& pid)
{
    return or_null(decimal_in(pid));
}

Document json_name(const std::string& name)
{
    return name.empty() ? Document(nullptr) : Document(name);
}

Document json_hexadecimal(std::string_view digits)
{
    const auto number = hexadecimal_in(digits);
    return number ? Document(address_text(*number)) : Document(nullptr);
}

Document json_range(const AddressRange& range)
{
    return {{"begin", address_text(range.begin)},
            {"end", address_text(range.end)},
            {"bytes", range.size()}};
}

Document json_kind(const PageKind& kind)
{
    return {{"page_size", kind.page_size()}, {"segment", kind.segment}, {"snooped", kind.snooped}};
}

Document json_allocation(const VmAllocation& allocation)
{
    Document object{{"handle", json_hexadecimal(allocation.handle)}};
    object.update(json_range(allocation.range));
    return object;
}

std::string view_json(const char* schema, const AddressSplit& split,
                      std::span<const ProcessSpace> processes,
                      const std::function<Document(const ProcessSpace&)>& describe,
                      std::span<const Problem> problems)
{
    Document list = Document::array();
    for (const ProcessSpace& process : processes) {
        Document object{{"pid", json_pid(process.device.pid)},
                        {"name", json_name(process.device.name)}};
        object.update(describe(process));
        list.push_back(std::move(object));
    }
    return json_text({{"schema", schema},
                      {"split", split.bits()},
                      {"processes", std::move(list)},
                      {"errors", json_errors(problems)}});
}

}  // namespace nimba::smi
