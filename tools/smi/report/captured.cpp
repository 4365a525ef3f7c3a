// SPDX-License-Identifier: MIT
#include "tools/smi/report/captured.hpp"

#include "tools/archive/entry_name.hpp"
#include "tools/smi/report/value.hpp"

#include <set>
#include <utility>
#include <vector>

namespace nimba::smi::page {
namespace {

// What the manifest tells of the adapters, as an overview.
Document identity_overview(const archive::Manifest& manifest)
{
    Document adapters = Document::array();
    for (const archive::Adapter& adapter : manifest.adapters) {
        adapters.push_back({{"slot", adapter.slot},
                            {"name", or_null(adapter.name)},
                            {"bus_id", adapter.bus_id},
                            {"card", or_null(adapter.card)},
                            {"vendor_id", json_id(adapter.vendor)},
                            {"device_id", json_id(adapter.device)},
                            {"driver", adapter.va_driver ? "va" : "legacy"}});
    }
    return {{"adapters", std::move(adapters)}};
}

// The errors that a document tells itself, unless they were told.
void add_errors(const Document& document, std::set<std::string>& told,
                std::vector<std::string>& problems)
{
    for (const Document& error : list(document, {"errors"})) {
        const std::string message = text_of(member(error, {"message"}));
        if (told.insert(message).second) {
            problems.push_back(message);
        }
    }
}

}  // namespace

Content captured_content(const archive::Capture& capture, const std::string& file)
{
    const archive::Manifest& manifest = capture.manifest;
    Content content{.capture = file.substr(file.rfind('/') + 1),
                    .tool = manifest.tool,
                    .time = manifest.time,
                    .redacted = manifest.redacted,
                    .samples = {},
                    .overview = {},
                    .documents = {},
                    .problems = manifest.problems,
                    .unread = {}};
    for (const archive::Sample& sample : capture.samples) {
        if (sample.overview) {
            content.add_sample(sample.time.seconds, Document::parse(*sample.overview));
        } else {
            content.samples.push_back({sample.time.seconds, Document::array()});
        }
    }
    if (content.overview.is_null()) {
        content.overview = identity_overview(manifest);
    }
    std::set<std::string> told{content.problems.begin(), content.problems.end()};
    for (const auto& [name, text] : capture.documents) {
        const Document& document =
            content.documents.emplace(name, Document::parse(text)).first->second;
        add_errors(document, told, content.problems);
    }
    for (const archive::ReadError& error : manifest.errors) {
        content.unread.push_back(
            {error.sample, archive::decode_path(error.path).value_or(error.path), error.error});
    }
    return content;
}

}  // namespace nimba::smi::page
