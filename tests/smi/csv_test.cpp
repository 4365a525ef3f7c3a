// SPDX-License-Identifier: MIT
#include "tools/smi/text/csv.hpp"

#include <gtest/gtest.h>

namespace nimba::smi {
namespace {

TEST(Csv, IsALineForEachRow)
{
    EXPECT_EQ(csv_text({}), "");
    EXPECT_EQ(csv_text({{"a", "b"}, {"", "1"}, {"2", ""}}), "a,b\n,1\n2,\n");
}

TEST(Csv, QuotesCommasAndQuotationMarks)
{
    EXPECT_EQ(csv_text({{"a,b", "say \"x\"", "a b", ";"}}), "\"a,b\",\"say \"\"x\"\"\",a b,;\n");
}

TEST(Csv, QuotesWhatASpreadsheetWouldComputeAndLeavesNumbers)
{
    EXPECT_EQ(csv_text({{"=1+1", "+x", "-x", "@x", "-5", "x=1"}}),
              "\"=1+1\",\"+x\",\"-x\",\"@x\",-5,x=1\n");
}

TEST(Csv, KeepsEveryRowOnItsLine)
{
    EXPECT_EQ(csv_text({{"two\nlines", "\r", "\x1b[2J", "\xFF"}}),
              "two\\x0alines,\\x0d,\\x1b[2J,\xEF\xBF\xBD\n");
}

}  // namespace
}  // namespace nimba::smi
