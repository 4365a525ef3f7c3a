// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/limits.hpp"
#include "tools/descriptor.hpp"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

struct archive;

namespace nimba::archive {

// Writes an archive beside the place of a file, and puts it there when it is complete. Until then
// the file stays as it was; an archive that is not completed leaves nothing.
class Writer final {
  public:
    // Throws ArchiveError, as all members do.
    explicit Writer(const std::string& file, const Limits& limits = {});
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer();

    // Whether an entry of so many bytes is within the limits, with room left for the records that
    // end the archive, and for so many entries of together so many bytes that are to be added
    // before.
    [[nodiscard]] bool has_room(uint64_t bytes, uint64_t waiting_entries = 0,
                                uint64_t waiting_bytes = 0) const;

    void add(const std::string& name, std::string_view bytes);

    // Ends the archive, has it on the disk, and gives it its name.
    void complete();

  private:
    struct Close {
        void operator()(::archive* writer) const;
    };

    void make_temporary();
    void pad() const;
    [[noreturn]] void fail() const;

    std::string target_;
    Limits limits_;
    std::string temporary_;  // empty: there is none (any more)
    tools::Descriptor descriptor_;
    std::unique_ptr<::archive, Close> writer_;
    uint64_t total_ = 0;
    uint64_t entries_ = 0;
};

}  // namespace nimba::archive
