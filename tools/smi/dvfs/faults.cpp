// SPDX-License-Identifier: MIT
#include "tools/smi/dvfs/faults.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace nimba::smi {
namespace {

bool is_denied(int error)
{
    return error == EACCES || error == EPERM;
}

Problem problem(const Subject& subject, ExitStatus status, const std::string& text)
{
    return {status, subject.bus_id, std::nullopt, fmt::format("{}: {}", subject.name, text)};
}

void add_once(std::vector<Problem>& problems, std::optional<Problem> problem)
{
    if (problem &&
        std::ranges::find(problems, problem->message, &Problem::message) == problems.end()) {
        problems.push_back(*std::move(problem));
    }
}

bool gives_nothing(const DvfsReading& reading, std::string_view node)
{
    return std::ranges::none_of(dvfs_fields(), [&](const DvfsField& field) {
        return field.node == node && value_of(reading, field);
    });
}

// Why nothing of a node is known.
std::optional<Problem> node_problem(const Subject& subject, const DvfsReading& reading,
                                    const char* node)
{
    const NodeAccess access = access_of(reading.nodes, node);
    if (access.read_error == 0 && gives_nothing(reading, node)) {
        return problem(subject, ExitStatus::kNoAdapter,
                       fmt::format("there are no settings in {} (see dmesg)", access.path));
    }
    return reading_problem(subject, access);
}

}  // namespace

std::optional<Problem> reading_problem(const Subject& subject, const NodeAccess& access)
{
    if (access.read_error == 0 || access.read_error == ENOENT) {
        return std::nullopt;
    }
    if (is_denied(access.read_error)) {
        return problem(subject, ExitStatus::kNoPermission,
                       fmt::format("no permission to read {}: run as root", access.path));
    }
    return problem(subject, ExitStatus::kNoAdapter,
                   fmt::format("cannot read {}: {} (see dmesg)", access.path,
                               std::strerror(access.read_error)));
}

std::optional<Problem> writing_problem(const Subject& subject, const NodeAccess& access)
{
    if (access.write_error == 0) {
        return std::nullopt;
    }
    if (is_denied(access.write_error)) {
        return problem(subject, ExitStatus::kNoPermission,
                       fmt::format("no permission to write {}: run as root; nothing was written",
                                   access.path));
    }
    return problem(subject, ExitStatus::kNoAdapter,
                   fmt::format("cannot write {}: {} (see dmesg); nothing was written", access.path,
                               std::strerror(access.write_error)));
}

std::vector<Problem> reading_problems(const Subject& subject, const DvfsReading& reading,
                                      std::span<const DvfsField* const> fields)
{
    std::vector<Problem> problems;
    for (const DvfsField* const field : fields) {
        add_once(problems, node_problem(subject, reading, field->node));
    }
    if (std::ranges::all_of(reading.nodes,
                            [](const NodeAccess& a) { return a.read_error == ENOENT; })) {
        problems.push_back(
            problem(subject, ExitStatus::kNoAdapter,
                    "the driver shows no settings, or the adapter is gone (see dmesg)"));
    }
    return problems;
}

std::vector<Problem> missing_fields(const Subject& subject, const DvfsReading& reading,
                                    std::span<const Assignment> assignments)
{
    std::vector<Problem> problems;
    for (const auto& [field, value] : assignments) {
        if (value_of(reading, *field)) {
            continue;
        }
        problems.push_back(
            problem(subject, ExitStatus::kNotTaken,
                    fmt::format("the driver does not give {}; nothing was written", field->name)));
        add_once(problems, reading_problem(subject, access_of(reading.nodes, field->node)));
    }
    return problems;
}

std::vector<Problem> writing_problems(const Subject& subject, const DvfsReading& reading,
                                      std::span<const Assignment> assignments)
{
    std::vector<Problem> problems;
    for (const Assignment& assignment : assignments) {
        add_once(problems,
                 writing_problem(subject, access_of(reading.nodes, assignment.field->node)));
    }
    return problems;
}

}  // namespace nimba::smi
