// SPDX-License-Identifier: MIT
#pragma once

#include "driver/fault_control.hpp"
#include "driver/node_file_system.hpp"
#include "map_source.hpp"
#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

namespace nimba::sim::test {

// A driver with two nodes of one adapter, mounted; skips the test where that cannot be.
class NodeFileSystemTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        source_.set("dri/0/jw/info", "VA=1\n");
        source_.set("dri/0/jw/other", "other\n");
        try {
            mounted_.emplace(control_, faults_, directory_.path());
        } catch (const MountError& error) {
            GTEST_SKIP() << "no FUSE file system can be mounted here: " << error.what();
        }
    }

    std::string path(const std::string& node) const { return (directory_.path() / node).string(); }

    std::string info() const { return path("dri/0/jw/info"); }

    // Reads in pieces of `size` bytes; returns the pieces, the last of them "errno N" if it failed.
    static std::vector<std::string> read_pieces(int fd, std::size_t size)
    {
        std::vector<std::string> pieces;
        std::string piece(size, '\0');
        ssize_t length = 0;
        while ((length = ::read(fd, piece.data(), size)) > 0) {
            pieces.push_back(piece.substr(0, static_cast<std::size_t>(length)));
        }
        if (length < 0) {
            pieces.push_back("errno " + std::to_string(errno));
        }
        return pieces;
    }

    std::vector<std::string> read_pieces(const std::string& node, std::size_t size) const
    {
        return read_pieces(nimba::test::Descriptor{::open(path(node).c_str(), O_RDONLY)}.get(),
                           size);
    }

    // 0 or the error with which the node opens.
    int open_error(const std::string& node) const
    {
        const int fd = ::open(path(node).c_str(), O_RDONLY);
        if (fd < 0) {
            return errno;
        }
        ::close(fd);
        return 0;
    }

    // The names in listing order without the dots; the last is "errno N" if listing failed.
    std::vector<std::string> names(const std::string& directory) const
    {
        std::vector<std::string> names;
        DIR* stream = ::opendir(path(directory).c_str());
        if (stream == nullptr) {
            return {"errno " + std::to_string(errno)};
        }
        errno = 0;
        while (const dirent* entry = ::readdir(stream)) {
            if (entry->d_name[0] != '.') {
                names.emplace_back(entry->d_name);
            }
            errno = 0;
        }
        if (errno != 0) {
            names.push_back("errno " + std::to_string(errno));
        }
        ::closedir(stream);
        return names;
    }

    void fault(const std::string& text) { ASSERT_EQ(control_.write(".nimba-sim-faults", text), 0); }

    using Texts = std::vector<std::string>;

    nimba::test::TempDirectory directory_;
    MapSource source_;
    FaultPlan faults_;
    FaultControl control_{source_, faults_};
    std::optional<NodeFileSystem> mounted_;
};

}  // namespace nimba::sim::test
