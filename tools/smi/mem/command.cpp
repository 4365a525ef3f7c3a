// SPDX-License-Identifier: MIT
#include "tools/smi/mem/command.hpp"

#include "tools/smi/mem/view.hpp"
#include "tools/smi/monitor/run.hpp"
#include "tools/smi/worker/requests.hpp"

namespace nimba::smi {

Report mem_command(const Options& options)
{
    return run_monitor<SegmentReading, SegmentTable>(
        options,
        {kSegmentsRequest,
         [](const SlotIdentity&, const SegmentReading& reading) { return segment_table(reading); }},
        segments_view());
}

}  // namespace nimba::smi
