// SPDX-License-Identifier: MIT
// The text of the driver's file /proc/gpuinfo_<card>.
#include "core/gpuinfo_text.hpp"
#include "fuzz/support/check.hpp"
#include "fuzz/support/input.hpp"
#include "fuzz/support/machine_paths.hpp"
#include "fuzz/support/node_file.hpp"
#include "fuzz/support/target.hpp"

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

namespace nimba::fuzz {
namespace {

constexpr std::size_t kBufferSize = 1024;
constexpr std::size_t kMostBytes = 4'000;
constexpr uint32_t kChip = 0x1001;

// What stands behind a key, and whether there is such a key.
class PlainText final {
  public:
    explicit PlainText(const std::string& text) : text_{text.substr(0, kBufferSize)}
    {
        text_.resize(kBufferSize);
    }

    bool find(const char* key)
    {
        const std::size_t at = text_.substr(0, kBufferSize - 1).find(key);
        behind_ = at == std::string::npos ? "" : up_to_nul(text_.substr(at + std::strlen(key)));
        return at != std::string::npos;
    }
    [[nodiscard]] const char* behind() const { return behind_.c_str(); }
    [[nodiscard]] std::string line() const
    {
        const std::size_t newline = behind_.find('\n');
        return behind_.substr(0, newline == std::string::npos ? newline : newline + 1);
    }

  private:
    std::string text_;
    std::string behind_;
};

uint64_t wide(int number)
{
    return static_cast<uint64_t>(int64_t{number});
}

// NOLINTBEGIN(cert-err34-c): scanf's rules are what the text is defined by

// The scanned numbers, which a line that gives fewer keeps.
class LastingFields final {
  public:
    explicit LastingFields(PlainText& text) : text_{text} {}

    adapter_summary_ext2 read()
    {
        read_versions();
        if (text_.find("Firmware Name : ")) {
            const std::string line = text_.line();
            line.substr(0, line.find('\n')).copy(record_.firmware_name, 31);
        }
        read_fill_rate("Pixel Fillrate : ", record_.pixel_fillrate);
        read_fill_rate("Texture Fillrate : ", record_.texture_fillrate);
        if (!read_resolution("HDMI Max Display Resolution : ", record_.max_resolution_hdmi_dp)) {
            read_resolution("DP Max Display Resolution : ", record_.max_resolution_hdmi_dp);
        }
        read_resolution("VGA Max Display Resolution : ", record_.max_resolution_vga);
        if (text_.find("Bus Type : PCIE")) {
            std::sscanf(text_.behind(), "%d.0 x%d", &a_, &b_);
            record_.pcie_gen = static_cast<uint32_t>(a_);
        }
        return record_;
    }

  private:
    void read_versions()
    {
        if (text_.find("Driver Version : ")) {
            std::sscanf(text_.behind(), "%x.%x.%x", as_unsigned(a_), as_unsigned(b_),
                        as_unsigned(c_));
            record_.driver_version = (number(a_) << 32U) + (number(b_) << 16U) + number(c_);
        }
        if (text_.find("Firmware Version : ")) {
            std::sscanf(text_.behind(), "%x.%x.%x.%x", as_unsigned(a_), as_unsigned(b_),
                        as_unsigned(c_), as_unsigned(d_));
            record_.firmware_version =
                (number(a_) << 48U) + (number(b_) << 32U) + (number(c_) << 16U) + number(d_);
        }
    }

    void read_fill_rate(const char* key, uint32_t& field)
    {
        if (text_.find(key)) {
            std::sscanf(text_.behind(), "%u", as_unsigned(a_));
            field = static_cast<uint32_t>(a_);
        }
    }

    bool read_resolution(const char* key, uint64_t& field)
    {
        const bool is_told = text_.find(key);
        if (is_told) {
            std::sscanf(text_.behind(), "%d x %d@%d", &a_, &b_, &c_);
            field = (wide(a_) << 48U) + (wide(b_) << 32U) + wide(c_);
        }
        return is_told;
    }

    static unsigned* as_unsigned(int& number) { return reinterpret_cast<unsigned*>(&number); }
    static uint64_t number(int value) { return static_cast<uint32_t>(value); }

    PlainText& text_;
    adapter_summary_ext2 record_{};
    int a_ = 0;
    int b_ = 0;
    int c_ = 0;
    int d_ = 0;
};

DisplayOutputs outputs_of(PlainText text)
{
    unsigned chip = 0;
    unsigned count = 0;
    if (!text.find("Device ID : ") || std::sscanf(text.behind(), "%x", &chip) != 1 ||
        chip != kChip || !text.find("Max Display Port : ")) {
        return {};
    }
    std::sscanf(text.behind(), "%x", &count);
    const std::string line = text.find("Support Display Type :") ? text.line() : "";
    uint32_t types = 0;
    constexpr std::array kNames{"VGA", "DVI", "HDMI", "DP", "EDP"};
    for (std::size_t type = 0; type < kNames.size() && line.size() < 100; ++type) {
        types |= line.find(kNames[type]) == std::string::npos ? 0U : 1U << type;
    }
    return count != 0 && types != 0 ? DisplayOutputs{count, types} : DisplayOutputs{};
}

void read_changing(PlainText& text, adapter_summary_ext2& record)
{
    const auto read = [&](const char* key, uint32_t& field) {
        if (text.find(key)) {
            std::sscanf(text.behind(), "%u", &field);
        }
    };
    read("Memory Clock Freq : ", record.memory_clock_freq);
    read("GPU Memory Usage : ", record.gpu_memory_usage);
    read("GPU Use Rate(3d) : ", record.gpu_use_rate_3d);
    read("GPU Use Rate(video) : ", record.gpu_use_rate_video);
    read("GPU Use Rate(vpp) : ", record.gpu_use_rate_vpp);
    read("Realtime Temperature : ", record.realtime_temperature);
}

// NOLINTEND(cert-err34-c)

bool is_same(const adapter_summary_ext2& a, const adapter_summary_ext2& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace

void try_input(std::string_view input)
{
    static NodeFile file;
    redirect("/proc/gpuinfo_3", file.path());
    const uint8_t control = take_byte(input);
    const std::string text = repeated(input, control, kMostBytes);
    file.set(text);
    PlainText plain{text};
    GpuinfoText read;
    check(read.read(3) == !text.empty(), "a file that has text can be read");
    adapter_summary_ext2 record = lasting_fields(read);
    adapter_summary_ext2 expected = LastingFields{plain}.read();
    check(is_same(record, expected), "lasting fields are those of their lines");
    read_changing_fields(read, record);
    read_changing(plain, expected);
    check(is_same(record, expected), "changing fields are those of their lines");
    check(told_outputs(read, kChip) == outputs_of(plain), "outputs are those of their lines");
}

}  // namespace nimba::fuzz
