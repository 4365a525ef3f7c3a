// SPDX-License-Identifier: MIT
// The sections of the page. Each says in words when there is nothing to show.
#pragma once

#include "tools/smi/report/content.hpp"
#include "tools/smi/report/html.hpp"

namespace nimba::smi::page {

// How many of the document's adapters adapters_of leaves out.
Html adapters_left_out(const Document& document);

Html overview_section(const Content& content);
Html findings_section(const Content& content);
Html unread_section(const Content& content);
Html clocks_section(const Content& content);
Html memory_section(const Content& content);
Html allocations_section(const Content& content);
Html leaks_section(const Content& content);
Html page_tables_section(const Content& content);
Html summary_section(const Content& content);

}  // namespace nimba::smi::page
