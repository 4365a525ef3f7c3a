// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace nimba {

// Replaces `text` by that of a node, whatever bytes it has. Its memory is used again for the next
// node. Returns false when the node cannot be opened or not be read to its end.
bool read_whole_node(int directory, const char* name, std::string& text);

}  // namespace nimba
