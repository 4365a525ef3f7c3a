// SPDX-License-Identifier: MIT
#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace nimba::smi {

// Writes the help with explanations that end at the 80th column, and one blank line between parts.
class HelpFormatter final : public CLI::Formatter {
  public:
    HelpFormatter();

    std::string make_help(const CLI::App* app, std::string name,
                          CLI::AppFormatMode mode) const override;
    std::string make_description(const CLI::App* app) const override;
    std::string make_subcommand(const CLI::App* command) const override;
    std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace nimba::smi
