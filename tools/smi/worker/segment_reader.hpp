// SPDX-License-Identifier: MIT
// The library's calls about memory segments, for the session's current adapter.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/monitor/readings.hpp"
#include "tools/smi/worker/monitor_library.hpp"
#include "tools/smi/worker/node_reader.hpp"
#include "tools/smi/worker/session.hpp"

#include <optional>
#include <span>
#include <vector>

namespace nimba::smi {

// Puts source and segments into `reading`, and into its remarks what keeps a better source from
// being read. Returns why there are no segments at all.
std::optional<Failure> read_segments(Session& session, const MonitorEntryPoints& entry,
                                     const Adapter& adapter, SegmentReading& reading);

// The segments that the node "segment_info" has. The library read it twice: into a cleared record,
// and into one whose bytes were all 0xFF before. What it did not write stayed as it was; both sizes
// of a segment that is there were divided by 1000. Segment 4 is told for itself.
std::vector<SegmentUse> segments_in_node(const SegmentInfo& cleared, const SegmentInfo& filled);

}  // namespace nimba::smi
