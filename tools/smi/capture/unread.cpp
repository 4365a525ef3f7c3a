// SPDX-License-Identifier: MIT
#include "tools/smi/capture/unread.hpp"

#include "tools/smi/capture/node_reader.hpp"

#include <fmt/core.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <set>
#include <utility>

namespace nimba::smi {
namespace {

struct Sum {
    std::string first;
    std::set<std::string> paths;
};

std::string nodes_of(const Sum& sum)
{
    const std::size_t others = sum.paths.size() - 1;
    return others == 0
               ? sum.first
               : fmt::format("{} and {} more node{}", sum.first, others, others == 1 ? "" : "s");
}

Problem problem_of(const std::string& error, const Sum& sum)
{
    const std::string nodes = nodes_of(sum);
    if (error == "EACCES" || error == "EPERM") {
        return {ExitStatus::kNoPermission, std::nullopt, "open",
                fmt::format("no permission to read {}: run as root", nodes)};
    }
    if (error == archive::kDeadline) {
        return {ExitStatus::kWorkerLost, std::nullopt, "read",
                fmt::format("no answer from {}: the driver may be blocked (see dmesg), or allow "
                            "more with --timeout",
                            nodes)};
    }
    if (error == archive::kLimit) {
        return {ExitStatus::kFailed, std::nullopt, std::nullopt,
                fmt::format("the archive is full and lacks {}: take fewer samples", nodes)};
    }
    return {ExitStatus::kNoAdapter, std::nullopt, "read",
            fmt::format("cannot read {}: {} (see dmesg)", nodes, error)};
}

}  // namespace

void Unread::add(std::size_t sample, const std::string& path, int error)
{
    if (error == 0 || error == ENOENT || error == ENOTDIR) {
        return;
    }
    const char* const name = error == kNoAnswer ? archive::kDeadline : ::strerrorname_np(error);
    add({sample, path, name == nullptr ? "EIO" : name});
}

void Unread::add(std::size_t sample, const std::string& path, const std::string& error)
{
    if (error != "ENOENT" && error != "ENOTDIR") {
        add({sample, path, error});
    }
}

void Unread::add(std::size_t sample, const archive::Node& node)
{
    if (node.kind == archive::NodeKind::kUnread) {
        add({sample, node.path, node.error});
    }
}

void Unread::add(archive::ReadError error)
{
    if (known_.emplace(error.path, error.error).second) {
        errors_.push_back(std::move(error));
    }
}

std::vector<Problem> Unread::problems() const
{
    std::map<std::string, Sum> sums;
    for (const archive::ReadError& error : errors_) {
        Sum& sum = sums[error.error];
        sum.first = sum.paths.empty() ? error.path : sum.first;
        sum.paths.insert(error.path);
    }
    std::vector<Problem> problems;
    problems.reserve(sums.size());
    for (const auto& [error, sum] : sums) {
        problems.push_back(problem_of(error, sum));
    }
    return problems;
}

}  // namespace nimba::smi
