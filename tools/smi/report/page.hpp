// SPDX-License-Identifier: MIT
#pragma once

#include "tools/smi/report/content.hpp"

#include <string>

namespace nimba::smi::page {

// The whole page: one HTML document that has no script and refers to nothing outside.
std::string page_html(const Content& content);

}  // namespace nimba::smi::page
