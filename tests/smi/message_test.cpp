// SPDX-License-Identifier: MIT
#include "tools/smi/worker/message.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Message, RequestIsOneLineOfJson)
{
    EXPECT_EQ(encode_request("discover"), "{\"request\":\"discover\"}\n");
    EXPECT_EQ(decode_request(R"({"request":"discover"})"), "discover");
}

TEST(Message, EachKindIsOneLineOfJson)
{
    EXPECT_EQ(encode(Entering{"dlopen"}), "{\"entering\":\"dlopen\"}\n");
    EXPECT_EQ(encode(Answer{{{"a", "x\ny"}}}), "{\"answer\":{\"a\":\"x\\ny\"}}\n");
    EXPECT_EQ(encode(Failure{ExitStatus::kNoLibrary, "dlopen", "no such file"}),
              "{\"call\":\"dlopen\",\"failure\":\"no such file\",\"status\":4}\n");
}

TEST(Message, EachKindIsRead)
{
    EXPECT_EQ(decode(R"({"entering":"dlopen"})"), Message{Entering{"dlopen"}});
    EXPECT_EQ(decode(R"({"answer":[1,2]})"), (Message{Answer{{1, 2}}}));
    EXPECT_EQ(decode(R"({"answer":null})"), Message{Answer{nullptr}});
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
         {"", "garbage", "[]", "7", "null", "{}", R"({"entering":7})", R"({"failure":"text"})",
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

}  // namespace
}  // namespace nimba::smi
