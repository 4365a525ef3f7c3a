// SPDX-License-Identifier: MIT
#include "replay/lasting_errors.hpp"

namespace nimba::sim {
namespace {

using Errors = std::unordered_map<std::string_view, std::string_view>;

Errors errors_in(const archive::Sample& sample)
{
    Errors errors;
    for (const archive::Node& node : sample.record.nodes) {
        if (node.kind == archive::NodeKind::kUnread) {
            errors.emplace(node.path, node.error);
        }
    }
    return errors;
}

}  // namespace

Errors lasting_errors(const archive::Capture& capture)
{
    Errors lasting = errors_in(capture.samples.front());
    for (const archive::Sample& sample : capture.samples) {
        const Errors errors = errors_in(sample);
        std::erase_if(lasting, [&](const auto& one) {
            const auto here = errors.find(one.first);
            return here == errors.end() || here->second != one.second;
        });
    }
    return lasting;
}

}  // namespace nimba::sim
