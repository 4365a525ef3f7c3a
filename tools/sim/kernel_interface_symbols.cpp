// SPDX-License-Identifier: MIT
#include "kernel_interface_symbols.hpp"

#include "test_bed_error.hpp"

#include <elf.h>
#include <link.h>

#include <cstddef>
#include <cstring>

namespace nimba::sim {
namespace {

using Header = ElfW(Ehdr);
using Section = ElfW(Shdr);
using Symbol = ElfW(Sym);

// The records of a file, at their places.
class Image {
  public:
    explicit Image(std::string& bytes) : bytes_{bytes} {}

    template <typename Record>
    Record get(std::size_t offset) const
    {
        require(offset, sizeof(Record));
        Record record;
        std::memcpy(&record, bytes_.data() + offset, sizeof(record));
        return record;
    }

    template <typename Record>
    void set(std::size_t offset, const Record& record)
    {
        std::memcpy(bytes_.data() + offset, &record, sizeof(record));
    }

    std::string text(std::size_t offset) const
    {
        require(offset, 1);
        return bytes_.c_str() + offset;
    }

  private:
    void require(std::size_t offset, std::size_t size) const
    {
        if (offset > bytes_.size() || size > bytes_.size() - offset) {
            throw TestBedError{"a stand-in for a kernel-interface library is damaged"};
        }
    }

    std::string& bytes_;
};

Section section(const Image& image, std::size_t index)
{
    const auto header = image.get<Header>(0);
    return image.get<Section>(header.e_shoff + index * sizeof(Section));
}

void keep_symbols_of(Image& image, const Section& symbols, const std::set<std::string>& names)
{
    const std::size_t first_name = section(image, symbols.sh_link).sh_offset;
    for (std::size_t place = 0; place < symbols.sh_size; place += sizeof(Symbol)) {
        auto symbol = image.get<Symbol>(symbols.sh_offset + place);
        if (symbol.st_shndx != SHN_UNDEF &&
            !names.contains(image.text(first_name + symbol.st_name))) {
            // The loader takes it for a symbol of another library.
            symbol.st_shndx = SHN_UNDEF;
            symbol.st_value = 0;
            image.set(symbols.sh_offset + place, symbol);
        }
    }
}

}  // namespace

void keep_symbols(std::string& library, const std::set<std::string>& names)
{
    Image image{library};
    const std::size_t sections = image.get<Header>(0).e_shnum;
    for (std::size_t index = 0; index < sections; ++index) {
        const Section candidate = section(image, index);
        if (candidate.sh_type == SHT_DYNSYM) {
            keep_symbols_of(image, candidate, names);
        }
    }
}

}  // namespace nimba::sim
