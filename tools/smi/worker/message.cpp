// SPDX-License-Identifier: MIT
#include "tools/smi/worker/message.hpp"

namespace nimba::smi {
namespace {

std::string line_of(const Json& object)
{
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

Json parsed(std::string_view line)
{
    return Json::parse(line, nullptr, false);
}

const Json* member(const Json& object, const char* key)
{
    const auto found = object.find(key);
    return found == object.end() ? nullptr : &*found;
}

std::optional<std::string> text_member(const Json& object, const char* key)
{
    const Json* const value = member(object, key);
    if (value == nullptr || !value->is_string()) {
        return std::nullopt;
    }
    return value->get<std::string>();
}

std::optional<Failure> failure_of(const Json& object)
{
    const Json* const status = member(object, "status");
    const auto call = text_member(object, "call");
    const auto message = text_member(object, "failure");
    if (status == nullptr || !status->is_number_integer() || !call || !message) {
        return std::nullopt;
    }
    return Failure{static_cast<ExitStatus>(status->get<int>()), *call, *message};
}

struct Encoder {
    Json operator()(const Entering& entering) const { return {{"entering", entering.call}}; }
    Json operator()(const Answer& answer) const { return {{"answer", answer.value}}; }
    Json operator()(const Failure& failure) const
    {
        return {{"failure", failure.message},
                {"call", failure.call},
                {"status", static_cast<int>(failure.status)}};
    }
};

}  // namespace

std::string encode_request(std::string_view name)
{
    return line_of({{"request", name}});
}

std::string encode(const Message& message)
{
    return line_of(std::visit(Encoder{}, message));
}

std::optional<std::string> decode_request(std::string_view line)
{
    return text_member(parsed(line), "request");
}

std::optional<Message> decode(std::string_view line)
{
    const Json object = parsed(line);
    if (auto call = text_member(object, "entering")) {
        return Entering{std::move(*call)};
    }
    if (const Json* const value = member(object, "answer")) {
        return Answer{*value};
    }
    if (auto failure = failure_of(object)) {
        return *std::move(failure);
    }
    return std::nullopt;
}

std::optional<std::string> LineBuffer::next_line()
{
    const auto end = bytes_.find('\n');
    if (end == std::string::npos) {
        return std::nullopt;
    }
    std::string line = bytes_.substr(0, end);
    bytes_.erase(0, end + 1);
    return line;
}

}  // namespace nimba::smi
