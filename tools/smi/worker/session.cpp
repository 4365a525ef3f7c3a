// SPDX-License-Identifier: MIT
#include "tools/smi/worker/session.hpp"

#include "tools/smi/worker/surroundings.hpp"

#include <algorithm>
#include <variant>

namespace nimba::smi {

std::optional<Failure> Session::ensure_library()
{
    if (library_) {
        return std::nullopt;
    }
    auto loaded = call("dlopen", [&] { return load_library(options_.library); });
    if (const auto* const message = std::get_if<std::string>(&loaded)) {
        return Failure{ExitStatus::kNoLibrary, call_, *message};
    }
    library_ = std::get<Library>(std::move(loaded));
    const EntryPoints& entry = library_->entry;
    call("set_print_callback",
         [&] { return entry.set_print_callback(options_.verbose ? show_message : drop_message); });
    handshake_.client_interface_version = NIMBA_INTERFACE_VERSION;
    call("get_interface_version_ext1",
         [&] { return entry.get_interface_version_ext1(&handshake_); });
    return std::nullopt;
}

const DiscoveryRecords& Session::discover()
{
    if (!records_) {
        const EntryPoints& entry = library_->entry;
        progress_.adapters = unfilled_adapters();
        note_messages_in(progress_);
        call("gfx_find_adapter", [&] { return entry.gfx_find_adapter(&progress_.adapters); });
        std::ranges::fill(progress_.reached, '\0');
        records_.emplace().adapters = progress_.adapters;
        call("gfx_find_adapter_ext1",
             [&] { return entry.gfx_find_adapter_ext1(&records_->identity); });
    }
    return *records_;
}

bool Session::enter_adapter(const find_adapter& adapters)
{
    if (!adapters_) {
        const EntryPoints& entry = library_->entry;
        adapters_ = adapters;
        complete_ =
            call("gfx_global_init", [&] { return entry.gfx_global_init(&*adapters_); }) >= 0;
        progress_.entered = true;
    }
    return complete_;
}

void Session::leave_adapter()
{
    if (adapters_) {
        const EntryPoints& entry = library_->entry;
        const int slot = adapters_->chip_id_idx;
        call("gfx_global_exit", [&] { return entry.gfx_global_exit(slot); });
        progress_.entered = false;
        adapters_.reset();
    }
}

}  // namespace nimba::smi
