// SPDX-License-Identifier: MIT
#include "bench/plain_reader.hpp"

#include "bench/directory.hpp"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

namespace nimba::bench {
namespace {

struct Key {
    const char* name;
    int32_t _GFX_ALLOCATION_INFO::*field;
    int base;
};

constexpr Key kKeys[] = {
    {"width", &_GFX_ALLOCATION_INFO::width, 10},
    {"height", &_GFX_ALLOCATION_INFO::height, 10},
    {"pitch", &_GFX_ALLOCATION_INFO::pitch, 10},
    {"bit_cnt", &_GFX_ALLOCATION_INFO::bit_cnt, 10},
    {"hw_format", &_GFX_ALLOCATION_INFO::hw_format, 10},
    {"secured", &_GFX_ALLOCATION_INFO::secured, 10},
    {"tile", &_GFX_ALLOCATION_INFO::tile, 10},
    {"segmentid", &_GFX_ALLOCATION_INFO::segmentid, 10},
    {"gpu_virt_addr", &_GFX_ALLOCATION_INFO::gpu_virt_addr, 10},
    {"bl_slot_index", &_GFX_ALLOCATION_INFO::bl_slot_index, 10},
    {"compress_format", &_GFX_ALLOCATION_INFO::compress_format, 10},
    {"handle", &_GFX_ALLOCATION_INFO::handle, 16},
    {"device", &_GFX_ALLOCATION_INFO::device, 16},
    {"size", &_GFX_ALLOCATION_INFO::size, 10},
    {"cpu_visible", &_GFX_ALLOCATION_INFO::cpu_visible, 10},
    {"cache_type", &_GFX_ALLOCATION_INFO::cache_type, 10},
    {"pool_type", &_GFX_ALLOCATION_INFO::pool_type, 10},
    {"at_type", &_GFX_ALLOCATION_INFO::at_type, 10},
    {"imported", &_GFX_ALLOCATION_INFO::imported, 10},
    {"fb_offset", &_GFX_ALLOCATION_INFO::fb_offset, 10},
    {"share", &_GFX_ALLOCATION_INFO::share, 10},
};

struct CloseStream {
    void operator()(std::FILE* stream) const { std::fclose(stream); }
};

// What getline allocates.
class Line final {
  public:
    Line() = default;
    ~Line() { std::free(text_); }
    Line(const Line&) = delete;
    Line& operator=(const Line&) = delete;

    bool read(std::FILE* stream) { return ::getline(&text_, &size_, stream) != -1; }
    std::string text() const { return text_; }

  private:
    char* text_ = nullptr;
    std::size_t size_ = 0;
};

void read_line(const std::string& line, _GFX_ALLOCATION_INFO& record)
{
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos) {
        return;
    }
    const std::string name = line.substr(0, equals);
    const std::string value = line.substr(equals + 1);
    for (const Key& key : kKeys) {
        if (name == key.name) {
            record.*key.field = static_cast<int32_t>(std::strtol(value.c_str(), nullptr, key.base));
            return;
        }
    }
}

_GFX_ALLOCATION_INFO read_node(const std::string& path)
{
    const std::unique_ptr<std::FILE, CloseStream> node{std::fopen(path.c_str(), "r")};
    if (node == nullptr) {
        throw std::system_error{errno, std::generic_category(), path};
    }
    _GFX_ALLOCATION_INFO record{};
    Line line;
    while (line.read(node.get())) {
        read_line(line.text(), record);
    }
    record.hit_count = 1;
    record.sum_count = 1;
    return record;
}

}  // namespace

std::vector<_GFX_ALLOCATION_INFO> read_plainly(const std::string& debug_directory)
{
    const std::string path = debug_directory + "/allocations";
    const Directory allocations = open_directory(path);
    std::vector<_GFX_ALLOCATION_INFO> list;
    while (const dirent* const entry = next_entry(allocations)) {
        list.push_back(read_node(path + "/" + entry->d_name + "/info"));
    }
    return list;
}

}  // namespace nimba::bench
