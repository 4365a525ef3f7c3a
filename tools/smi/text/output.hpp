// SPDX-License-Identifier: MIT
// The tool's standard descriptors.
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

// Puts something harmless in place of standard descriptors that the caller closed, so that no file
// or socket opened later gets their numbers. Writing to such a descriptor fails.
void keep_standard_descriptors();

// Writes all of `text` to `fd`. Returns 0, or the error number of the write that failed.
int write_all(int fd, std::string_view text);

// Writes "nimba-smi: <message>" as one line to standard error, made printable.
void print_error_line(std::string_view message);

}  // namespace nimba::smi
