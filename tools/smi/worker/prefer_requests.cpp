// SPDX-License-Identifier: MIT
#include "tools/smi/worker/prefer_requests.hpp"

#include "tools/smi/prefer/preference.hpp"
#include "tools/smi/worker/prefer_library.hpp"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace nimba::smi {
namespace {

using Node = _UTIL_GPU_PREFERENCE_NODE;

template <std::size_t Size>
void fill(char (&field)[Size], const std::string& text)
{
    std::memcpy(field, text.data(), std::min(Size, text.size()));
}

template <std::size_t Size>
std::string bounded(const char (&text)[Size])
{
    return {text, ::strnlen(text, Size)};
}

Node node_of(const Preference& preference)
{
    Node node{};
    fill(node.FileName, preference.application);
    fill(node.FullPath, preference.path);
    node.GpuPrefer = preference.value;
    fill(node.PreferGpuName, preference.gpu_name);
    node.domain = preference.gpu.domain;
    node.bus = preference.gpu.bus;
    node.device = preference.gpu.device;
    node.function = preference.gpu.function;
    return node;
}

Preference preference_in(const Node& node)
{
    return {bounded(node.FileName),
            bounded(node.FullPath),
            node.GpuPrefer,
            bounded(node.PreferGpuName),
            {node.domain, node.bus, node.device, node.function}};
}

PreferenceList held_list(Session& session, const PreferEntryPoints& entry)
{
    int32_t count = 0;
    const auto get = [&](Node* buffer) {
        session.call("get_gpu_preference", [&] { return entry.get(buffer, &count); });
    };
    get(nullptr);
    // The library copies one record whatever it is told.
    std::vector<Node> nodes(static_cast<std::size_t>(std::max(count, 1)));
    get(nodes.data());
    nodes.resize(std::min(static_cast<std::size_t>(std::max(count, 0)), nodes.size()));
    PreferenceList list;
    std::ranges::transform(nodes, std::back_inserter(list.preferences), preference_in);
    return list;
}

using ChangeFunction = decltype(PreferEntryPoints::set);

// Makes the call `change` of the library, unless there is none, on the list that was loaded.
Message answer(Session& session, std::string_view arguments, const char* name,
               ChangeFunction PreferEntryPoints::*change)
{
    const auto request = preference_request_in(arguments);
    if (!request) {
        return Failure{ExitStatus::kFailed, session.current_call(),
                       "a request has no such arguments"};
    }
    const auto found = find_prefer_entry_points(session.library());
    if (const auto* const message = std::get_if<std::string>(&found)) {
        return Failure{ExitStatus::kNoLibrary, session.current_call(), *message};
    }
    const auto& entry = std::get<PreferEntryPoints>(found);
    ::setenv("HOME", request->home.c_str(), 1);
    PreferenceList list = held_list(session, entry);
    if (change != nullptr) {
        const Node node = node_of(request->preference);
        session.call(name, [&] { return (entry.*change)(&node); });
        list = held_list(session, entry);
    }
    return Answer{to_json_value(list)};
}

}  // namespace

Message answer_prefer_get(Session& session, std::string_view arguments)
{
    return answer(session, arguments, "", nullptr);
}

Message answer_prefer_set(Session& session, std::string_view arguments)
{
    return answer(session, arguments, "set_gpu_preference", &PreferEntryPoints::set);
}

Message answer_prefer_remove(Session& session, std::string_view arguments)
{
    return answer(session, arguments, "remove_gpu_preference", &PreferEntryPoints::remove);
}

}  // namespace nimba::smi
