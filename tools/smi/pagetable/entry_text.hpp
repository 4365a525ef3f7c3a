// SPDX-License-Identifier: MIT
// All entries one by one, as a JSON document or as comma-separated values, in pieces that can be
// written as they come.
#pragma once

#include "tools/smi/exit_status.hpp"
#include "tools/smi/pagetable/record.hpp"

#include <cstddef>
#include <memory>
#include <span>
#include <string>

namespace nimba::smi {

// The pieces in their order: begin; tables and pages of each device; allocations; end.
class EntryText {
  public:
    virtual ~EntryText() = default;

    virtual std::string begin(std::span<const VmDevice> devices) = 0;

    // `device`: which of the devices it is.
    virtual std::string tables(std::size_t device, std::span<const TableRecord> records) = 0;
    virtual std::string pages(std::size_t device, std::span<const PageRecord> records) = 0;
    virtual std::string allocations(std::span<const VmAllocationRecord> records) = 0;

    // Without this piece a JSON document is not whole.
    virtual std::string end(std::span<const Problem> problems) = 0;
};

// The document "nimba-smi.pagetable.1".
std::unique_ptr<EntryText> entries_as_json(const AddressSplit& split);

// A header line and one line for each entry and each allocation.
std::unique_ptr<EntryText> entries_as_csv(const AddressSplit& split);

}  // namespace nimba::smi
