// SPDX-License-Identifier: MIT
// nimba-bench: measures what the library's queries of allocations and page tables cost.
#include "bench/allocation_tree.hpp"
#include "bench/cases.hpp"
#include "bench/command_line.hpp"
#include "bench/machine.hpp"
#include "bench/measurement.hpp"
#include "bench/page_tables/run.hpp"
#include "bench/peak_memory.hpp"
#include "bench/report.hpp"
#include "bench/scratch_directory.hpp"
#include "bench/standard_output.hpp"
#include "bench/table.hpp"

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace nimba::bench {
namespace {

using Path = std::filesystem::path;
using Rows = std::vector<Row>;

void append(Rows& rows, Rows more)
{
    rows.insert(rows.end(), std::make_move_iterator(more.begin()),
                std::make_move_iterator(more.end()));
}

Rows measure_queries(const Path& scratch, int size, int repetitions)
{
    fmt::print(stderr, "nimba-bench: every query, {} allocations\n", grouped(size));
    const AllocationTree tree{scratch / "a", size, Shapes::kMixed};
    check_tree(tree);
    Samples samples;
    measure(query_cases(tree), repetitions, samples);
    return query_rows(samples, size);
}

struct Condition {
    const char* description;
    Shapes shapes;
    bool replaced;  // every allocation, between two snapshots
};

constexpr Condition kConditions[] = {
    {"unchanged", Shapes::kMixed, false},
    {"all replaced", Shapes::kMixed, true},
    {"all of one shape", Shapes::kOne, false},
};

Rows measure_growth(const Path& scratch, const Sizes& sizes, const Condition& condition,
                    int repetitions)
{
    fmt::print(stderr, "nimba-bench: leak detector, {}\n", condition.description);
    std::vector<std::unique_ptr<const AllocationTree>> trees;
    const auto make_tree = [&](int size, int first) {
        trees.push_back(std::make_unique<AllocationTree>(scratch / std::to_string(trees.size()),
                                                         size, condition.shapes, first));
        check_tree(*trees.back());
        return trees.back().get();
    };
    std::vector<Case> cases;
    for (const int size : sizes) {
        const AllocationTree* const tree = make_tree(size, 0);
        const AllocationTree* const other = condition.replaced ? make_tree(size, size) : tree;
        for (Case& item : leak_cases(*tree, *other)) {
            cases.push_back(std::move(item));
        }
    }
    Samples samples;
    measure(cases, repetitions, samples);
    return growth_rows(samples, sizes, condition.description);
}

Rows measure_memory(const Path& scratch, int size)
{
    fmt::print(stderr, "nimba-bench: peak memory, {} allocations\n", grouped(size));
    const AllocationTree tree{scratch / "a", size, Shapes::kMixed};
    return memory_rows(measure_peak_memory(tree.path()), size);
}

Rows measure_allocations(const Options& options, const Path& scratch)
{
    Rows rows;
    for (const int size : options.sizes) {
        append(rows, measure_queries(scratch, size, options.repetitions));
    }
    const int largest = options.sizes.back();
    for (const Condition& condition : kConditions) {
        append(rows, measure_growth(scratch, {largest / 4, largest / 2, largest}, condition,
                                    options.repetitions));
    }
    append(rows, measure_memory(scratch, largest));
    return rows;
}

std::string measure_all(const Options& options, const Path& scratch)
{
    Rows rows = measure_allocations(options, scratch);
    Rows page_tables = measure_page_tables(scratch, options.lines, options.repetitions);
    std::string text = fmt::format(
        "{}- Repetitions: {}, more of trees up to {} allocations or lines; medians "
        "shown\n\n{}\n{}\n",
        describe_machine(), options.repetitions, grouped(kSmallTreeMax),
        render_table(rows, "allocations"), render_table(page_tables, "lines"));
    append(rows, std::move(page_tables));
    return text + verdict(rows);
}

int report_failure(const std::exception& exception)
{
    fmt::print(stderr, "nimba-bench: {}\n", exception.what());
    return 1;
}

int run(const Options& options, const tools::Descriptor& output)
{
    if (options.help) {
        write_text(output, kUsage);
        return 0;
    }
    return run_in_scratch_directory(options.directory, [&](const Path& scratch) {
        try {
            write_text(output, measure_all(options, scratch));
            return 0;
        } catch (const std::exception& exception) {
            return report_failure(exception);
        }
    });
}

}  // namespace
}  // namespace nimba::bench

int main(int argc, char** argv)
{
    using namespace nimba::bench;
    try {
        const nimba::tools::Descriptor output = claim_standard_output();
        return run(parse_command_line(argc, argv), output);
    } catch (const UsageError& error) {
        fmt::print(stderr, "nimba-bench: {}\n{}", error.what(), kUsage);
        return 2;
    } catch (const std::exception& exception) {
        return report_failure(exception);
    }
}
