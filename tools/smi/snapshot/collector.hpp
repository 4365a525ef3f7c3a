// SPDX-License-Identifier: MIT
// Takes snapshots of the machine.
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/usage/frame_meter.hpp"
#include "tools/smi/watch/adapter_panel.hpp"
#include "tools/smi/worker/payload.hpp"

#include <cstdint>
#include <map>
#include <optional>

namespace nimba::smi {

// What is asked of the adapters.
enum class SnapshotScope : uint8_t {
    kEverything,
    kSummaries,  // the summary and the clocks
};

class Collector final {
  public:
    // `lost`: what becomes of an adapter whose worker is lost.
    Collector(const Options& options, LostWorkers lost,
              SnapshotScope scope = SnapshotScope::kEverything)
        : options_{options}, lost_{lost}, scope_{scope}
    {
    }

    // A snapshot of the adapters that the options choose. The machine is discovered at the first,
    // and again as long as it has none of them. `stop`: see Patience; a snapshot that was
    // interrupted is none.
    std::optional<MachineSnapshot> take(int stop);

  private:
    // Returns false when it was interrupted.
    bool discover(int stop, std::vector<Problem>& problems);

    // Asks for all that the scope has. Returns false when it was interrupted.
    bool ask_everything(int stop, MachineSnapshot& snapshot);

    // Asks all adapters, and lets `keep` take what each answers into its state. Returns false when
    // it was interrupted.
    template <typename Reading, typename Keep>
    bool ask(std::string_view request, int stop, MachineSnapshot& snapshot, Keep keep);

    const Options& options_;
    LostWorkers lost_;
    SnapshotScope scope_;
    std::vector<SlotIdentity> adapters_;
    std::optional<ForeignGpu> foreign_gpu_;
    std::optional<AdapterPanel> panel_;
    std::map<int, FrameMeter> meters_;  // by slot
};

}  // namespace nimba::smi
