// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/alloc/options.hpp"
#include "tools/smi/capture/options.hpp"
#include "tools/smi/dvfs/options.hpp"
#include "tools/smi/export/options.hpp"
#include "tools/smi/flag/options.hpp"
#include "tools/smi/leaks/options.hpp"
#include "tools/smi/memory/adapter_choice.hpp"
#include "tools/smi/monitor/options.hpp"
#include "tools/smi/pagetable/options.hpp"
#include "tools/smi/prefer/options.hpp"
#include "tools/smi/report/options.hpp"
#include "tools/smi/text/size.hpp"
#include "tools/smi/top/options.hpp"

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace nimba::smi {

// What the commands can be told: first what every command takes, then what some do.
struct Options {
    bool json = false;
    bool verbose = false;
    std::chrono::milliseconds timeout{10'000};             // for each call of a worker
    std::string library = "libnimba_mgmt_interface.so.0";  // its name without a -dev package

    SizeUnit units = SizeUnit::kAuto;  // of the sizes in tables

    bool csv = false;
    std::optional<AdapterChoice> adapter;  // without it, all of them
    std::optional<std::size_t> top;        // rows to show at most
    AllocOptions alloc{};
    LeaksOptions leaks{};
    MonitorOptions monitor{};
    PageTableOptions page_tables{};
    DvfsOptions dvfs{};
    FlagOptions flag{};
    PreferOptions prefer{};
    TopOptions top_view{};
    ExportOptions exporting{};
    CaptureOptions capture{};
    ReportOptions report{};
};

}  // namespace nimba::smi
