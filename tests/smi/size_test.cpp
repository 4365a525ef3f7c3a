// SPDX-License-Identifier: MIT
#include "tools/smi/text/size.hpp"

#include <gtest/gtest.h>

#include <cstdint>

namespace nimba::smi {
namespace {

TEST(SizeText, IsExactOrHasOnePlace)
{
    EXPECT_EQ(size_text(0), "0 B");
    EXPECT_EQ(size_text(1023), "1023 B");
    EXPECT_EQ(size_text(1024), "1 KiB");
    EXPECT_EQ(size_text(1536), "1.5 KiB");
    EXPECT_EQ(size_text(4096), "4 KiB");
    EXPECT_EQ(size_text(8294400), "7.9 MiB");
    EXPECT_EQ(size_text(2147483648), "2 GiB");
    EXPECT_EQ(size_text(2147483649), "2.0 GiB");
}

TEST(SizeText, NeverReachesTheNextUnitsNumber)
{
    EXPECT_EQ(size_text(1048575), "1.0 MiB");
    EXPECT_EQ(size_text(1073741823), "1.0 GiB");
    EXPECT_EQ(size_text(1047552), "1023 KiB");
    EXPECT_EQ(size_text(UINT64_MAX), "16777216 TiB");
}

TEST(SizeText, IsInTheUnitThatIsAskedFor)
{
    EXPECT_EQ(size_text(1572864, SizeUnit::kB), "1572864 B");
    EXPECT_EQ(size_text(UINT64_MAX, SizeUnit::kB), "18446744073709551615 B");
    EXPECT_EQ(size_text(1572864, SizeUnit::kKiB), "1536 KiB");
    EXPECT_EQ(size_text(1572864, SizeUnit::kMiB), "1.5 MiB");
    EXPECT_EQ(size_text(1610612736, SizeUnit::kGiB), "1.5 GiB");
    EXPECT_EQ(size_text(1572864, SizeUnit::kKB), "1572.9 kB");
    EXPECT_EQ(size_text(1572864, SizeUnit::kMB), "1.6 MB");
    EXPECT_EQ(size_text(3000000000, SizeUnit::kGB), "3 GB");
    EXPECT_EQ(size_text(1572864, SizeUnit::kAuto), "1.5 MiB");
}

TEST(SizeText, NeverShowsSomethingAsNothing)
{
    EXPECT_EQ(size_text(0, SizeUnit::kGiB), "0 GiB");
    EXPECT_EQ(size_text(1, SizeUnit::kGiB), "<0.1 GiB");
    EXPECT_EQ(size_text(49'999'999, SizeUnit::kGB), "<0.1 GB");
    EXPECT_EQ(size_text(50'000'001, SizeUnit::kGB), "0.1 GB");
}

TEST(SizeText, IsInTheUnitThatWasChosenForAll)
{
    EXPECT_EQ(chosen_size_unit(), SizeUnit::kAuto);
    choose_size_unit(SizeUnit::kKB);
    EXPECT_EQ(chosen_size_unit(), SizeUnit::kKB);
    EXPECT_EQ(size_text(5000), "5 kB");
    choose_size_unit(SizeUnit::kAuto);
    EXPECT_EQ(size_text(5000), "4.9 KiB");
}

TEST(ParseSizeUnit, TakesTheUnitsAsTheyAreWritten)
{
    EXPECT_EQ(parse_size_unit("auto"), SizeUnit::kAuto);
    EXPECT_EQ(parse_size_unit("B"), SizeUnit::kB);
    EXPECT_EQ(parse_size_unit("KiB"), SizeUnit::kKiB);
    EXPECT_EQ(parse_size_unit("MiB"), SizeUnit::kMiB);
    EXPECT_EQ(parse_size_unit("GiB"), SizeUnit::kGiB);
    EXPECT_EQ(parse_size_unit("kB"), SizeUnit::kKB);
    EXPECT_EQ(parse_size_unit("MB"), SizeUnit::kMB);
    EXPECT_EQ(parse_size_unit("GB"), SizeUnit::kGB);
    for (const char* const text : {"", "mb", "kib", "KB", "TiB", "MB "}) {
        EXPECT_EQ(parse_size_unit(text), std::nullopt) << text;
    }
}

TEST(ParseSize, TakesBytesAndIecUnits)
{
    EXPECT_EQ(parse_size("0"), 0U);
    EXPECT_EQ(parse_size("4096"), 4096U);
    EXPECT_EQ(parse_size("12B"), 12U);
    EXPECT_EQ(parse_size("4KiB"), 4096U);
    EXPECT_EQ(parse_size("4 kib"), 4096U);
    EXPECT_EQ(parse_size("1.5MiB"), 1572864U);
    EXPECT_EQ(parse_size("2g"), 2147483648U);
    EXPECT_EQ(parse_size("1T"), 1099511627776U);
}

TEST(ParseSize, RefusesOtherTexts)
{
    for (const char* const text : {"", "KiB", "-1", "-0", "4KB", "4Kib/s", "1e3", "0x10", "nan",
                                   "inf", "4  KiB", " 4", "16777216TiB", "99999999999999999999"}) {
        EXPECT_EQ(parse_size(text), std::nullopt) << text;
    }
}

}  // namespace
}  // namespace nimba::smi
