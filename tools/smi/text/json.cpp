// SPDX-License-Identifier: MIT
#include "tools/smi/text/json.hpp"

#include <fmt/core.h>

namespace nimba::smi {

Document json_id(uint32_t id)
{
    return fmt::format("{:#06x}", id);
}

Document json_luid(const Luid& luid)
{
    return {{"low", luid.low}, {"high", luid.high}};
}

Document json_errors(std::span<const Problem> problems)
{
    Document errors = Document::array();
    for (const Problem& problem : problems) {
        errors.push_back({{"status", static_cast<int>(problem.status)},
                          {"adapter", or_null(problem.adapter)},
                          {"call", or_null(problem.call)},
                          {"message", problem.message}});
    }
    return errors;
}

std::string json_text(const Document& document)
{
    return document.dump(2, ' ', false, Document::error_handler_t::replace) + '\n';
}

std::string json_line(const Document& document)
{
    return document.dump(-1, ' ', false, Document::error_handler_t::replace) + '\n';
}

}  // namespace nimba::smi
