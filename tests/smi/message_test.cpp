// SPDX-License-Identifier: MIT
#include "tools/smi/worker/message.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace nimba::smi {
namespace {

TEST(Message, RequestIsOneLineOfJson)
{
    EXPECT_EQ(encode_request("discover"), "{\"request\":\"discover\"}\n");
    EXPECT_EQ(decode_request(R"({"request":"discover"})"), "discover");
}

TEST(Message, EachKindIsOneLineOfJson)
{
    EXPECT_EQ(encode(Entering{"dlopen"}), "{\"entering\":\"dlopen\",\"extra_ms\":0}\n");
    EXPECT_EQ(encode(Answer{Json::object({{"a", "x\ny"}})}), "{\"answer\":{\"a\":\"x\\ny\"}}\n");
    EXPECT_EQ(encode(Failure{ExitStatus::kNoLibrary, "dlopen", "no such file"}),
              "{\"call\":\"dlopen\",\"failure\":\"no such file\",\"status\":4}\n");
}

TEST(Message, EachKindIsRead)
{
    EXPECT_EQ(decode(R"({"entering":"dlopen","extra_ms":0})"), Message{Entering{"dlopen"}});
    EXPECT_EQ(decode(R"({"entering":"open","extra_ms":250})"), (Message{Entering{"open", 250}}));
    EXPECT_EQ(decode(R"({"answer":[1,2]})"), (Message{Answer{Json::array({1, 2})}}));
    EXPECT_EQ(decode(R"({"answer":null})"), Message{Answer{Json(nullptr)}});
    EXPECT_EQ(decode(R"({"failure":"text","call":"dlopen","status":5})"),
              (Message{Failure{ExitStatus::kNoLibdrm, "dlopen", "text"}}));
}

TEST(Message, BytesThatAreNoUtf8AreReplaced)
{
    EXPECT_EQ(encode(Answer{"\xFFz"}), "{\"answer\":\"\xEF\xBF\xBDz\"}\n");
}

TEST(Message, AnythingElseIsRefused)
{
    for (const char* const line :
         {"", "garbage", "[]", "7", "null", "{}", R"({"entering":7})", R"({"entering":"dlopen"})",
          R"({"entering":"dlopen","extra_ms":"0"})", R"({"failure":"text"})",
          R"({"failure":"text","status":5})", R"({"failure":"text","call":"x","status":"5"})",
          R"({"request":"discover"})"}) {
        EXPECT_EQ(decode(line), std::nullopt) << line;
    }
    for (const char* const line : {"", "garbage", "[]", R"({"request":7})", R"({"answer":1})"}) {
        EXPECT_EQ(decode_request(line), std::nullopt) << line;
    }
}

TEST(LineBuffer, GivesWholeLinesOnly)
{
    LineBuffer lines;
    EXPECT_EQ(lines.next_line(), std::nullopt);
    lines.append("on");
    EXPECT_EQ(lines.next_line(), std::nullopt);
    lines.append("e\ntwo\n\nth");
    EXPECT_EQ(lines.next_line(), "one");
    EXPECT_EQ(lines.next_line(), "two");
    EXPECT_EQ(lines.next_line(), "");
    EXPECT_EQ(lines.next_line(), std::nullopt);
    lines.append("ree\n");
    EXPECT_EQ(lines.next_line(), "three");
}

TEST(LineBuffer, TakesLongLinesInSmallPieces)
{
    LineBuffer lines;
    lines.append("first\n");
    for (int piece = 0; piece < 100'000; ++piece) {
        lines.append("0123456789");
        ASSERT_EQ(lines.next_line(),
                  piece == 0 ? std::optional<std::string>("first") : std::nullopt);
    }
    lines.append("end\nnext\n");
    const auto line = lines.next_line();
    ASSERT_TRUE(line.has_value());
    EXPECT_EQ(line->size(), 1'000'003U);
    EXPECT_EQ(line->substr(999'990), "0123456789end");
    EXPECT_EQ(lines.next_line(), "next");
    EXPECT_EQ(lines.next_line(), std::nullopt);
}

}  // namespace
}  // namespace nimba::smi
