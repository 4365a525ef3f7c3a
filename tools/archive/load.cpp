// SPDX-License-Identifier: MIT
#include "tools/archive/load.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/document.hpp"
#include "tools/archive/entry_name.hpp"
#include "tools/archive/reader.hpp"
#include "tools/archive/record_json.hpp"

#include <algorithm>
#include <utility>

namespace nimba::archive {
namespace {

using Text = std::shared_ptr<const std::string>;

// Puts a capture together from entries as they come.
class Assembly final {
  public:
    explicit Assembly(const Limits& limits) : limits_{limits} {}

    void take(EntryName name, std::string bytes)
    {
        switch (name.kind) {
            case EntryKind::kManifest:
                manifest_ = parse_manifest(bytes);
                break;
            case EntryKind::kDmidecode:
                capture_.dmidecode = std::move(bytes);
                break;
            case EntryKind::kPreferences:
                capture_.preferences = std::move(bytes);
                break;
            case EntryKind::kSample:
                add_record(name.sample, parse_sample(bytes));
                break;
            case EntryKind::kNode:
                add_text(name.sample, std::move(name.path), std::move(bytes));
                break;
            case EntryKind::kDocument:
                add_values(check_document(name.path, document_entry(name.path), bytes));
                capture_.documents.emplace(std::move(name.path), std::move(bytes));
                break;
            case EntryKind::kOverview:
                check_document(kOverviewDocument, overview_entry(name.sample), bytes);
                sample(name.sample).overview = std::move(bytes);
                break;
        }
    }

    Capture finish()
    {
        if (!manifest_) {
            throw ArchiveError{"it has no manifest.json: it is no capture, or it is truncated"};
        }
        capture_.manifest = *std::move(manifest_);
        const auto& times = capture_.manifest.samples;
        if (samples_.size() != times.size() || samples_.rbegin()->first != times.size() - 1) {
            throw ArchiveError{"manifest.json tells other samples than there are"};
        }
        for (auto& [number, part] : samples_) {
            check(number, part);
            capture_.samples.push_back({times[number], std::move(part.record),
                                        std::move(part.texts), std::move(part.overview)});
        }
        return std::move(capture_);
    }

  private:
    struct Part {
        bool has_record = false;
        SampleRecord record;
        std::map<std::string, Text> texts;
        std::optional<std::string> overview;
    };

    Part& sample(std::size_t number)
    {
        if (number >= limits_.samples) {
            throw ArchiveError{"it has too many samples"};
        }
        return samples_[number];
    }

    void add_record(std::size_t number, SampleRecord record)
    {
        for (const Node& node : record.nodes) {
            nodes_ += 1 + node.entries.size();
        }
        if (nodes_ > limits_.nodes) {
            throw ArchiveError{"its samples tell too many nodes"};
        }
        sample(number).record = std::move(record);
        sample(number).has_record = true;
    }

    void add_values(std::size_t values)
    {
        values_ += values;
        if (values_ > limits_.document_values) {
            throw ArchiveError{"its documents have too many values"};
        }
    }

    void add_text(std::size_t number, std::string path, std::string bytes)
    {
        auto& texts = sample(number).texts;
        const auto before = number > 0 ? samples_.find(number - 1) : samples_.end();
        if (before != samples_.end()) {
            const auto same = before->second.texts.find(path);
            if (same != before->second.texts.end() && *same->second == bytes) {
                texts.emplace(std::move(path), same->second);
                return;
            }
        }
        texts.emplace(std::move(path), std::make_shared<const std::string>(std::move(bytes)));
    }

    static void check(std::size_t number, const Part& part)
    {
        const std::string place = sample_entry(number);
        if (!part.has_record) {
            throw ArchiveError{"it has no " + place};
        }
        std::size_t files = 0;
        for (const Node& node : part.record.nodes) {
            if (node.kind != NodeKind::kFile) {
                continue;
            }
            ++files;
            const auto text = part.texts.find(node.path);
            if (text == part.texts.end() || text->second->size() != node.bytes) {
                throw ArchiveError{place + " tells of " + node.path + " what is not so"};
            }
        }
        if (files != part.texts.size()) {
            throw ArchiveError{place + " does not tell all nodes that there are"};
        }
    }

    const Limits& limits_;
    std::optional<Manifest> manifest_;
    Capture capture_;
    std::map<std::size_t, Part> samples_;
    uint64_t nodes_ = 0;
    uint64_t values_ = 0;  // of the documents
};

}  // namespace

Capture load_capture(const std::string& file, const Limits& limits)
{
    Assembly assembly{limits};
    read_file(file, limits, [&](EntryName name, std::string bytes) {
        assembly.take(std::move(name), std::move(bytes));
    });
    return assembly.finish();
}

Capture load_capture_bytes(std::string_view bytes, const Limits& limits)
{
    Assembly assembly{limits};
    read_bytes(bytes, limits, [&](EntryName name, std::string text) {
        assembly.take(std::move(name), std::move(text));
    });
    return assembly.finish();
}

}  // namespace nimba::archive
