// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/options.hpp"
#include "tools/smi/report.hpp"

namespace CLI {
class App;
}

namespace nimba::smi {

struct Command {
    const char* name;  // empty: what is run without a command
    const char* summary;
    Report (*run)(const Options& options);
    // Adds the options that only this command takes; they are read into `options`.
    void (*add_options)(CLI::App& command, Options& options) = nullptr;
    // What is wrong with its options taken together; empty when nothing is.
    const char* (*options_fault)(const Options& options) = nullptr;
    const char* group = "Commands";  // with which the help lists it
};

}  // namespace nimba::smi
