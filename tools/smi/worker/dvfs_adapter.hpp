// SPDX-License-Identifier: MIT
// The worker's adapter, made current in the library for settings alone. Its usage accounting, which
// others may use at that time, is left as it is.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/smi/worker/dvfs_library.hpp"
#include "tools/smi/worker/dvfs_nodes.hpp"
#include "tools/smi/worker/session.hpp"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace nimba::smi {

struct SelectedAdapter {
    std::string bus_id;
    std::optional<uint32_t> chip;  // its PCI device identifier
    InfoDirectory info;
};

// Looks up the entry points, makes the adapter current and calls `answer` with both. The library
// points into a record that ends with this call. Without the entry points the message is a failure;
// in an empty slot it is `empty`.
Message with_selected_adapter(
    Session& session, const Message& empty,
    const std::function<Message(const DvfsEntryPoints&, const SelectedAdapter&)>& answer);

}  // namespace nimba::smi
