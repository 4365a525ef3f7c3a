// SPDX-License-Identifier: MIT
#pragma once

#include "driver/node_source.hpp"

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <tuple>
#include <unordered_map>

namespace nimba::sim {

// The nodes that the kernel knows, under the numbers by which it names them. A node stays, with
// what was last known of it, for as long as the kernel has it, be it gone from the driver. A file
// and a directory of the same path are two nodes, and so are those of a driver before and after it
// was gone.
class NodeTable {
  public:
    struct Node {
        std::string path;
        NodeAttributes attributes;
        uint64_t absences = 0;  // of the driver, before the node was there
    };

    // `root` is the number of the root.
    explicit NodeTable(uint64_t root);

    // The node of that number, which the kernel must know.
    Node node(uint64_t number);

    // The kernel gets to know the node once more. Returns its number, which no other node ever has.
    uint64_t add(const Node& node);

    void set_attributes(uint64_t number, NodeAttributes attributes);

    // The kernel forgets the node as many times.
    void forget(uint64_t number, uint64_t times);

  private:
    // The path, whether it is a directory, and the absences.
    using Key = std::tuple<std::string, bool, uint64_t>;

    struct Entry {
        Node node;
        uint64_t times;
    };

    static Key key(const Node& node);

    std::mutex mutex_;  // guards what follows
    uint64_t last_number_;
    std::unordered_map<uint64_t, Entry> entries_;
    std::map<Key, uint64_t> numbers_;
};

}  // namespace nimba::sim
