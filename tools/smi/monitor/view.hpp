// SPDX-License-Identifier: MIT
// How a command's samples look, in each of its forms.
#pragma once

#include "tools/smi/text/document.hpp"
#include "tools/smi/text/table.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace nimba::smi {

template <typename Content>
struct MonitorView {
    std::string schema;              // of its JSON document
    Row text_header;                 // behind the slot
    std::vector<std::size_t> right;  // its columns that end at the same place
    Row csv_header;                  // behind slot and bus id
    // The rows of an adapter, without slot and bus id.
    std::function<std::vector<Row>(const Content&)> text_rows;
    std::function<std::vector<Row>(const Content&)> csv_rows;
    std::function<Document(const Content&)> json;  // the members of an adapter behind its identity
};

}  // namespace nimba::smi
