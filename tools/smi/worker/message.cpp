// SPDX-License-Identifier: MIT
#include "tools/smi/worker/message.hpp"

#include <nlohmann/json.hpp>

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

std::optional<Entering> entering_of(const Json& object)
{
    const auto call = text_member(object, "entering");
    const Json* const extra = member(object, "extra_ms");
    if (!call || extra == nullptr || !extra->is_number_integer()) {
        return std::nullopt;
    }
    return Entering{*call, extra->get<int64_t>()};
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
    Json operator()(const Entering& entering) const
    {
        return {{"entering", entering.call}, {"extra_ms", entering.extra_ms}};
    }
    Json operator()(const Answer& answer) const { return {{"answer", answer.value()}}; }
    Json operator()(const Failure& failure) const
    {
        return {{"failure", failure.message},
                {"call", failure.call},
                {"status", static_cast<int>(failure.status)}};
    }
};

}  // namespace

Answer::Answer(Json value) : value_{std::make_shared<const Json>(std::move(value))} {}

bool Answer::operator==(const Answer& other) const
{
    return value() == other.value();
}

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
    if (auto entering = entering_of(object)) {
        return *std::move(entering);
    }
    if (const Json* const value = member(object, "answer")) {
        return Answer{*value};
    }
    if (auto failure = failure_of(object)) {
        return *std::move(failure);
    }
    return std::nullopt;
}

void LineBuffer::append(std::string_view bytes)
{
    // Lines that were taken make room when a piece arrives, all of them at once.
    bytes_.erase(0, begin_);
    searched_ -= begin_;
    begin_ = 0;
    bytes_ += bytes;
}

std::optional<std::string> LineBuffer::next_line()
{
    const auto end = bytes_.find('\n', searched_);
    if (end == std::string::npos) {
        searched_ = bytes_.size();
        return std::nullopt;
    }
    std::string line = bytes_.substr(begin_, end - begin_);
    begin_ = end + 1;
    searched_ = begin_;
    return line;
}

}  // namespace nimba::smi
