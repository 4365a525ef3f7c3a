// SPDX-License-Identifier: MIT
#include "bench/command_line.hpp"

#include <getopt.h>

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <string_view>

namespace nimba::bench {
namespace {

// The growth is measured from a quarter of the largest size, and a raw list needs later pages.
constexpr int kSizeMin = 100;
constexpr int kSizeMax = 1'000'000;
constexpr int kLinesMin = 1'000;
constexpr int kLinesMax = 300'000;  // what the library makes room for
constexpr int kRepetitionsMax = 1'000;

constexpr option kLongOptions[] = {
    {"quick", no_argument, nullptr, 'q'},
    {"sizes", required_argument, nullptr, 's'},
    {"lines", required_argument, nullptr, 'l'},
    {"repetitions", required_argument, nullptr, 'r'},
    {"directory", required_argument, nullptr, 'd'},
    {"help", no_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

int parse_number(std::string_view text, int least, int greatest)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size() || number < least ||
        number > greatest) {
        throw UsageError{
            fmt::format("\"{}\" is not a number from {} to {}", text, least, greatest)};
    }
    return number;
}

std::vector<int> parse_sizes(std::string_view text)
{
    std::vector<int> sizes;
    for (std::size_t comma = 0; comma != std::string_view::npos;) {
        comma = text.find(',');
        sizes.push_back(parse_number(text.substr(0, comma), kSizeMin, kSizeMax));
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 1);
    }
    std::sort(sizes.begin(), sizes.end());
    sizes.erase(std::unique(sizes.begin(), sizes.end()), sizes.end());
    return sizes;
}

void apply(Options& options, int letter, const char* word)
{
    switch (letter) {
        case 'q':
            options.sizes = {1'000, 10'000};
            options.lines = 30'000;
            options.repetitions = 3;
            break;
        case 's':
            options.sizes = parse_sizes(optarg);
            break;
        case 'l':
            options.lines = parse_number(optarg, kLinesMin, kLinesMax);
            break;
        case 'r':
            options.repetitions = parse_number(optarg, 1, kRepetitionsMax);
            break;
        case 'd':
            options.directory = optarg;
            break;
        case 'h':
            options.help = true;
            break;
        case ':':
            throw UsageError{fmt::format("{} needs a value", word)};
        default:
            throw UsageError{fmt::format("unknown option {}", word)};
    }
}

}  // namespace

const char kUsage[] =
    "usage: nimba-bench [--quick] [--sizes N,...] [--lines N] [--repetitions N]\n"
    "                   [--directory DIRECTORY]\n"
    "  --quick                1,000 and 10,000 allocations, 30,000 lines, 3 repetitions\n"
    "  --sizes N,...          numbers of allocations, from 100 to 1,000,000 (1000,10000,100000)\n"
    "  --lines N              sub-table lines of the largest device, from 1,000 to 300,000\n"
    "                         (300000)\n"
    "  --repetitions N        how often each is measured (15); up to five times as often\n"
    "                         for small trees\n"
    "  --directory DIRECTORY  an existing directory with a short path where trees are made\n"
    "                         (/dev/shm); should be on tmpfs\n";

Options parse_command_line(int argc, char** argv)
{
    Options options;
    opterr = 0;
    int letter = 0;
    while ((letter = ::getopt_long(argc, argv, ":", kLongOptions, nullptr)) != -1) {
        apply(options, letter, argv[optind - 1]);
    }
    if (optind < argc) {
        throw UsageError{fmt::format("unexpected argument {}", argv[optind])};
    }
    return options;
}

}  // namespace nimba::bench
