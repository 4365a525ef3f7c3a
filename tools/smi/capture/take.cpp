// SPDX-License-Identifier: MIT
#include "tools/smi/capture/take.hpp"

#include "tools/archive/archive_error.hpp"
#include "tools/archive/entry_name.hpp"
#include "tools/archive/limits.hpp"
#include "tools/archive/record_json.hpp"
#include "tools/archive/writer.hpp"
#include "tools/smi/capture/documents.hpp"
#include "tools/smi/capture/frame_nodes.hpp"
#include "tools/smi/capture/identity.hpp"
#include "tools/smi/capture/redaction.hpp"
#include "tools/smi/capture/sampler.hpp"
#include "tools/smi/capture/unread.hpp"
#include "tools/smi/leaks/status_line.hpp"
#include "tools/smi/process/stop_signals.hpp"
#include "tools/smi/tool_version.hpp"
#include "tools/smi/watch/rhythm.hpp"

#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace nimba::smi {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Between two samples of what counts frames, so that rates can be told.
constexpr milliseconds kFrameTime{250};

constexpr const char* kPreferencesInHome = "/.local/share/wmt_gfx_util.ini";

// "2026-03-01T12:00:00.250Z"
std::string utc_time()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    tm parts{};
    ::gmtime_r(&now.tv_sec, &parts);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:03}Z", parts.tm_year + 1900,
                       parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec,
                       now.tv_nsec / 1'000'000);
}

bool is_readable(const StopSignals& stop)
{
    return stop.wait_until(Clock::now());
}

// A signal came in the middle of a sample.
struct Interrupted {};

// A capture that is being taken.
class Taking final {
  public:
    explicit Taking(const Options& options)
        : options_{options},
          writer_{options.capture.file},
          reader_{options.timeout},
          redactor_{options.capture.redact ? std::optional<Redactor>{std::in_place} : std::nullopt}
    {
    }

    CaptureOutcome run()
    {
        auto answers = ask_commands();
        line_.show("asking for the adapters");
        identity_ = read_identity(options_, stop_.descriptor());
        add_unopened_devices();
        learn_library_place();
        write_preferences();
        documents_.emplace(options_, writer_, redactor(), std::move(answers));
        keep_rhythm({options_.capture.interval, options_.capture.samples}, stop_,
                    [this](uint64_t number) { return take_sample(number - 1); });
        if (outcome_.manifest.samples.empty()) {
            throw_interrupted();
        }
        if (identity_.dmidecode) {
            writer_.add(
                std::string{archive::kDmidecodeEntry},
                redactor_ ? redactor_->memory_modules(*identity_.dmidecode) : *identity_.dmidecode);
        }
        documents_->write();
        finish();
        return std::move(outcome_);
    }

  private:
    [[noreturn]] static void throw_interrupted()
    {
        throw archive::ArchiveError{"interrupted before a sample was complete"};
    }

    Redactor* redactor() { return redactor_ ? &*redactor_ : nullptr; }

    // Their names come first: others texts may have them.
    void write_preferences()
    {
        const char* const home = std::getenv("HOME");
        if (home == nullptr || *home == '\0') {
            return;
        }
        const std::string path = std::string{home} + kPreferencesInHome;
        ReadNode file = reader_.read(path, kLongestPreferences);
        if (file.error == 0) {
            writer_.add(std::string{archive::kPreferencesEntry},
                        redactor_ ? redactor_->preferences(file.text, adapter_names()) : file.text);
        } else {
            unread_.add(0, redactor_ ? "the preference file" : path, file.error);
        }
    }

    // Of a path that is not absolute no sentence says that it is one.
    void learn_library_place()
    {
        const std::string& library = options_.library;
        if (redactor_ && !library.starts_with('/')) {
            redactor_->path(library.substr(0, library.rfind('/') + 1));
        }
    }

    [[nodiscard]] std::vector<std::string> adapter_names() const
    {
        std::vector<std::string> names;
        for (const archive::Adapter& adapter : identity_.adapters) {
            names.push_back(adapter.name.value_or(""));
        }
        return names;
    }

    // Before the capture's own workers make adapters current: those of the commands switch usage
    // accounting off when they go, and a capture is to show it switched on.
    page::Documents ask_commands()
    {
        auto answers = ask_for_capture(
            options_, [this](const std::string& what) { line_.show("asking for " + what); });
        if (is_readable(stop_)) {
            throw_interrupted();
        }
        return answers;
    }

    void add_unopened_devices()
    {
        for (const archive::DrmDevice& device : identity_.drm.devices) {
            for (const archive::DrmNode& node : device.nodes) {
                if (node.error) {
                    unread_.add(0, node.path, *node.error);
                }
            }
        }
    }

    // A sample is in the archive as a whole, or not at all. False when it is the last.
    bool take_sample(std::size_t number)
    {
        const std::size_t nodes = outcome_.nodes;
        const std::size_t problems = identity_.problems.size();
        try {
            return add_sample(number);
        } catch (const Interrupted&) {
            outcome_.nodes = nodes;
            identity_.problems.erase(
                identity_.problems.begin() + static_cast<std::ptrdiff_t>(problems),
                identity_.problems.end());
            return false;
        }
    }

    bool add_sample(std::size_t number)
    {
        const auto begin = Clock::now();
        first_ = number == 0 ? begin : first_;
        const archive::SampleTime time{utc_time(),
                                       std::chrono::duration<double>(begin - first_).count()};
        FrameNodeReader frames{reader_, identity_.owners};
        auto counters = read_capture_counters(options_, stop_.descriptor(), identity_);
        SamplingTools tools{reader_, writer_, redactor(),
                            [&](std::size_t nodes) { advance(number, nodes); }};
        SampledNodes sampled = NodeSampler{tools}.take(identity_.owners);
        if (frames.any() ||
            std::ranges::any_of(counters, [](const auto& one) { return one.flips.has_value(); })) {
            if (stop_.wait_until(begin + kFrameTime)) {
                throw Interrupted{};
            }
        }
        const auto later = read_capture_counters(options_, stop_.descriptor(), identity_);
        archive::SampleRecord record{std::move(sampled.nodes),
                                     frames.merged(std::move(counters), later)};
        redact_frames(record);
        if (is_readable(stop_) || !documents_->write_overview(number, stop_.descriptor())) {
            throw Interrupted{};
        }
        for (const SampledNodes::Text& text : sampled.texts) {
            writer_.add(archive::node_entry(number, text.path), text.text);
        }
        add_record(archive::sample_entry(number), archive::sample_json(record));
        bool full = false;
        for (const archive::Node& node : record.nodes) {
            unread_.add(number, node);
            full = full || node.error == archive::kLimit;
        }
        outcome_.manifest.samples.push_back(time);
        return !full;
    }

    void redact_frames(archive::SampleRecord& record)
    {
        for (archive::Counters& counters : record.counters) {
            if (!redactor_ || !counters.frames) {
                continue;
            }
            for (archive::FrameNodes& frames : *counters.frames) {
                frames.fps_count = redactor_->text(frames.fps_count);
                frames.rxa_blt_scn_cnt = redactor_->text(frames.rxa_blt_scn_cnt);
            }
        }
    }

    // No archive is made that no reader takes.
    void add_record(const std::string& name, const std::string& text)
    {
        if (text.size() > archive::Limits{}.record_bytes) {
            throw archive::ArchiveError{fmt::format("{} would be too large", name)};
        }
        writer_.add(name, text);
    }

    void advance(std::size_t sample, std::size_t nodes)
    {
        outcome_.nodes += nodes;
        if (is_readable(stop_)) {
            throw Interrupted{};
        }
        constexpr milliseconds kPace{100};
        if (line_.is_visible() && Clock::now() >= next_line_) {
            next_line_ = Clock::now() + kPace;
            line_.show(fmt::format("sample {} of {}, {} nodes", sample + 1,
                                   options_.capture.samples, outcome_.nodes));
        }
    }

    void finish()
    {
        archive::Manifest& manifest = outcome_.manifest;
        manifest.tool = kToolVersion;
        manifest.time = manifest.samples.front().time;
        manifest.redacted = options_.capture.redact;
        manifest.library = identity_.library;
        manifest.drm = identity_.drm;
        manifest.adapters = identity_.adapters;
        manifest.errors = unread_.errors();
        outcome_.problems = std::move(identity_.problems);
        std::ranges::move(unread_.problems(), std::back_inserter(outcome_.problems));
        for (const Problem& problem : outcome_.problems) {
            manifest.problems.push_back(archived(problem.message));
        }
        if (redactor_ && manifest.library) {
            const std::string& path = manifest.library->path;
            manifest.library->path = path.substr(path.rfind('/') + 1);
        }
        add_record(std::string{archive::kManifestEntry}, archive::manifest_json(manifest));
        writer_.complete();
    }

    // A sentence as it may be kept: one line, and with --redact without the names that it may have.
    std::string archived(std::string line)
    {
        std::ranges::replace_if(
            line, [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, ' ');
        if (redactor_) {
            line = redactor_->sentence(line);
        }
        return line;
    }

    const Options& options_;
    // A signal takes effect when the file is complete, or gone.
    StopSignals stop_{SignalEffect::kEndOfProcess};
    archive::Writer writer_;
    StatusLine line_{STDERR_FILENO};
    DeadlineReader reader_;
    std::optional<Redactor> redactor_;
    Identity identity_;
    std::optional<CaptureDocuments> documents_;
    Unread unread_;
    CaptureOutcome outcome_;
    Clock::time_point first_;
    Clock::time_point next_line_;
};

}  // namespace

CaptureOutcome take_capture(const Options& options)
{
    return Taking{options}.run();
}

}  // namespace nimba::smi
