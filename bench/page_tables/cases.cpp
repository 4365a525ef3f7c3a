// SPDX-License-Identifier: MIT
#include "bench/page_tables/cases.hpp"

#include "bench/page_tables/bare_pass.hpp"
#include "bench/page_tables/driver_root.hpp"
#include "bench/page_tables/plain_parser.hpp"
#include "bench/page_tables/ps_command.hpp"
#include "bench/page_tables/same_records.hpp"
#include "nimba_mgmt_interface.h"

#include <unistd.h>

#include <fmt/format.h>

#include <chrono>
#include <stdexcept>
#include <string>

namespace nimba::bench {
namespace {

void expect(bool good, const char* what)
{
    if (!good) {
        throw std::runtime_error{fmt::format("{}: not what the dumps are", what)};
    }
}

template <class Work>
double seconds_of(const Work& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>{std::chrono::steady_clock::now() - start}.count();
}

int entries_of(const data_vectors& device)
{
    return static_cast<int>(device.pt_level0.size() + device.pt_level1.size() +
                            device.pt_level2.size() + device.st_level0.size() +
                            device.st_level1.size() + device.st_level2.size());
}

data_vectors prepared_record()
{
    data_vectors device{};
    create_vector(device);
    return device;
}

// The time of one pass over a tree alone, in seconds: without what prepares it, and without giving
// back the memory of what it read.
using Pass = double (*)(const DumpTree& tree);

double bare_pass(const DumpTree& tree)
{
    std::vector<BareDump> kept(tree.dumps().size());
    const double seconds = seconds_of([&] {
        for (std::size_t i = 0; i < kept.size(); ++i) {
            kept[i] = read_bare_dump(tree.dumps()[i], tree.size().record_bytes());
        }
    });
    for (const BareDump& dump : kept) {
        expect(dump.lines == tree.size().lines(), name::kBareDumps);
    }
    return seconds;
}

void parse(const std::string& dump, data_vectors& device)
{
    expect(get_pagetable_info(&device, dump.c_str()) == 0, name::kParser);
}

using Parser = void (*)(const std::string& dump, data_vectors& device);

template <Parser kParse>
double fresh_record_pass(const DumpTree& tree)
{
    double seconds = 0;
    for (const std::string& dump : tree.dumps()) {
        data_vectors device = prepared_record();
        seconds += seconds_of([&] { kParse(dump, device); });
        expect(entries_of(device) == tree.size().lines(), name::kParser);
    }
    return seconds;
}

template <Parser kParse>
double reused_record_pass(const DumpTree& tree)
{
    data_vectors device = prepared_record();
    kParse(tree.dumps().front(), device);
    double seconds = 0;
    for (const std::string& dump : tree.dumps()) {
        clean_vector(&device);
        seconds += seconds_of([&] { kParse(dump, device); });
        expect(entries_of(device) == tree.size().lines(), name::kParserReused);
    }
    return seconds;
}

// Asks for the name of a process as often as a collection of the tree does.
double names_pass(const DumpTree& tree)
{
    data_vectors device{};
    fmt::format_to_n(&device.pid[0], sizeof device.pid - 1, "{}", ::getpid());
    return seconds_of([&] {
        for (int i = 0; i < tree.devices(); ++i) {
            expect(get_AppName_info(&device) == 0, name::kCollection);
        }
    });
}

double collection_pass(const DumpTree& tree)
{
    replace_driver_root(tree.path());
    std::vector<data_vectors> list;
    const double seconds =
        seconds_of([&] { expect(get_PageTable_data(list) == 0, name::kCollection); });
    expect(std::ssize(list) == tree.devices(), name::kCollection);
    for (const data_vectors& device : list) {
        expect(entries_of(device) == tree.size().lines(), name::kCollection);
    }
    return seconds;
}

double collection_less_ps_pass(const DumpTree& tree)
{
    const double names_before = names_pass(tree);
    const double collection = collection_pass(tree);
    return collection - (names_before + names_pass(tree)) / 2;
}

double collection_and_ps_pass(const DumpTree& tree)
{
    select_ps(Ps::kSystem);
    const double seconds = collection_pass(tree);
    select_ps(Ps::kStub);
    return seconds;
}

// The first pass is not timed: after it every way finds caches alike.
Case pass_case(const char* case_name, const DumpTree& tree, Pass pass)
{
    return {case_name, tree.lines(), 1, true, [&tree, pass](benchmark::State& state) {
                pass(tree);
                for ([[maybe_unused]] auto _ : state) {
                    state.SetIterationTime(pass(tree));
                }
            }};
}

}  // namespace

void check_dumps(const DumpTree& tree)
{
    bare_pass(tree);
    collection_pass(tree);
    for (const std::string& dump : tree.dumps()) {
        data_vectors plain = prepared_record();
        data_vectors device = prepared_record();
        parse_plainly(dump, plain);
        parse(dump, device);
        expect(entries_of(device) == tree.size().lines(), name::kParser);
        expect(same_entries(plain, device), name::kPlainDumps);
    }
}

std::vector<Case> dump_cases(const DumpTree& tree)
{
    std::vector<Case> cases = dump_growth_cases(tree);
    cases.push_back(pass_case(name::kBareDumps, tree, bare_pass));
    cases.push_back(pass_case(name::kPlainDumps, tree, fresh_record_pass<parse_plainly>));
    cases.push_back(pass_case(name::kPlainReused, tree, reused_record_pass<parse_plainly>));
    cases.push_back(pass_case(name::kParserReused, tree, reused_record_pass<parse>));
    cases.push_back(pass_case(name::kCollectionAndPs, tree, collection_and_ps_pass));
    return cases;
}

std::vector<Case> dump_growth_cases(const DumpTree& tree)
{
    return {pass_case(name::kParser, tree, fresh_record_pass<parse>),
            pass_case(name::kCollection, tree, collection_less_ps_pass)};
}

}  // namespace nimba::bench
