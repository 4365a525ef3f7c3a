// SPDX-License-Identifier: MIT
#include "bench/page_tables/run.hpp"

#include "bench/measurement.hpp"
#include "bench/page_tables/cases.hpp"
#include "bench/page_tables/dump_tree.hpp"
#include "bench/page_tables/export_cases.hpp"
#include "bench/page_tables/memory.hpp"
#include "bench/page_tables/ps_command.hpp"
#include "bench/page_tables/report.hpp"

#include <malloc.h>

#include <fmt/format.h>

#include <cstdio>
#include <iterator>
#include <utility>

namespace nimba::bench {
namespace {

constexpr int kManyDevices = 50;
constexpr int kExportedDevices = 3;
constexpr char kOne[] = "1 device";
constexpr char kMany[] = "50 devices";

template <class Thing>
void append(std::vector<Thing>& things, std::vector<Thing> more)
{
    things.insert(things.end(), std::make_move_iterator(more.begin()),
                  std::make_move_iterator(more.end()));
}

// By default the allocator learns from what is freed and keeps more and more of it, so that a pass
// would find memory fresh or not, as chance and the passes before it will.
void make_large_blocks_fresh()
{
    ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
}

}  // namespace

std::vector<Row> measure_page_tables(const std::filesystem::path& scratch, int sub_table_lines,
                                     int repetitions)
{
    fmt::print(stderr, "nimba-bench: page tables\n");
    make_large_blocks_fresh();
    select_ps(Ps::kStub);
    const DumpTree one{scratch / "one", 1, DumpSize::of(sub_table_lines)};
    const DumpTree half{scratch / "half", 1, DumpSize::of(sub_table_lines / 2)};
    const DumpTree many{scratch / "many", kManyDevices, DumpSize::of(sub_table_lines / 10)};
    const DumpTree exported{scratch / "exported", kExportedDevices, one.size()};
    for (const DumpTree* const tree : {&one, &half, &many}) {
        check_dumps(*tree);
    }
    std::vector<Case> cases = dump_cases(one);
    append(cases, dump_cases(many));
    append(cases, dump_growth_cases(half));
    append(cases, export_cases(exported));
    Samples samples;
    measure(cases, repetitions, samples);

    std::vector<Row> rows = dump_rows(samples, one, kOne);
    append(rows, dump_rows(samples, many, kMany));
    append(rows, dump_growth_rows(samples, half, one));
    append(rows, export_rows(samples, exported));
    append(rows, collection_memory_rows(measure_memory(one), one, kOne));
    append(rows, collection_memory_rows(measure_memory(many), many, kMany));
    return rows;
}

}  // namespace nimba::bench
