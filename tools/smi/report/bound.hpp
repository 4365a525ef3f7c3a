// SPDX-License-Identifier: MIT
// Keeps documents to a size that a page can show, whatever the machine has.
#pragma once

#include "tools/smi/text/document.hpp"

namespace nimba::smi::page {

// Cuts long lists: 200 elements of one of the document itself, 100 of one in these elements, and 4
// of one in those. An object whose list was cut gets "<list>_left_out", how many elements went.
void bound(Document& document);

}  // namespace nimba::smi::page
