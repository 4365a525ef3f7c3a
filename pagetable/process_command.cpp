// SPDX-License-Identifier: MIT
#include "pagetable/process_command.hpp"

namespace nimba {
namespace {

bool is_decimal(std::string_view text)
{
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::string quoted(std::string_view text)
{
    std::string word{"'"};
    for (const char c : text) {
        if (c == '\'') {
            word += "'\\''";
        } else {
            word += c;
        }
    }
    return word += '\'';
}

}  // namespace

std::string process_command(std::string_view pid)
{
    std::string command{"ps -p "};
    command += is_decimal(pid) ? std::string{pid} : quoted(pid);
    return command += " -o comm=";
}

}  // namespace nimba
