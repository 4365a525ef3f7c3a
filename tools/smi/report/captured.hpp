// SPDX-License-Identifier: MIT
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/smi/report/content.hpp"

#include <string>

namespace nimba::smi::page {

// What a capture tells, of samples without an overview the adapters alone. `file`: its name.
Content captured_content(const archive::Capture& capture, const std::string& file);

}  // namespace nimba::smi::page
