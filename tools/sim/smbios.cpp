// SPDX-License-Identifier: MIT
#include "smbios.hpp"

#include <concepts>
#include <cstdint>
#include <numeric>
#include <string_view>

namespace nimba::sim {
namespace {

constexpr uint8_t kPhysicalMemoryArray = 16;
constexpr uint8_t kMemoryDevice = 17;
constexpr uint8_t kEndOfTable = 127;

constexpr uint16_t kArrayHandle = 0x1000;
constexpr uint16_t kFirstModuleHandle = 0x1100;
constexpr uint16_t kEndHandle = 0x7F00;

constexpr uint16_t kNoErrorInformation = 0xFFFE;
constexpr uint16_t kUnknownWord = 0xFFFF;
constexpr uint16_t kSizeIsExtended = 0x7FFF;
constexpr uint32_t kCapacityIsExtended = 0x80000000;

// Appends a number, its lowest byte first.
template <std::unsigned_integral Number>
void append(std::string& bytes, Number number)
{
    for (unsigned shift = 0; shift < 8 * sizeof(number); shift += 8) {
        bytes += static_cast<char>(static_cast<uint64_t>(number) >> shift);
    }
}

// The byte that makes the sum of all a multiple of 256.
char checksum(std::string_view bytes)
{
    return static_cast<char>(-std::accumulate(bytes.begin(), bytes.end(), 0));
}

// A structure of the table.
class Structure {
  public:
    Structure(uint8_t type, uint16_t handle) : bytes_{static_cast<char>(type), '\0'}
    {
        number(handle);
    }

    template <std::unsigned_integral Number>
    void number(Number number)
    {
        append(bytes_, number);
    }

    void text(const std::string& text)
    {
        if (!text.empty()) {
            texts_ += text + '\0';
            ++last_text_;
        }
        number(text.empty() ? uint8_t{0} : last_text_);
    }

    std::string bytes() const
    {
        std::string bytes = bytes_;
        bytes[1] = static_cast<char>(bytes.size());
        return bytes + (texts_.empty() ? std::string(1, '\0') : texts_) + '\0';
    }

  private:
    std::string bytes_;
    std::string texts_;
    uint8_t last_text_ = 0;
};

std::string memory_array(const std::vector<MemoryModule>& modules)
{
    uint64_t mebibytes = 0;
    for (const MemoryModule& module : modules) {
        mebibytes += module.size;
    }
    Structure array{kPhysicalMemoryArray, kArrayHandle};
    array.number(uint8_t{3});  // on the system board
    array.number(uint8_t{3});  // system memory
    array.number(uint8_t{3});  // without error correction
    array.number(kCapacityIsExtended);
    array.number(kNoErrorInformation);
    array.number(static_cast<uint16_t>(modules.size()));
    array.number(mebibytes << 20U);
    return array.bytes();
}

uint16_t known(uint16_t width)
{
    return width == 0 ? kUnknownWord : width;
}

std::string memory_device(const MemoryModule& module, uint16_t handle)
{
    const bool is_extended = module.size >= kSizeIsExtended;
    Structure device{kMemoryDevice, handle};
    device.number(kArrayHandle);
    device.number(kNoErrorInformation);
    device.number(known(module.total_width));
    device.number(known(module.data_width));
    device.number(is_extended ? kSizeIsExtended : static_cast<uint16_t>(module.size));
    device.number(uint8_t{9});  // a DIMM
    device.number(uint8_t{0});  // of no set
    device.text(module.locator);
    device.text(module.bank_locator);
    device.number(module.type);
    device.number(uint16_t{0x80});  // synchronous
    device.number(module.speed);
    device.text("Simulated");   // manufacturer
    device.text("");            // serial number
    device.text("");            // asset tag
    device.text("");            // part number
    device.number(uint8_t{0});  // unknown rank
    device.number(is_extended ? module.size : uint32_t{0});
    device.number(module.speed);  // configured
    device.number(uint16_t{0});   // voltages: least, greatest and configured
    device.number(uint16_t{0});
    device.number(uint16_t{0});
    return device.bytes();
}

std::string entry_point(std::size_t table_size)
{
    std::string bytes{"_SM3_"};
    bytes += '\0';                     // the checksum
    bytes += {'\x18', 3, 0, 0, 1, 0};  // length, version 3.0, revisions, reserved
    append(bytes, static_cast<uint32_t>(table_size));
    append(bytes, uint64_t{0});  // the table's address, which the kernel's files do not need
    bytes[5] = checksum(bytes);
    return bytes;
}

}  // namespace

SmbiosFiles make_smbios_files(const std::vector<MemoryModule>& modules)
{
    std::string table = memory_array(modules);
    uint16_t handle = kFirstModuleHandle;
    for (const MemoryModule& module : modules) {
        table += memory_device(module, handle++);
    }
    table += Structure{kEndOfTable, kEndHandle}.bytes();
    return {entry_point(table.size()), table};
}

}  // namespace nimba::sim
