// SPDX-License-Identifier: MIT
#include "tools/smi/worker/entered_adapter.hpp"

#include "tools/smi/worker/own_adapter.hpp"

#include <utility>

namespace nimba::smi {

std::optional<EnteredAdapter> enter_own_adapter(Session& session)
{
    auto adapter = own_adapter(session);
    if (!adapter) {
        return std::nullopt;
    }
    const bool complete =
        session.enter_adapter(record_to_enter(session.discover().adapters, *adapter));
    return EnteredAdapter{*std::move(adapter), complete};
}

}  // namespace nimba::smi
