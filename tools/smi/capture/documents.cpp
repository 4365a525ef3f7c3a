// SPDX-License-Identifier: MIT
#include "tools/smi/capture/documents.hpp"

#include "tools/archive/entry_name.hpp"
#include "tools/archive/limits.hpp"
#include "tools/smi/report/ask.hpp"
#include "tools/smi/snapshot/adapter_state.hpp"
#include "tools/smi/text/json.hpp"

#include <algorithm>
#include <array>
#include <chrono>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

// The nodes are what a capture is for.
constexpr std::chrono::seconds kPatience{30};

// What commands say in their own words, and what the driver or the machine calls something. Any
// other text is one of a few by the documents' schema, and none of them is a name.
constexpr std::array<std::string_view, 10> kSentences{
    "message", "call",    "found",          "remedy",        "summary",
    "path",    "version", "driver_version", "firmware_name", "firmware_version"};

bool is_sentence(const std::string& key)
{
    return std::ranges::find(kSentences, key) != kSentences.end();
}

// NOLINTNEXTLINE(misc-no-recursion): as deep as the documents of the commands are.
void redact(Document& value, Redactor& redactor)
{
    const bool is_process = value.is_object() && value.contains("pid");
    for (auto& item : value.items()) {
        Document& part = item.value();
        if (part.is_structured()) {
            redact(part, redactor);
        } else if (part.is_string() && is_process && item.key() == "name") {
            part = redactor.path(part.get<std::string>());
        } else if (part.is_string() && is_sentence(item.key())) {
            part = redactor.sentence(part.get<std::string>());
        }
    }
}

}  // namespace

Document redacted_document(Document document, Redactor& redactor)
{
    redact(document, redactor);
    return document;
}

Document without_user(Document document)
{
    if (document.contains("checks")) {
        Document& checks = document["checks"];
        checks.erase(std::remove_if(checks.begin(), checks.end(),
                                    [](const Document& check) { return check["group"] == "user"; }),
                     checks.end());
    }
    return document;
}

page::Documents ask_for_capture(const Options& options,
                                const std::function<void(const std::string& what)>& progress)
{
    std::vector<Problem> told_by_the_documents;
    return page::ask_documents(options, told_by_the_documents, progress, kPatience);
}

CaptureDocuments::CaptureDocuments(const Options& options, archive::Writer& writer,
                                   Redactor* redactor, page::Documents answers)
    : writer_{writer},
      redactor_{redactor},
      collector_{options, LostWorkers::kLeftOut},
      answers_{std::move(answers)}
{
}

bool CaptureDocuments::write_overview(std::size_t sample, int stop)
{
    const auto snapshot = collector_.take(stop);
    if (snapshot) {
        add(archive::overview_entry(sample), page::bounded_overview(*snapshot));
    }
    return snapshot.has_value();
}

void CaptureDocuments::write()
{
    for (auto& [name, document] : answers_) {
        add(archive::document_entry(name), std::move(document));
    }
}

// One that is too large for a reader, or for the archive, is left out.
void CaptureDocuments::add(const std::string& name, Document document)
{
    document = without_user(std::move(document));
    if (redactor_ != nullptr) {
        document = redacted_document(std::move(document), *redactor_);
    }
    const std::string text = json_text(document);
    if (text.size() <= archive::Limits{}.document_bytes && writer_.has_room(text.size())) {
        writer_.add(name, text);
    }
}

}  // namespace nimba::smi
