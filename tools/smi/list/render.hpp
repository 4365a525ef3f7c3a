// SPDX-License-Identifier: MIT
// The faces of a listing.
#pragma once

#include "tools/smi/list/snapshot.hpp"
#include "tools/smi/text/document.hpp"

#include <string>
#include <string_view>

namespace nimba::smi {

// A table, at most 80 columns wide for names of the product's length; empty when nothing was found.
std::string list_text(const ListSnapshot& snapshot);

// A header line, and one line for each adapter and for the foreign GPU, which has no slot.
std::string list_csv(const ListSnapshot& snapshot);

// The document "nimba-smi.list.1".
std::string list_json(const ListSnapshot& snapshot);

// "va", "legacy" or "unknown"
std::string_view driver_word(DriverKind kind);

// An adapter, and the GPU of another vendor, as objects of documents.
Document adapter_json(const Adapter& adapter);
Document foreign_json(const ForeignGpu& gpu);

}  // namespace nimba::smi
