// SPDX-License-Identifier: MIT
// What the tool and its workers say to each other: one JSON object a line. The tool sends requests;
// the worker answers each with any number of notices and then one answer or failure.
#pragma once

#include "tools/smi/exit_status.hpp"

#include <nlohmann/json_fwd.hpp>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace nimba::smi {

using Json = nlohmann::json;

// What a worker is in before its first call.
inline constexpr std::string_view kStartCall = "start";

// The worker is about to make a call that may not come back.
struct Entering {
    std::string call;
    int64_t extra_ms = 0;  // beyond the usual time, for a call that has much to do

    bool operator==(const Entering&) const = default;
};

// Its value is behind a pointer: who only passes answers on need not know JSON.
class Answer final {
  public:
    explicit Answer(Json value);

    [[nodiscard]] const Json& value() const { return *value_; }

    bool operator==(const Answer& other) const;

  private:
    std::shared_ptr<const Json> value_;
};

// The request could not be answered; the worker lives.
struct Failure {
    ExitStatus status = ExitStatus::kFailed;
    std::string call;
    std::string message;

    bool operator==(const Failure&) const = default;
};

using Message = std::variant<Entering, Answer, Failure>;

// Lines end in a newline and hold no other. Bytes that are no UTF-8 become U+FFFD.
std::string encode_request(std::string_view name);
std::string encode(const Message& message);

// Nothing when the line is not such a message.
std::optional<std::string> decode_request(std::string_view line);
std::optional<Message> decode(std::string_view line);

// Puts lines together from pieces as they arrive. Each byte is looked at once, however long a line
// and however small the pieces are.
class LineBuffer final {
  public:
    void append(std::string_view bytes);

    // The next whole line, without its newline.
    std::optional<std::string> next_line();

  private:
    std::string bytes_;
    std::size_t begin_ = 0;     // of the next line
    std::size_t searched_ = 0;  // there is no newline between begin_ and here
};

}  // namespace nimba::smi
