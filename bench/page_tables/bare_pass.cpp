// SPDX-License-Identifier: MIT
#include "bench/page_tables/bare_pass.hpp"

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>
#include <span>
#include <system_error>
#include <vector>

namespace nimba::bench {
namespace {

constexpr std::size_t kPiece = 64 * std::size_t{1024};
constexpr std::size_t kPerLine = sizeof(vidmm_vm_pte_elt3k);

// Memory that is written from its front to its end.
class Output final {
  public:
    explicit Output(std::span<std::byte> room) : room_{room} {}

    void write(const char* from)
    {
        const std::size_t size = std::min(kPerLine, room_.size());
        std::memcpy(room_.data(), from, size);
        room_ = room_.subspan(size);
    }
    void fill() { std::memset(room_.data(), 0, room_.size()); }

  private:
    std::span<std::byte> room_;
};

// Each line writes the bytes of the smaller kind of record.
int take_piece(const char* text, const char* end, Output& output)
{
    int lines = 0;
    while (text < end) {
        const void* const newline = std::memchr(text, '\n', static_cast<std::size_t>(end - text));
        if (newline == nullptr) {
            break;
        }
        output.write(text);
        text = static_cast<const char*>(newline) + 1;
        ++lines;
    }
    return lines;
}

}  // namespace

BareDump read_bare_dump(const std::string& path, std::size_t record_bytes)
{
    const tools::Descriptor node{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
    BareDump dump;
    dump.records.reset(static_cast<std::byte*>(std::malloc(record_bytes)));
    if (dump.records == nullptr) {
        throw std::bad_alloc{};
    }
    Output output{{dump.records.get(), record_bytes}};
    std::vector<char> piece(kPiece +
                            kPerLine);  // a record may begin at the last byte that was read
    ssize_t got = 0;
    while ((got = ::read(node.get(), piece.data(), kPiece)) > 0) {
        dump.lines += take_piece(piece.data(), piece.data() + got, output);
    }
    if (got < 0) {
        throw std::system_error{errno, std::generic_category(), path};
    }
    output.fill();  // what page-table records hold more
    return dump;
}

}  // namespace nimba::bench
