// SPDX-License-Identifier: MIT
// Changing the settings of an adapter: all is checked before anything is written.
#pragma once

#include "tools/smi/dvfs/render.hpp"
#include "tools/smi/dvfs/saved_state.hpp"
#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace nimba::smi {

// Makes the assignments of `wanted`, at an adapter of its chip if it names one, and tells what
// became of them. An assignment that cannot be made keeps all from being written.
SettingsChange change_settings(const Options& options, const SavedState& wanted);

// What change_settings would write, as far as can be known before.
DryRun plan_settings(const Options& options, const SavedState& wanted);

// The report, without its output when the command line does not fit the machine.
Report fitting(Report report);

}  // namespace nimba::smi
