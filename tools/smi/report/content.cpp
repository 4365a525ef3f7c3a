// SPDX-License-Identifier: MIT
#include "tools/smi/report/content.hpp"

#include "tools/smi/report/value.hpp"

#include <utility>

namespace nimba::smi::page {
namespace {

const Document kNull;

// A series may be long, and an overview is large.
Document figures_of(const Document& overview)
{
    Document adapters = Document::array();
    for (const Document* const adapter : adapters_of(overview)) {
        adapters.push_back({{"bus_id", member(*adapter, {"bus_id"})},
                            {"clocks", member(*adapter, {"clocks"})},
                            {"sensors", member(*adapter, {"sensors"})},
                            {"usage", member(*adapter, {"usage"})},
                            {"used_bytes", member(*adapter, {"memory", "sum", "used_bytes"})}});
    }
    return adapters;
}

}  // namespace

void Content::add_sample(double seconds, Document newest)
{
    samples.push_back({seconds, figures_of(newest)});
    overview = std::move(newest);
}

const Document& Content::document(const char* name) const
{
    const auto found = documents.find(name);
    return found == documents.end() ? kNull : found->second;
}

}  // namespace nimba::smi::page
