// SPDX-License-Identifier: MIT
// Exit statuses and the situations that lead to them, the same in every command.
#pragma once

#include <optional>
#include <span>
#include <string>

namespace nimba::smi {

enum class ExitStatus : int {
    kOk = 0,
    kFailed = 1,        // output could not be written, a run cut short, or an internal error
    kUsage = 2,         // the command line makes no sense, or does not fit the machine
    kNoAdapter = 3,     // no adapter of the product, or one that went away
    kNoLibrary = 4,     // the library cannot be loaded or does not fit this tool
    kNoLibdrm = 5,      // the library found no usable libdrm
    kNoPermission = 6,  // something could not be read or written for want of permission
    kWorkerLost = 7,    // a worker died or gave no answer
    kGrowth = 8,        // memory grew by as much as the command was told to report
    kNotTaken = 9,      // the driver did not take a setting, or does not have it
};

// One situation that the user has to hear of.
struct Problem {
    ExitStatus status = ExitStatus::kFailed;
    std::optional<std::string> adapter;  // PCI bus id, when it concerns one adapter
    std::optional<std::string> call;     // what was being called, when it is known
    std::string message;                 // a whole sentence: what is wrong and what to do
};

// The exit status of a run with these problems: that of the gravest one, in the documented order
// 1, 2, 4, 7, 5, 6, 3, 9, 8; kOk when there are none.
ExitStatus overall_status(std::span<const Problem> problems);

}  // namespace nimba::smi
