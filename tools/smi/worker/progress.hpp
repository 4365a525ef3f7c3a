// SPDX-License-Identifier: MIT
// How far a worker came, in memory that it shares with its parent: it tells what discovery found,
// and what is to be tidied up, also when the worker is lost.
#pragma once

#include "nimba_mgmt_interface.h"
#include "tools/descriptor.hpp"
#include "tools/smi/adapter.hpp"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::smi {

// Zero until discovery begins.
struct DiscoveryProgress {
    find_adapter adapters;  // the library's record; chip_num counts the slots that are complete
    char reached[20];       // bus id of the last device whose location was told; empty before
    bool entered;           // an adapter is current: the driver accounts for its usage
};

struct ProgressUnmapper {
    void operator()(DiscoveryProgress* progress) const;
};
using SharedProgress = std::unique_ptr<DiscoveryProgress, ProgressUnmapper>;

// New memory for a progress. No descriptor when there is none; errno tells why.
tools::Descriptor make_progress_memory();

// The progress in that memory; null when it cannot be mapped, and errno tells why.
SharedProgress map_progress(int memory);

// From now on note_message writes into `progress`, which must live as long.
void note_messages_in(DiscoveryProgress& progress);

// Takes note when a message of the library tells the location of the device that it is at.
void note_message(std::string_view message);

// "0000:01:00.0" from the message "gpu_busid: 0x0000:01:00.0\n"; nothing from others.
std::optional<std::string> bus_id_in_message(std::string_view message);

// The adapter that was begun and not completed.
std::optional<std::string> unfinished_adapter(const DiscoveryProgress& progress);

// The adapters that were completed, as far as the record tells. Of a third one only its handles
// are certain: a GPU of another vendor may have taken its name, device and card.
std::vector<Adapter> finished_adapters(const DiscoveryProgress& progress);

}  // namespace nimba::smi
