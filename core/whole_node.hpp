// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace nimba {

// Replaces `text` by what there is to read, whatever bytes that are. Its memory is used again.
// Returns false when it cannot be read to its end; `text` then is what could be.
bool read_to_end(int descriptor, std::string& text);

// Replaces `text` by that of a node, as read_to_end. Returns false when the node cannot be opened
// or not be read to its end.
bool read_whole_node(int directory, const char* name, std::string& text);

}  // namespace nimba
