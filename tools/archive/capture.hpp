// SPDX-License-Identifier: MIT
// What a capture says; docs/capture.md describes each member under the name that it has in JSON.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace nimba::archive {

inline constexpr int kLayoutVersion = 1;

inline constexpr const char* kDeadline = "deadline";  // errors beside those of errno
inline constexpr const char* kLimit = "limit";

enum class DrmNodeType { kPrimary, kControl, kRender };

struct DrmNode {
    DrmNodeType type = DrmNodeType::kPrimary;
    std::string path;
    std::optional<std::string> error;

    bool operator==(const DrmNode&) const = default;
};

struct DrmVersion {
    std::string name;
    int major = 0;
    int minor = 0;
    int patch = 0;
    std::string date;
    std::string description;

    bool operator==(const DrmVersion&) const = default;
};

struct PciIdentity {
    std::string address;  // "0000:01:00.0"
    uint16_t vendor = 0;
    uint16_t device = 0;
    uint16_t subvendor = 0;
    uint16_t subdevice = 0;
    uint8_t revision = 0;

    bool operator==(const PciIdentity&) const = default;
};

struct DrmDevice {
    std::optional<PciIdentity> pci;  // none: a device of another bus
    std::vector<DrmNode> nodes;      // at most one of each type
    std::optional<DrmVersion> version;

    bool operator==(const DrmDevice&) const = default;
};

struct Drm {
    std::optional<std::string> library;
    std::vector<DrmDevice> devices;

    bool operator==(const Drm&) const = default;
};

struct KernelInterface {
    std::string file;  // without a directory
    std::vector<std::string> functions;
    uint32_t struct_size = 0;
    std::optional<int32_t> init_result;

    bool operator==(const KernelInterface&) const = default;
};

struct Adapter {
    int slot = 0;
    std::string bus_id;
    std::optional<int> card;
    std::optional<std::string> name;
    uint32_t vendor = 0;
    uint32_t device = 0;
    bool va_driver = false;
    std::optional<KernelInterface> kernel_interface;

    bool operator==(const Adapter&) const = default;
};

struct Library {
    std::string path;
    std::string version;  // of the interface

    bool operator==(const Library&) const = default;
};

struct SampleTime {
    std::string time;      // "2026-03-01T12:00:00.250Z"
    double seconds = 0.0;  // since the first sample

    bool operator==(const SampleTime&) const = default;
};

struct ReadError {
    std::size_t sample = 0;
    std::string path;
    std::string error;

    bool operator==(const ReadError&) const = default;
};

struct Manifest {
    std::string tool;
    std::string time;
    bool redacted = false;
    std::optional<Library> library;
    std::vector<SampleTime> samples;
    Drm drm;
    std::vector<Adapter> adapters;
    std::vector<ReadError> errors;
    std::vector<std::string> problems;

    bool operator==(const Manifest&) const = default;
};

enum class NodeKind { kFile, kDirectory, kUnread };

// A path that was tried.
struct Node {
    std::string path;  // encoded, see entry_name.hpp
    NodeKind kind = NodeKind::kFile;
    mode_t mode = 0;
    uint64_t bytes = 0;                // of a file: the size of its entry
    bool cut = false;                  // the file goes on
    std::vector<std::string> entries;  // of a directory, encoded, in listing order
    std::string error;                 // of one that was not read

    bool operator==(const Node&) const = default;
};

struct Flips {
    int64_t time = 0;  // of the last flip, in nanoseconds
    int64_t count = 0;

    bool operator==(const Flips&) const = default;
};

// The nodes that count frames.
struct FrameNodes {
    double seconds = 0.0;  // since the sample began
    std::string fps_count;
    std::string rxa_blt_scn_cnt;

    bool operator==(const FrameNodes&) const = default;
};

using Words = std::vector<uint32_t>;

inline constexpr std::size_t kHardwareWords = 12;
inline constexpr std::size_t kUsageWords = 3;
inline constexpr std::size_t kExtendedUsageWords = 13;

struct Counters {
    std::string bus_id;
    std::optional<std::array<Flips, 2>> flips;
    std::optional<std::array<FrameNodes, 2>> frames;
    std::optional<Words> hardware;
    std::optional<Words> hardware_extended;
    std::optional<Words> usage;
    std::optional<Words> usage_extended;
    std::optional<Words> queues;

    bool operator==(const Counters&) const = default;
};

struct SampleRecord {
    std::vector<Node> nodes;
    std::vector<Counters> counters;

    bool operator==(const SampleRecord&) const = default;
};

// A sample as it was loaded.
struct Sample {
    SampleTime time;
    SampleRecord record;
    // By encoded path; of each file of the record. Samples share texts that did not change.
    std::map<std::string, std::shared_ptr<const std::string>> texts;
    std::optional<std::string> overview{};  // what the commands said, as JSON
};

struct Capture {
    Manifest manifest;
    std::optional<std::string> dmidecode;
    std::optional<std::string> preferences;
    std::vector<Sample> samples;                     // at least one
    std::map<std::string, std::string> documents{};  // JSON by name; what there is of them
};

}  // namespace nimba::archive
