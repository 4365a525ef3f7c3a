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
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

// The nodes are what a capture is for.
constexpr std::chrono::seconds kPatience{30};

// Values that are words of the documents themselves.
constexpr std::array<std::string_view, 7> kOwnWords{"schema", "id",     "group", "result",
                                                    "driver", "bus_id", "match"};

void replace_all(std::string& text, std::string_view part, std::string_view other)
{
    if (part.size() < 2) {
        return;
    }
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at)) {
        text.replace(at, part.size(), other);
        at += other.size();
    }
}

// Puts stand-ins into the values of a document.
class Redaction final {
  public:
    Redaction(Redactor& redactor, const std::string& library)
        : redactor_{redactor}, library_directory_{library.substr(0, library.rfind('/') + 1)}
    {
        const char* const home = std::getenv("HOME");
        home_ = home == nullptr ? "" : home;
    }

    // NOLINTNEXTLINE(misc-no-recursion): as deep as the documents of the commands are.
    void in(Document& value)
    {
        const bool is_process = value.is_object() && value.contains("pid");
        for (auto& item : value.items()) {
            Document& part = item.value();
            if (part.is_structured()) {
                in(part);
            } else if (part.is_string() && is_process && item.key() == "name") {
                part = redactor_.path(part.get<std::string>());
            } else if (part.is_string() &&
                       std::ranges::find(kOwnWords, item.key()) == kOwnWords.end()) {
                part = text(part.get<std::string>());
            }
        }
    }

  private:
    std::string text(std::string line)
    {
        replace_all(line, library_directory_, "");
        replace_all(line, home_, "HOME");
        return redactor_.text(line);
    }

    Redactor& redactor_;
    std::string library_directory_;
    std::string home_;
};

}  // namespace

Document redacted_document(Document document, Redactor& redactor, const std::string& library)
{
    if (document.contains("checks")) {
        Document& checks = document["checks"];
        checks.erase(std::remove_if(checks.begin(), checks.end(),
                                    [](const Document& check) { return check["group"] == "user"; }),
                     checks.end());
    }
    Redaction{redactor, library}.in(document);
    return document;
}

CaptureDocuments::CaptureDocuments(const Options& options, archive::Writer& writer,
                                   Redactor* redactor, std::string library)
    : options_{options},
      writer_{writer},
      redactor_{redactor},
      library_{std::move(library)},
      collector_{options, LostWorkers::kLeftOut}
{
}

void CaptureDocuments::ask(const std::function<void(const std::string& what)>& progress)
{
    std::vector<Problem> told_by_the_documents;
    answers_ = page::ask_documents(options_, told_by_the_documents, progress, kPatience);
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
    if (redactor_ != nullptr) {
        document = redacted_document(std::move(document), *redactor_, library_);
    }
    const std::string text = json_text(document);
    if (text.size() <= archive::Limits{}.document_bytes && writer_.has_room(text.size())) {
        writer_.add(name, text);
    }
}

}  // namespace nimba::smi
