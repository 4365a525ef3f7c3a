// SPDX-License-Identifier: MIT
// Takes one sample of all nodes.
#pragma once

#include "tools/archive/capture.hpp"
#include "tools/archive/writer.hpp"
#include "tools/smi/capture/node_reader.hpp"
#include "tools/smi/capture/node_table.hpp"
#include "tools/smi/capture/redaction.hpp"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace nimba::smi {

// An adapter whose nodes there are.
struct NodeOwner {
    std::string bus_id;
    std::optional<int> card;
    uint32_t vendor = 0;
};

// What a sample is taken with.
struct SamplingTools {
    DeadlineReader& reader;
    const archive::Writer& writer;
    Redactor* redactor;                              // null: names stay
    std::function<void(std::size_t nodes)> advance;  // is told how many nodes were read; may throw
};

// What was read of the machine, to be told and added to the archive.
struct SampledNodes {
    struct Text {
        std::string path;  // encoded
        std::string text;
    };

    std::vector<archive::Node> nodes;
    std::vector<Text> texts;
};

class NodeSampler final {
  public:
    explicit NodeSampler(SamplingTools& tools) : tools_{tools} {}

    // Reads the nodes of the adapters, and those of the machine, as far as the archive has room.
    SampledNodes take(std::span<const NodeOwner> owners);

  private:
    struct Base;
    struct Held {
        const NodeRow* row;
        std::string path;
        std::string text;
    };

    std::vector<Base> bases(NodeBase base, std::span<const NodeOwner> owners);
    std::optional<Base> owner_base(NodeBase base, const NodeOwner& owner);
    void read_row(const NodeRow& row, const Base& base);
    void read_entries(const NodeRow& row, const Base& base, std::size_t star);
    void read_names(const std::string& path);
    int read_file(const NodeRow& row, const std::string& path);
    bool open_base(NodeBase base, const std::string& path);
    std::string hwmon_directory(const std::string& device);
    archive::Node& directory(const std::string& path);
    void add_unread(const std::string& path, const std::string& error);
    void add_file(const NodeRow& row, const std::string& path, ReadNode node);
    void note_processes(const NodeRow& row, const std::string& text);
    void redact();
    std::string redacted_process(const NodeRow& row, const std::string& path,
                                 const std::string& text);
    void drop_what_has_no_room();

    SamplingTools& tools_;
    std::vector<Held> held_;
    uint64_t held_bytes_ = 0;
    std::vector<archive::Node> nodes_;
    std::map<std::string, std::size_t> places_;  // in nodes_, by path; what was tried
    std::set<std::string> absent_;
    std::set<int> processes_;
    std::map<std::string, std::string> programs_;  // first arguments, by the process's directory
    std::set<std::string> va_drivers_;             // debug directories
};

}  // namespace nimba::smi
