// SPDX-License-Identifier: MIT
// fault_injection COMMANDS OUTCOMES TABLE: calls every entry point of the library while each call
// of the C library that it makes fails once in turn, on the simulated machine it is run on.
// COMMANDS is a directory of commands that are found first. Writes what came of it to the file
// OUTCOMES, and how many failures were tried and survived to the file TABLE, in Markdown. Status 1:
// one was not survived.
#include "support/temp_directory.hpp"
#include "trial.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>
#include <ostream>
#include <sstream>
#include <vector>

// Without libdrm's own function there is nothing to free a version with.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:drmGetVersion\n";
}

namespace nimba::test {
namespace {

int be_silent(const char* /*text*/, ...)
{
    return 0;
}

struct Figures {
    std::size_t tried = 0;
    std::size_t survived = 0;
};

// By entry point, then by kind.
using Table = std::map<std::string, std::array<Figures, kKinds.size()>>;

// The outcomes of one kind, in the order of the calls that failed.
class Outcomes final {
  public:
    void add(const std::string& outcome)
    {
        ++count_;
        if (runs_.empty() || runs_.back().outcome != outcome) {
            runs_.push_back({outcome, count_, count_});
        }
        runs_.back().last = count_;
    }

    // Of memory only which outcomes there are: how often it is asked for is the compiler's matter.
    void print(std::ostream& out, const KindName& kind) const
    {
        if (is_memory(kind.kind)) {
            print_distinct(out, kind.name);
            return;
        }
        for (const Run& run : runs_) {
            out << "    " << kind.name << ' ' << run.first;
            if (run.last != run.first) {
                out << '-' << run.last;
            }
            out << ": " << run.outcome << '\n';
        }
    }

  private:
    struct Run {
        std::string outcome;
        std::size_t first;
        std::size_t last;
    };

    void print_distinct(std::ostream& out, std::string_view name) const
    {
        std::vector<std::string> told;
        for (const Run& run : runs_) {
            if (std::ranges::find(told, run.outcome) == told.end()) {
                told.push_back(run.outcome);
                out << "    " << name << ": " << run.outcome << '\n';
            }
        }
    }

    std::vector<Run> runs_;
    std::size_t count_ = 0;
};

// How many failures of the kind there are to try.
std::size_t number_of(Kind kind, const Trial& trial)
{
    return kind == Kind::kDescriptors ? 1 : trial.calls;
}

Trial attempt(const EntryPoint& entry, Kind kind, std::size_t number, const Trial* usual)
{
    return entry.first_call_only ? try_in_process(entry, kind, number)
                                 : try_once(entry, kind, number, usual);
}

// The answer of a call that no failure disturbs, and of the next one if it is another's.
void print_usual(std::ostream& out, const EntryPoint& entry, const Trial& usual)
{
    out << entry.name << ": " << in_one_line(usual.answer) << '\n';
    if (entry.first_call_only) {
        out << "    the next: " << in_one_line(usual.next) << '\n';
    }
}

// Before each trial a line tells which it is, for the case that it is the last.
void try_entry_point(const EntryPoint& entry, std::ostream& out)
{
    if (entry.slot >= 0) {
        adapters.chip_id_idx = entry.slot;
        gfx_global_init(&adapters);
    }
    attempt(entry, Kind::kOpen, 0, nullptr);
    const Trial usual = attempt(entry, Kind::kOpen, 0, nullptr);
    std::ostringstream told;
    print_usual(told, entry, usual);
    for (const KindName& kind : kKinds) {
        const std::size_t numbers = number_of(kind.kind, attempt(entry, kind.kind, 0, &usual));
        Outcomes outcomes;
        std::size_t survived = 0;
        for (std::size_t number = 1; number <= numbers; ++number) {
            out << "trial " << kind.name << ' ' << number << std::endl;
            const Trial trial = attempt(entry, kind.kind, number, &usual);
            outcomes.add(outcome_of(trial, usual));
            survived += trial.harm.empty() ? 1 : 0;
        }
        outcomes.print(told, kind);
        out << "figures " << static_cast<int>(kind.kind) << ' ' << numbers << ' ' << survived
            << '\n';
    }
    out << "told\n" << told.str() << std::flush;
}

// Tries the entry point in a process of its own, whose whole life the sanitizers watch. Returns
// whether it survived each failure.
bool try_in_child(const EntryPoint& entry, std::ostream& outcomes, Table& table)
{
    const TempDirectory directory;
    const std::string file = (directory.path() / "report").string();
    const pid_t child = ::fork();
    if (child == 0) {
        ::setenv("HOME", directory.path().c_str(), 1);
        {
            std::ofstream report{file};
            try_entry_point(entry, report);
        }
        std::exit(EXIT_SUCCESS);
    }
    int status = 0;
    ::waitpid(child, &status, 0);

    std::ifstream report{file};
    auto& figures = table[entry.name];
    std::string last_trial;
    for (std::string line; std::getline(report, line);) {
        std::istringstream words{line};
        std::string word;
        words >> word;
        if (word == "figures") {
            std::size_t kind = 0;
            words >> kind;
            words >> figures.at(kind).tried >> figures.at(kind).survived;
        } else if (word == "told") {
            outcomes << report.rdbuf();
        } else {
            last_trial = line;
        }
    }
    if (status != 0) {
        outcomes << entry.name << " ENDED WITH " << status << ", last " << last_trial << '\n';
    }
    return status == 0 && std::ranges::all_of(figures, [](const Figures& figure) {
               return figure.survived == figure.tried;
           });
}

void print_table(std::ostream& out, const Table& table)
{
    out << "| entry point |";
    for (const KindName& kind : kKinds) {
        out << ' ' << kind.name << " |";
    }
    out << "\n|---|";
    for (std::size_t i = 0; i < kKinds.size(); ++i) {
        out << "--:|";
    }
    out << '\n';
    Figures all;
    for (const auto& [name, figures] : table) {
        out << "| `" << name << "` |";
        for (const Figures& figure : figures) {
            all.tried += figure.tried;
            all.survived += figure.survived;
            if (figure.tried == 0) {
                out << " |";
            } else {
                out << ' ' << figure.survived << '/' << figure.tried << " |";
            }
        }
        out << '\n';
    }
    out << '\n'
        << table.size() << " entry points, " << all.tried << " failures tried, " << all.survived
        << " survived.\n";
}

int run(const std::string& commands, const char* outcomes_file, const char* table_file)
{
    ::setenv("PATH", (commands + ":" + std::getenv("PATH")).c_str(), 1);
    set_print_callback(be_silent);
    adapters.header.vendor_id_filter = 0xFFFF;
    gfx_find_adapter(&adapters);
    take_over_calls();
    std::fflush(stdout);

    std::ofstream outcomes{outcomes_file};
    Table table;
    bool survived = true;
    for (const auto room :
         {adapter_entry_points(), memory_entry_points(), page_table_entry_points(),
          power_entry_points(), preference_entry_points(), text_entry_points()}) {
        for (const EntryPoint& entry : room) {
            survived = try_in_child(entry, outcomes, table) && survived;
        }
    }
    std::ofstream table_text{table_file};
    print_table(table_text, table);
    return survived && outcomes && table_text ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace
}  // namespace nimba::test

int main(int argument_count, char** arguments)
{
    if (argument_count != 4) {
        std::fputs("usage: fault_injection COMMANDS OUTCOMES TABLE\n", stderr);
        return 2;
    }
    return nimba::test::run(arguments[1], arguments[2], arguments[3]);
}
