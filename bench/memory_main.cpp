// SPDX-License-Identifier: MIT
// nimba-bench-memory allocations DIRECTORY: queries the allocations of a debug directory and prints
// the peak of the allocator's live bytes over the level before, one line for each kind of query.
// nimba-bench-memory page-tables DIRECTORY: collects the page tables below it and prints that peak
// and the number of large blocks.
#include "bench/counting_allocator.hpp"
#include "bench/page_tables/driver_root.hpp"
#include "bench/page_tables/memory.hpp"
#include "bench/standard_output.hpp"
#include "nimba_mgmt_interface.h"

#include <signal.h>

#include <fmt/format.h>
#include <sys/prctl.h>

#include <cstdio>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace nimba::bench {
namespace {

void expect(bool good, const char* function)
{
    if (!good) {
        throw std::runtime_error{fmt::format("{} did not read the driver", function)};
    }
}

// The calls before the last belong to the peak only by what they leave behind.
template <class Query>
std::size_t peak_of_last_call(int calls, const Query& query)
{
    const std::size_t start = live_bytes();
    for (int call = 0; call < calls; ++call) {
        restart_peak();
        query();
    }
    return peak_bytes() - start;
}

void query_reader()
{
    std::vector<_GFX_ALLOCATION_INFO> list;
    expect(get_current_allocation_data(list, 0, 0) == 0 && !list.empty(),
           "get_current_allocation_data");
}

void query_raw_list()
{
    const find_adapter adapter{};
    _GFX_ALLOCATION_RAW_LIST page{};
    expect(get_allocation_raw_list(&page, &adapter) == 0 && page.total_cnt > 0,
           "get_allocation_raw_list");
}

void query_leaks()
{
    _GFX_MEMLEAK_INFO report{};
    expect(get_memleak_info(&report) == 0 && report.groups[0].sum_count > 0, "get_memleak_info");
}

void collect_page_tables()
{
    std::vector<data_vectors> list;
    expect(get_PageTable_data(list) == 0 && !list.empty(), "get_PageTable_data");
}

std::string allocations(std::string_view directory)
{
    if (directory.size() >= sizeof sys_kernel_debug_ID_dri_ADAPTER_path) {
        throw std::runtime_error{"the path of the directory is too long"};
    }
    std::memcpy(sys_kernel_debug_ID_dri_ADAPTER_path, directory.data(), directory.size());
    const std::size_t reader = peak_of_last_call(1, query_reader);
    const std::size_t raw_list = peak_of_last_call(2, query_raw_list);
    const std::size_t leak_query = peak_of_last_call(2, query_leaks);
    return fmt::format("reader={}\nraw_list={}\nleak_query={}\n", reader, raw_list, leak_query);
}

std::string page_tables(std::string_view directory)
{
    replace_driver_root(directory);
    count_blocks_from(kLargeBlock);
    const std::size_t peak = peak_of_last_call(1, collect_page_tables);
    return fmt::format("peak={}\nlarge_blocks={}\n", peak, counted_blocks());
}

struct Kind {
    std::string_view name;
    std::string (*query)(std::string_view directory);
};

constexpr Kind kKinds[] = {{"allocations", allocations}, {"page-tables", page_tables}};

void run(const tools::Descriptor& output, std::string_view name, std::string_view directory)
{
    for (const Kind& kind : kKinds) {
        if (kind.name == name) {
            write_text(output, kind.query(directory));
            return;
        }
    }
    throw std::runtime_error{"the first argument is neither \"allocations\" nor \"page-tables\""};
}

}  // namespace
}  // namespace nimba::bench

int main(int argc, char** argv)
{
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (argc != 3) {
        fmt::print(stderr, "usage: nimba-bench-memory allocations|page-tables DIRECTORY\n");
        return 2;
    }
    try {
        nimba::bench::run(nimba::bench::claim_standard_output(), argv[1], argv[2]);
    } catch (const std::exception& exception) {
        fmt::print(stderr, "nimba-bench-memory: {}\n", exception.what());
        return 1;
    }
    return 0;
}
