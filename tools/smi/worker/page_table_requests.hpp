// SPDX-License-Identifier: MIT
// What a worker answers about the page tables. They are those of DRM minor 0, and need no adapter.
#pragma once

#include "tools/smi/worker/message.hpp"
#include "tools/smi/worker/session.hpp"

#include <string_view>

namespace nimba::smi {

// Has the library read the driver, and tells what there is.
Message answer_page_tables(Session& session);

// The next block of records of that reading, from a number on: "DEVICE LEVEL FIRST" for the entries
// of page tables and for pages, "FIRST" for allocations.
Message answer_table_entries(Session& session, std::string_view arguments);
Message answer_pages(Session& session, std::string_view arguments);
Message answer_vm_allocations(Session& session, std::string_view arguments);

}  // namespace nimba::smi
