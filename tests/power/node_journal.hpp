// SPDX-License-Identifier: MIT
// Sees which nodes of a directory are opened and what is written to them. Link node_journal.cpp:
// its openat stands before the C library's in the whole program, and in the libraries that it
// loads.
#pragma once

#include "support/messages.hpp"

#include <sys/types.h>

#include <deque>
#include <string>

namespace nimba::test {

// In its scope what is written to an existing node of the directory goes here and not to the node.
// There is one at a time.
class NodeJournal final {
  public:
    explicit NodeJournal(int directory);
    ~NodeJournal();
    NodeJournal(const NodeJournal&) = delete;
    NodeJournal& operator=(const NodeJournal&) = delete;

    // Each opening of a node, in order, failed ones included: "r eclk", "w power_mode".
    const Texts& opened() const { return opened_; }

    // Each opening of an existing node for writing, in order, with what was written before it was
    // closed: "power_mode <- 0x1\n". The texts of several writes have "|" between them.
    Texts written();

    int open(int directory, const char* name, int flags, mode_t mode);

  private:
    struct Writer {
        std::string node;
        int end;  // of a connection that keeps the bounds of writes
    };

    int directory_;
    Texts opened_;
    std::deque<Writer> writers_;
};

}  // namespace nimba::test
