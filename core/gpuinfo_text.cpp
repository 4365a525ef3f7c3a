// SPDX-License-Identifier: MIT
#include "core/gpuinfo_text.hpp"

#include "core/scan_text.hpp"

#include <array>
#include <cstdio>
#include <cstring>

namespace nimba {
namespace {

constexpr std::size_t kPathSize = 32;
constexpr std::size_t kLineSize = 100;

// The numbers of the line that was read last. A line that gives fewer than its format asks for
// leaves those of the lines before: callers rely on it.
struct Numbers {
    uint32_t a = 0;
    uint32_t b = 0;
    uint32_t c = 0;
    uint32_t d = 0;
};

// The same number, for a format that reads a signed one.
int* as_signed(uint32_t& number)
{
    return reinterpret_cast<int*>(&number);
}

struct LastingLine {
    const char* key;
    const char* other_key;  // looked for when there is no such line; null: none
    void (*read)(const char* text, Numbers& numbers, adapter_summary_ext2& record);
};

struct ChangingLine {
    const char* key;
    uint32_t adapter_summary_ext2::*field;
};

template <uint32_t adapter_summary_ext2::*Field>
void read_number(const char* text, Numbers& n, adapter_summary_ext2& record)
{
    scan_text(text, "%u", &n.a);
    record.*Field = n.a;
}

// The numbers are signed; one below zero takes from what stands before it.
template <uint64_t adapter_summary_ext2::*Field>
void read_resolution(const char* text, Numbers& n, adapter_summary_ext2& record)
{
    const auto wide = [](uint32_t number) {
        return static_cast<uint64_t>(int64_t{static_cast<int32_t>(number)});
    };
    scan_text(text, "%d x %d@%d", as_signed(n.a), as_signed(n.b), as_signed(n.c));
    record.*Field = (wide(n.a) << 48U) + (wide(n.b) << 32U) + wide(n.c);
}

void read_driver_version(const char* text, Numbers& n, adapter_summary_ext2& record)
{
    scan_text(text, "%x.%x.%x", &n.a, &n.b, &n.c);
    record.driver_version = (uint64_t{n.a} << 32U) + (uint64_t{n.b} << 16U) + n.c;
}

void read_firmware_version(const char* text, Numbers& n, adapter_summary_ext2& record)
{
    scan_text(text, "%x.%x.%x.%x", &n.a, &n.b, &n.c, &n.d);
    record.firmware_version =
        (uint64_t{n.a} << 48U) + (uint64_t{n.b} << 32U) + (uint64_t{n.c} << 16U) + n.d;
}

void read_firmware_name(const char* text, Numbers& /*n*/, adapter_summary_ext2& record)
{
    safe_str_copy_till_return(record.firmware_name, text, sizeof record.firmware_name);
}

// The second number is that of the lanes.
void read_pcie_generation(const char* text, Numbers& n, adapter_summary_ext2& record)
{
    scan_text(text, "%d.0 x%d", as_signed(n.a), as_signed(n.b));
    record.pcie_gen = n.a;
}

using Record = adapter_summary_ext2;

constexpr std::array kLastingLines{
    LastingLine{"Driver Version : ", nullptr, read_driver_version},
    LastingLine{"Firmware Version : ", nullptr, read_firmware_version},
    LastingLine{"Firmware Name : ", nullptr, read_firmware_name},
    LastingLine{"Pixel Fillrate : ", nullptr, read_number<&Record::pixel_fillrate>},
    LastingLine{"Texture Fillrate : ", nullptr, read_number<&Record::texture_fillrate>},
    LastingLine{"HDMI Max Display Resolution : ", "DP Max Display Resolution : ",
                read_resolution<&Record::max_resolution_hdmi_dp>},
    LastingLine{"VGA Max Display Resolution : ", nullptr,
                read_resolution<&Record::max_resolution_vga>},
    LastingLine{"Bus Type : PCIE", nullptr, read_pcie_generation},
};

constexpr std::array kChangingLines{
    ChangingLine{"Memory Clock Freq : ", &Record::memory_clock_freq},
    ChangingLine{"GPU Memory Usage : ", &Record::gpu_memory_usage},
    ChangingLine{"GPU Use Rate(3d) : ", &Record::gpu_use_rate_3d},
    ChangingLine{"GPU Use Rate(video) : ", &Record::gpu_use_rate_video},
    ChangingLine{"GPU Use Rate(vpp) : ", &Record::gpu_use_rate_vpp},
    ChangingLine{"Realtime Temperature : ", &Record::realtime_temperature},
};

// The first line of a text with its newline, or what there is without one. Empty when it does not
// fit, which is told on standard output.
std::array<char, kLineSize> first_line(const char* text)
{
    std::array<char, kLineSize> line{};
    const char* const newline = std::strchr(text, '\n');
    const std::size_t length =
        newline == nullptr ? std::strlen(text) : static_cast<std::size_t>(newline - text) + 1;
    if (length >= line.size()) {
        std::puts("get_line_from_string fail, string too long!!!");
    } else {
        std::memcpy(line.data(), text, length);
    }
    return line;
}

// A name is looked for anywhere in the list, so that "EDP" counts as "DP", too: callers rely on it.
uint32_t types_in(const std::array<char, kLineSize>& list)
{
    uint32_t types = 0;
    for (const connect_type& type : support_CONNECT_type_list) {
        if (find_str_in_buffer(list.data(), static_cast<int32_t>(list.size()), type.name) >= 0) {
            types |= type.bit;
        }
    }
    return types;
}

// The hexadecimal number at the beginning of a value; nothing without one.
std::optional<uint32_t> hex_number(const char* value)
{
    unsigned number = 0;
    return value != nullptr && scan_text(value, "%x", &number) == 1 ? std::optional(number)
                                                                    : std::nullopt;
}

}  // namespace

bool GpuinfoText::read(int card)
{
    std::array<char, kPathSize> path{};
    std::snprintf(path.data(), path.size(), "/proc/gpuinfo_%d", card);
    return bytes_.read(0, path.data()) > 0;
}

DisplayOutputs told_outputs(const GpuinfoText& text, uint32_t chip_id)
{
    const char* const count = text.behind("Max Display Port : ");
    if (hex_number(text.behind("Device ID : ")) != chip_id || count == nullptr) {
        return {};
    }
    const char* const list = text.behind("Support Display Type :");
    const DisplayOutputs outputs{hex_number(count).value_or(0),
                                 list == nullptr ? 0 : types_in(first_line(list))};
    return outputs.count != 0 && outputs.types != 0 ? outputs : DisplayOutputs{};
}

adapter_summary_ext2 lasting_fields(const GpuinfoText& text)
{
    adapter_summary_ext2 record{};
    Numbers numbers;
    for (const LastingLine& line : kLastingLines) {
        const char* value = text.behind(line.key);
        if (value == nullptr && line.other_key != nullptr) {
            value = text.behind(line.other_key);
        }
        if (value != nullptr) {
            line.read(value, numbers, record);
        }
    }
    return record;
}

void read_changing_fields(const GpuinfoText& text, adapter_summary_ext2& record)
{
    for (const ChangingLine& line : kChangingLines) {
        if (const char* const value = text.behind(line.key)) {
            scan_text(value, "%u", &(record.*line.field));
        }
    }
}

}  // namespace nimba
