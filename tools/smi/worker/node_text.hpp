// SPDX-License-Identifier: MIT
// What stands in a node whose value the library reads as 0: it does not tell whether there is one.
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

// The beginning of a node's text, or the number of the error that kept it from being read.
struct NodeText {
    int error = 0;
    std::string text;

    bool operator==(const NodeText&) const = default;
};

// Reads as much of the node <directory>/<name> as the library looks at.
NodeText node_text(int directory, const char* name);

// Whether the first word of a text is a decimal number: only then the library's figure is the
// driver's, which reads "0x10" as 0.
bool begins_with_number(std::string_view text);

// The error number says that there is no such node.
bool means_absent(int error);

}  // namespace nimba::smi
