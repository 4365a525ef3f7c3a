// SPDX-License-Identifier: MIT
#include "tools/smi/report/ask.hpp"

#include <gtest/gtest.h>

namespace nimba::smi::page {
namespace {

TEST(ReportAsk, NoCommandIsAskedWhenPatienceIsOver)
{
    std::vector<Problem> problems;
    std::vector<std::string> asked;
    const Documents documents = ask_documents(
        {}, problems, [&](const std::string& what) { asked.push_back(what); },
        std::chrono::seconds{0});
    EXPECT_TRUE(documents.empty());
    EXPECT_TRUE(asked.empty());
}

}  // namespace
}  // namespace nimba::smi::page
