// SPDX-License-Identifier: MIT
// A host in C++ that calls the text functions, and those of allocations and preferences, by their
// mangled names.
#include "cxx_record.hpp"

#include <unistd.h>

#include <sys/stat.h>

#include <fstream>
#include <iterator>

namespace {

std::string directory;

void write_file(const std::string& name, const std::string& text)
{
    std::ofstream{directory + "/" + name} << text;
}

std::string file(const std::string& name)
{
    std::ifstream stream{directory + "/" + name};
    return {std::istreambuf_iterator<char>{stream}, {}};
}

void check_dump_lines(void* library)
{
    const std::string entry = "2:34: entry addr:7f00, buffer:root \n";
    const std::string sub_table = "1:25 Snoop:3 Segment:4 LargePage:5 Addr:1f000 \n";
    using Number = int32_t(const std::string&);
    using Text = std::string(const std::string&, const std::string&);
    auto* level = function<Number>(library, "_Z19find_Level_in_Table" STRING);
    auto* index = function<Number>(library, "_Z19find_Index_in_Table" STRING);
    auto* value = function<int32_t(const std::string&, const std::string&)>(
        library, "_Z22find_value_in_subTable" STRING "S6_");
    auto* address = function<Text>(library, "_Z18find_Addr_in_Table" STRING "S6_");
    auto* buffer = function<Text>(library, "_Z20find_Buffer_in_Table" STRING "S6_");
    CHECK(level(entry) == 2);
    CHECK(index(entry) == 34);
    CHECK(index(sub_table) == 25);
    CHECK(value(sub_table, "Segment:") == 4);
    CHECK(address(entry, "addr:") == "7f00");
    CHECK(address(sub_table, "Addr:") == "1f000");
    CHECK(buffer(entry, "buffer:") == "root");
}

void check_texts(void* library)
{
    auto* split = function<std::vector<std::string>(const std::string&)>(
        library, "_Z17split_VmNode_Info" STRING);
    auto* value = function<std::string(const std::string&, const std::string&)>(
        library, "_Z12extractValue" STRING "S6_");
    auto* pid = function<std::string(const std::string&)>(library, "_Z15find_Pid_number" STRING);
    auto* file_name = function<std::string(const std::string&)>(library, "_Z12get_filename" STRING);
    auto* trim = function<void(char*)>(library, "_Z14trimWhitespacePc");
    const std::string first = "=====vm node info=====\nsize = 1000\n";
    const std::string second = "=====vm node info=====\nsize = 2000\n";
    const std::vector<std::string> blocks = split("before\n" + first + second);
    CHECK(blocks.size() == 2 && blocks[0] == first && blocks[1] == second);
    CHECK(value(second, "size") == "2000");
    CHECK(pid("pid = 4711 \n") == "4711");
    CHECK(file_name("/usr/bin/viewer") == "viewer");
    char text[] = " \t text with blanks \n";
    trim(text);
    CHECK(std::string{text} == "text with blanks");
}

void check_flags(void* library)
{
    auto* update = function<int32_t(bool&, bool&, bool&, int32_t)>(
        library, "_Z22update_PageTable_FlagsRbS_S_i");
    bool level0 = true;
    bool level1 = false;
    bool level2 = true;
    CHECK(update(level0, level1, level2, 1) == 0);
    CHECK(!level0 && level1 && !level2);
    CHECK(update(level0, level1, level2, 2) == 1);
    CHECK(!level0 && !level1 && level2);
}

void check_process_name(void* library)
{
    auto* name =
        function<int32_t(int32_t, char*, int32_t)>(library, "_Z21getPackageNameFromPidiPci");
    unsigned char text[16];
    std::memset(text, 0xEE, sizeof text);
    CHECK(name(getpid(), reinterpret_cast<char*>(text), 8) == 0);
    CHECK(text_at(text, 0, "cxx_tex"));
    CHECK(all_bytes(text, 8, 8, 0xEE));
}

using Allocations = std::vector<AllocationRecord>;

AllocationRecord allocation(uint32_t handle, uint32_t hits, uint32_t sum)
{
    AllocationRecord record{};
    record.words[0] = handle;
    record.words[21] = hits;
    record.words[22] = sum;
    return record;
}

void check_allocations(void* library)
{
    using Read = int32_t(Allocations&, uint32_t, int32_t);
    global<char[50]>(library, "sys_kernel_debug_ID_dri_ADAPTER_path")[0] = '\0';
    std::strcat(global<char[50]>(library, "sys_kernel_debug_ID_dri_ADAPTER_path"),
                directory.c_str());
    CHECK(mkdir((directory + "/allocations").c_str(), 0755) == 0);
    CHECK(mkdir((directory + "/allocations/1").c_str(), 0755) == 0);
    write_file("allocations/1/info", "handle=1f\ndevice=2f\nwidth=640\nshare=9\n");
    for (const char* name :
         {"_Z27get_current_allocation_dataRSt6vectorI20_GFX_ALLOCATION_INFOSaIS0_EEji",
          "_Z31get_current_allocation_data_tryRSt6vectorI20_GFX_ALLOCATION_INFOSaIS0_EEji"}) {
        Allocations list;
        CHECK(function<Read>(library, name)(list, 5, 0) == 0);
        CHECK(list.size() == 1 && list[0].words[0] == 0x1f && list[0].words[1] == 0x2f &&
              list[0].words[2] == 640 && list[0].words[20] == 9 && list[0].words[21] == 1 &&
              list[0].words[22] == 1);
    }
    auto* report = function<int32_t(void*)>(library, "get_memleak_info");
    static Bytes<1380> groups;
    CHECK(report(&groups) == 0);
    const auto& kept = global<Allocations>(library, "vec_memleak_result");
    CHECK(kept.size() == 1 && kept[0].words[0] == 0x1f);
}

void check_leaks(void* library)
{
    auto* merge = function<void(Allocations&, Allocations&)>(
        library, "_Z20compare_memleak_listRSt6vectorI20_GFX_ALLOCATION_INFOSaIS0_EES3_");
    auto* larger = function<bool(const AllocationRecord&, const AllocationRecord&)>(
        library, "_Z16compare_allo_sumRK20_GFX_ALLOCATION_INFOS1_");
    Allocations snapshot{allocation(1, 1, 1), allocation(2, 1, 1)};
    Allocations kept{allocation(2, 4, 1), allocation(3, 4, 1)};
    merge(snapshot, kept);
    CHECK(snapshot.size() == 1 && snapshot[0].words[0] == 1);
    CHECK(kept.size() == 2 && kept[0].words[0] == 2 && kept[0].words[21] == 5 &&
          kept[1].words[0] == 1 && kept[1].words[21] == 1);
    CHECK(larger(allocation(0, 0, 2), allocation(0, 0, 1)));
    CHECK(!larger(allocation(0, 0, 1), allocation(0, 0, 1)));
}

std::string logged;

int log_message(const char* text, ...)
{
    logged += text;
    return 0;
}

void check_preferences(void* library)
{
    struct Record {
        PreferenceRecord words;
    };
    const std::string text =
        "; wmt_gfx_util.ini\n\n[game]\nFullPath = /opt/game\nPreferGpuName = QV M-30\n"
        "PreferGpuBusID = 0001:02:03.4\nGpuPrefer = 2\n\n\n";
    auto* parse = function<int32_t(const char*)>(library, "_Z8parseINIPKc");
    auto* save = function<void(const char*)>(library, "_Z12savefile_INIPKc");
    auto* print = function<void(const char*, const void*)>(
        library, "_Z18printConfigNodeLogPKcPK25_UTIL_GPU_PREFERENCE_NODE");
    auto* set_callback =
        function<int32_t(int (*)(const char*, ...))>(library, "set_print_callback");
    write_file("one.ini", text);
    CHECK(parse((directory + "/one.ini").c_str()) == 1);
    const auto& list = global<std::vector<Record>>(library, "interface_config_list");
    CHECK(list.size() == 1);
    const auto* record = reinterpret_cast<const unsigned char*>(list.data());
    CHECK(text_at(record, 0, "game") && text_at(record, 64, "/opt/game"));
    CHECK(i32_at(record, 576) == 2 && u16_at(record, 596) == 1 && record[600] == 4);
    save((directory + "/two.ini").c_str());
    CHECK(file("two.ini") == text);
    set_callback(log_message);
    logged.clear();
    print("prefix ", record);
    set_callback(nullptr);
    CHECK(logged.starts_with("prefix ") && logged.find("/opt/game") != std::string::npos);
}

void check_preference_path(void* library)
{
    CHECK(setenv("HOME", directory.c_str(), 1) == 0);
    CHECK(function<int32_t()>(library, "_Z22util_init_config_filesv")() == 0);
    CHECK(directory + "/.local/share/wmt_gfx_util.ini" ==
          global<char[512]>(library, "UTIL_CONFIG_PATH"));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3 || std::strlen(argv[2]) >= 50) {
        std::fputs("usage: cxx_text_host LIBRARY DIRECTORY-OF-A-SHORT-PATH\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    directory = argv[2];
    function<int32_t(void*)>(library, "set_print_callback")(nullptr);
    check_dump_lines(library);
    check_texts(library);
    check_flags(library);
    check_process_name(library);
    check_allocations(library);
    check_leaks(library);
    check_preferences(library);
    check_preference_path(library);
    return failed_checks == 0 ? 0 : 1;
}
