// SPDX-License-Identifier: MIT
#include "smi/export_figures.hpp"
#include "tools/smi/export/faces.hpp"
#include "tools/smi/export/keep_reading.hpp"
#include "tools/smi/export/process_samples.hpp"

#include <gtest/gtest.h>

#include <string>

namespace nimba::smi::exporting {
namespace {

const Labels kLabels{{"gpu", "0000:01:00.0"}};

std::string text_of_processes(const AdapterFigures& adapter, const ProcessCap& cap)
{
    Samples samples;
    add_processes(adapter, cap, kLabels, samples);
    return exposition_text(std::move(samples).take());
}

std::string text_of_tables(const AdapterFigures& adapter, const ProcessCap& cap)
{
    Samples samples;
    add_page_tables(adapter, cap, kLabels, samples);
    return exposition_text(std::move(samples).take());
}

AdapterFigures adapter_with_processes()
{
    AdapterFigures adapter;
    adapter.state.processes.devices = {
        device_usage(0, 0x13, {{4100003, "maze"}, {4100004, ""}}, 5000),
        device_usage(0, 0x14, {{4100005, "a\"b\\c\n\xff"}}, 4000),
        device_usage(0, 0x11, {{4100001, "other"}}, 300),
        device_usage(0, 0x12, {}, 20),
    };
    return adapter;
}

TEST(ExportProcesses, EachDeviceHasItsProcessesUntilTheCapSumsTheRestUp)
{
    EXPECT_EQ(text_of_processes(adapter_with_processes(), {false, 2}),
              "# HELP nimba_process_memory_bytes Video memory of a device and the processes that "
              "hold it.\n"
              "# TYPE nimba_process_memory_bytes gauge\n"
              "nimba_process_memory_bytes{gpu=\"0000:01:00.0\",pid=\"4100003, 4100004\","
              "process=\"maze, -\",device=\"0x13\"} 5000\n"
              "nimba_process_memory_bytes{gpu=\"0000:01:00.0\",pid=\"4100005\","
              "process=\"a\\\"b\\\\c\\\\x0a\xEF\xBF\xBD\",device=\"0x14\"} 4000\n"
              "nimba_process_memory_bytes{gpu=\"0000:01:00.0\",process=\"other\"} 320\n"
              "# HELP nimba_process_allocations Allocations of a device and the processes that "
              "hold it.\n"
              "# TYPE nimba_process_allocations gauge\n"
              "nimba_process_allocations{gpu=\"0000:01:00.0\",pid=\"4100003, 4100004\","
              "process=\"maze, -\",device=\"0x13\"} 3\n"
              "nimba_process_allocations{gpu=\"0000:01:00.0\",pid=\"4100005\","
              "process=\"a\\\"b\\\\c\\\\x0a\xEF\xBF\xBD\",device=\"0x14\"} 3\n"
              "nimba_process_allocations{gpu=\"0000:01:00.0\",process=\"other\"} 6\n");
}

TEST(ExportProcesses, ACapOfTheirNumberSumsNothingUp)
{
    EXPECT_EQ(text_of_processes(adapter_with_processes(), {false, 4}).find("process=\"other\"}"),
              std::string::npos);
    EXPECT_NE(text_of_processes(adapter_with_processes(), {false, 3}).find("process=\"other\"}"),
              std::string::npos);
}

TEST(ExportProcesses, WithoutProcessesThereIsNoSuchSeries)
{
    EXPECT_EQ(text_of_processes(adapter_with_processes(), {true, 50}), "");
}

AdapterFigures adapter_with_tables()
{
    AdapterFigures adapter;
    PageTableContents& contents = adapter.page_tables.emplace();
    contents.allocations = 9;
    contents.devices = {vm_device("4100001", "viewer", {1, 2, 3}, {0, 0, 100}),
                        vm_device("4100002", "maze", {1, 0, 0}, {0, 0, 500}),
                        vm_device("4100001", "viewer", {1, 0, 0}, {0, 0, 10})};
    return adapter;
}

TEST(ExportPageTables, AddressSpacesOfOneProcessAreOne)
{
    EXPECT_EQ(text_of_tables(adapter_with_tables(), {false, 1}),
              R"(# HELP nimba_page_table_address_spaces GPU address spaces of processes.
# TYPE nimba_page_table_address_spaces gauge
nimba_page_table_address_spaces{gpu="0000:01:00.0"} 3
# HELP nimba_page_table_entries Entries of the GPU page tables of a process.
# TYPE nimba_page_table_entries gauge
nimba_page_table_entries{gpu="0000:01:00.0",pid="4100002",process="maze",level="0",kind="table"} 1
nimba_page_table_entries{gpu="0000:01:00.0",pid="4100002",process="maze",level="1",kind="table"} 0
nimba_page_table_entries{gpu="0000:01:00.0",pid="4100002",process="maze",level="2",kind="table"} 0
nimba_page_table_entries{gpu="0000:01:00.0",pid="4100002",process="maze",level="0",kind="page"} 0
nimba_page_table_entries{gpu="0000:01:00.0",pid="4100002",process="maze",level="1",kind="page"} 0
nimba_page_table_entries{gpu="0000:01:00.0",pid="4100002",process="maze",level="2",kind="page"} 500
nimba_page_table_entries{gpu="0000:01:00.0",process="other",level="0",kind="table"} 2
nimba_page_table_entries{gpu="0000:01:00.0",process="other",level="1",kind="table"} 2
nimba_page_table_entries{gpu="0000:01:00.0",process="other",level="2",kind="table"} 3
nimba_page_table_entries{gpu="0000:01:00.0",process="other",level="0",kind="page"} 0
nimba_page_table_entries{gpu="0000:01:00.0",process="other",level="1",kind="page"} 0
nimba_page_table_entries{gpu="0000:01:00.0",process="other",level="2",kind="page"} 110
# HELP nimba_page_table_allocations Allocations in the GPU address spaces of processes.
# TYPE nimba_page_table_allocations gauge
nimba_page_table_allocations{gpu="0000:01:00.0"} 9
)");
}

TEST(ExportPageTables, ProcessesThatHoldADeviceAreNamedAsItsSeriesNameThem)
{
    AdapterFigures adapter = adapter_with_tables();
    keep_reading(adapter, LeakReading{{{}, {{0x11, 4100001, "/usr/bin/viewer"}}}, {}});
    keep_reading(adapter, MemoryReading{{{}, {{0x12, 4100002, ""}}}, {}});
    const std::string text = text_of_tables(adapter, {false, 50});
    EXPECT_NE(text.find("nimba_page_table_entries{gpu=\"0000:01:00.0\",pid=\"4100001\","
                        "process=\"/usr/bin/viewer\",level=\"2\",kind=\"page\"} 110\n"),
              std::string::npos)
        << text;
    EXPECT_NE(text.find("nimba_page_table_entries{gpu=\"0000:01:00.0\",pid=\"4100002\","
                        "process=\"maze\",level=\"2\",kind=\"page\"} 500\n"),
              std::string::npos)
        << text;
}

TEST(ExportPageTables, NamesThatAreTheSameAsTextAreOneSeries)
{
    AdapterFigures adapter = adapter_with_tables();
    adapter.page_tables->devices = {vm_device("4100001", "maz\xc3", {0, 0, 0}, {0, 0, 100}),
                                    vm_device("4100001", "maz\xe9", {0, 0, 0}, {0, 0, 10}),
                                    vm_device("4100001", "maz\n", {0, 0, 0}, {0, 0, 5})};
    const std::string text = text_of_tables(adapter, {false, 50});
    const std::string line =
        "nimba_page_table_entries{gpu=\"0000:01:00.0\",pid=\"4100001\","
        "process=\"maz\xEF\xBF\xBD\",level=\"2\",kind=\"page\"} ";
    EXPECT_NE(text.find(line + "110\n"), std::string::npos) << text;
    EXPECT_EQ(text.find(line), text.rfind(line)) << text;
    EXPECT_NE(text.find("process=\"maz\\\\x0a\",level=\"2\",kind=\"page\"} 5\n"), std::string::npos)
        << text;
}

TEST(ExportPageTables, WithoutProcessesTheyAreThoseOfAllTogether)
{
    const std::string text = text_of_tables(adapter_with_tables(), {true, 50});
    EXPECT_NE(
        text.find("nimba_page_table_entries{gpu=\"0000:01:00.0\",level=\"2\",kind=\"page\"} 610\n"),
        std::string::npos);
    EXPECT_EQ(text.find("process="), std::string::npos);
}

TEST(ExportPageTables, OnesThatWereNotReadHaveNoSeries)
{
    EXPECT_EQ(text_of_tables({}, {}), "");
}

}  // namespace
}  // namespace nimba::smi::exporting
