// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace nimba::smi {

// Makes `text` the content of the file at `path`, which is there with all of it or as it was
// before. A path that is no regular file, such as a pipe, is written to. Signals that end the
// process do so when a regular file is done, so that nothing is left beside it; one that cannot be
// held back may leave ".nimba-smi." and six characters there. Returns 0, or the error number.
int write_file(const std::string& path, std::string_view text);

}  // namespace nimba::smi
