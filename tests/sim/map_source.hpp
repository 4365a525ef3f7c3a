// SPDX-License-Identifier: MIT
#pragma once

#include "driver/node_source.hpp"

#include <condition_variable>

#include <cerrno>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

namespace nimba::sim::test {

// A driver with the nodes that a test gives it. Directories are there without being mentioned.
class MapSource final : public NodeSource {
  public:
    std::optional<NodeAttributes> look_up(const std::string& path) override
    {
        const std::scoped_lock lock{mutex_};
        ++look_ups_;
        if (texts_.contains(path)) {
            return NodeAttributes{false, 0644};
        }
        const auto next = texts_.lower_bound(path.empty() ? "" : path + "/");
        if (path.empty() || (next != texts_.end() && next->first.starts_with(path + "/"))) {
            return NodeAttributes{true, 0755};
        }
        return std::nullopt;
    }

    std::vector<std::string> list(const std::string& directory) override
    {
        const std::scoped_lock lock{mutex_};
        const std::string start = directory.empty() ? "" : directory + "/";
        std::vector<std::string> names;
        for (auto node = texts_.lower_bound(start);
             node != texts_.end() && node->first.starts_with(start); ++node) {
            const std::string rest = node->first.substr(start.size());
            const std::string name = rest.substr(0, rest.find('/'));
            if (names.empty() || names.back() != name) {
                names.push_back(name);
            }
        }
        return names;
    }

    std::optional<std::string> read(const std::string& file) override
    {
        std::unique_lock lock{mutex_};
        ++reads_;
        changed_.notify_all();
        changed_.wait(lock, [&] { return !held_.contains(file); });
        const auto found = texts_.find(file);
        return found == texts_.end() ? std::nullopt : std::optional{found->second};
    }

    int write(const std::string& file, std::string_view text) override
    {
        const std::scoped_lock lock{mutex_};
        commands_.push_back(file + "<" + std::string{text});
        return text == "bad" ? EINVAL : 0;
    }

    void set(const std::string& file, const std::string& text)
    {
        const std::scoped_lock lock{mutex_};
        texts_[file] = text;
    }

    void remove(const std::string& file)
    {
        const std::scoped_lock lock{mutex_};
        texts_.erase(file);
    }

    // Lets those who read the file wait until release().
    void hold(const std::string& file)
    {
        const std::scoped_lock lock{mutex_};
        held_.insert(file);
    }

    void release()
    {
        const std::scoped_lock lock{mutex_};
        held_.clear();
        changed_.notify_all();
    }

    void wait_for_reads(int count)
    {
        std::unique_lock lock{mutex_};
        changed_.wait(lock, [&] { return reads_ >= count; });
    }

    int look_ups()
    {
        const std::scoped_lock lock{mutex_};
        return look_ups_;
    }

    // "FILE<TEXT" for each write.
    std::vector<std::string> commands()
    {
        const std::scoped_lock lock{mutex_};
        return commands_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, std::string> texts_;
    std::set<std::string> held_;
    int look_ups_ = 0;
    int reads_ = 0;
    std::vector<std::string> commands_;
};

}  // namespace nimba::sim::test
