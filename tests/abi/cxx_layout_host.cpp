// SPDX-License-Identifier: MIT
// A host in C++ that knows the records of page tables as bytes, and their functions by their
// mangled names.
#include "cxx_record.hpp"
#include "redirect.h"

#include <unistd.h>

#include <sys/stat.h>

#include <fstream>

namespace {

const char* const kDump =
    "0:2: entry addr:7f00, buffer:root\n"
    "0:9 Snoop:65537 Segment:2 LargePage:1 Addr:1f000\n";

void make_driver(const std::string& root)
{
    for (const char* name : {"/devices", "/devices/1", "/allocations", "/allocations/1f"}) {
        CHECK(mkdir((root + name).c_str(), 0755) == 0);
    }
    std::ofstream{root + "/devices/1/info"} << "pid = 2147483647\n";
    std::ofstream{root + "/devices/1/vm_info"} << kDump;
    std::ofstream{root + "/allocations/1f/vm_info"}
        << "=====vm node info=====\ndevice_pid = 4711\ndevice_pname = viewer\n"
           "gpu_va = 2f000\nsize = 1000\n";
}

void check_entries(const Device& device)
{
    CHECK(device.page_tables[0].size() == 1 && device.page_tables[1].empty() &&
          device.page_tables[2].empty());
    CHECK(device.sub_tables[0].size() == 1 && device.sub_tables[1].empty() &&
          device.sub_tables[2].empty());
    const unsigned char* entry = device.page_tables[0].data()->bytes;
    CHECK(text_at(entry, 0, "root"));
    CHECK(text_at(entry, 48, "7f00"));
    CHECK(i32_at(entry, 112) == 0);
    CHECK(i32_at(entry, 116) == 2);
    CHECK(pointer_at(entry, 128) == nullptr && pointer_at(entry, 136) == nullptr);
    const unsigned char* sub_entry = device.sub_tables[0].data()->bytes;
    CHECK(u16_at(sub_entry, 0) == 1);
    CHECK(u16_at(sub_entry, 2) == 2);
    CHECK(text_at(sub_entry, 4, "1f000"));
    CHECK(i32_at(sub_entry, 52) == 1);
    CHECK(i32_at(sub_entry, 56) == 0);
    CHECK(i32_at(sub_entry, 60) == 9);
    CHECK(i32_at(sub_entry, 88) == 0);
}

void check_links(const Device& device)
{
    const unsigned char* entry = device.page_tables[0].data()->bytes;
    const unsigned char* sub_entry = device.sub_tables[0].data()->bytes;
    CHECK(pointer_at(entry, 120) == sub_entry);
    CHECK(pointer_at(sub_entry, 80) == entry);
    CHECK(pointer_at(sub_entry, 64) == nullptr && pointer_at(sub_entry, 72) == nullptr);
}

// Fills the device step by step.
void check_steps(void* library, const std::string& root, Device& device)
{
    using Read = int32_t(Device*, const char*);
    device.note = "note";
    function<void(Device&)>(library, "_Z13create_vectorR12data_vectors")(device);
    CHECK(device.note.empty());
    CHECK(device.page_tables[0].capacity() == 100 && device.page_tables[1].capacity() == 1000 &&
          device.page_tables[2].capacity() == 20000);
    CHECK(device.sub_tables[0].capacity() == 100 && device.sub_tables[1].capacity() == 20000 &&
          device.sub_tables[2].capacity() == 300000);
    auto* read_pid = function<Read>(library, "_Z12get_Pid_infoP12data_vectorsPKc");
    auto* read_name = function<int32_t(Device*)>(library, "_Z16get_AppName_infoP12data_vectors");
    auto* read_dump = function<Read>(library, "_Z18get_pagetable_infoP12data_vectorsPKc");
    CHECK(read_pid(&device, (root + "/devices/1/info").c_str()) == 0);
    CHECK(std::string{device.pid} == "2147483647");
    std::strcpy(device.pid, "0");
    CHECK(read_name(&device) == 0);
    CHECK(std::string{device.app_name} == "0");
    CHECK(read_dump(&device, (root + "/devices/1/vm_info").c_str()) == 0);
    check_entries(device);
    check_links(device);
}

void check_numbers_of_owners(void* library, Device& device)
{
    unsigned char* sub_entry = device.sub_tables[0].data()->bytes;
    put_u32(sub_entry, 92, 77);
    put_u32(sub_entry, 96, 77);
    function<void(SubTable&)>(
        library, "_Z19append_DigitalIndexR18vidmm_vm_pte_elt3k")(device.sub_tables[0][0]);
    CHECK(i32_at(sub_entry, 92) == 0 && i32_at(sub_entry, 96) == 2);
    put_u32(sub_entry, 96, 77);
    function<void(Device&)>(library, "_Z21generate_DigitalIndexR12data_vectors")(device);
    CHECK(i32_at(sub_entry, 92) == 0 && i32_at(sub_entry, 96) == 2);
}

// An entry of level 2 that owns a sub-table entry, linked by hand.
void check_lookup(void* library)
{
    using Address = std::string(int32_t, const Device*, const std::string&);
    auto* find_node = function<SubTable(int32_t, const Device*, const std::string&)>(
        library, "_Z20Find_SubTable_2_nodeiPK12data_vectors" STRING);
    auto* find1 = function<Address>(library, "_Z20Find_SubTable_1_addriPK12data_vectors" STRING);
    auto* find0 = function<Address>(library, "_Z20Find_SubTable_0_addriPK12data_vectors" STRING);
    Device device{};
    for (int level = 0; level < 3; ++level) {
        device.page_tables[level].resize(1);
        device.sub_tables[level].resize(1);
        unsigned char* entry = device.page_tables[level].data()->bytes;
        unsigned char* sub_entry = device.sub_tables[level].data()->bytes;
        std::strcpy(reinterpret_cast<char*>(entry + 48), "1f000");
        std::memcpy(entry + 120, &sub_entry, sizeof sub_entry);
        std::strcpy(reinterpret_cast<char*>(sub_entry + 4), "2f000");
        sub_entry[7] = static_cast<unsigned char>('0' + level);
        put_u32(sub_entry, 60, 7);
    }
    const SubTable found = find_node(7, &device, "0x1f");
    CHECK(text_at(found.bytes, 4, "2f020"));
    CHECK(i32_at(found.bytes, 60) == 7 && i32_at(found.bytes, 88) == 1);
    const SubTable missing = find_node(8, &device, "0x1f");
    CHECK(all_bytes(missing.bytes, 0, 104, 0));
    CHECK(find1(7, &device, "0x1f") == "2f010");
    CHECK(find0(7, &device, "0x1f") == "2f000");
    CHECK(find0(8, &device, "0x1f").empty());
}

void check_texts_of_nodes(const std::vector<VmNodeTexts>& list)
{
    CHECK(list.size() == 1);
    CHECK(list[0].device_pid == "4711" && list[0].device_pname == "viewer" &&
          list[0].allocation_handle == "1f" && list[0].gpu_va == "2f000" && list[0].size == "1000");
}

void check_collection(void* library)
{
    using ReadDevices = int32_t(std::vector<Device>&);
    using ReadAllocations = int32_t(std::vector<VmNodeTexts>&);
    using ReadBoth = int32_t(std::vector<Device>&, std::vector<VmNodeTexts>&);
    for (const char* name : {"_Z18get_PageTable_dataRSt6vectorI12data_vectorsSaIS0_EE",
                             "_Z22get_PageTable_data_tryRSt6vectorI12data_vectorsSaIS0_EE"}) {
        std::vector<Device> devices;
        CHECK(function<ReadDevices>(library, name)(devices) == 0);
        CHECK(devices.size() == 1);
        check_entries(devices.at(0));
    }
    for (const char* name : {"_Z18get_alloction_dataRSt6vectorI14allcation_InfoSaIS0_EE",
                             "_Z22get_alloction_data_tryRSt6vectorI14allcation_InfoSaIS0_EE"}) {
        std::vector<VmNodeTexts> allocations;
        CHECK(function<ReadAllocations>(library, name)(allocations) == 0);
        check_texts_of_nodes(allocations);
    }
    std::vector<Device> devices;
    std::vector<VmNodeTexts> allocations;
    auto* read_both = function<ReadBoth>(library,
                                         "_Z26get_current_PageTable_dataRSt6vectorI12data_"
                                         "vectorsSaIS0_EERS_I14allcation_InfoSaIS4_EE");
    CHECK(read_both(devices, allocations) == 0);
    CHECK(devices.size() == 1);
    check_texts_of_nodes(allocations);
}

void check_kept_lists(void* library)
{
    uint32_t count = 0;
    CHECK(function<int32_t(void*, uint32_t*)>(library, "get_pagetable_data")(nullptr, &count) == 0);
    CHECK(count == 2);
    const auto& devices = global<std::vector<Device>>(library, "Pagetable_List");
    CHECK(devices.size() == 1);
    check_entries(devices.at(0));
    check_texts_of_nodes(global<std::vector<VmNodeTexts>>(library, "Allocation_List"));
}

// What a call writes to standard output, by way of a file of the test.
template <class Call>
std::string output_of(const std::string& path, const Call& call)
{
    std::fflush(stdout);
    const int output = dup(STDOUT_FILENO);
    CHECK(std::freopen(path.c_str(), "w", stdout) != nullptr);
    call();
    std::fflush(stdout);
    dup2(output, STDOUT_FILENO);
    close(output);
    std::ifstream file{path};
    return {std::istreambuf_iterator<char>{file}, {}};
}

void check_printers(void* library, const std::string& path, const Device& device)
{
    auto* entry = function<void(const PageTable*)>(library, "_Z15Print_PageTablePK11vidmm_vm_pt");
    auto* sub_entry =
        function<void(const SubTable*)>(library, "_Z14Print_SubTablePK18vidmm_vm_pte_elt3k");
    const std::string line = output_of(path, [&] { entry(device.page_tables[0].data()); });
    CHECK(line.starts_with("PT_Level:0  PT_index:2  ") &&
          line.ends_with("Addr:7f00  Buffer:root\n"));
    const std::string sub_line = output_of(path, [&] { sub_entry(device.sub_tables[0].data()); });
    CHECK(sub_line.starts_with("ST_LeveL:0  Index:9  ") && sub_line.ends_with("Addr:1f000\n"));
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: cxx_layout_host LIBRARY DIRECTORY\n", stderr);
        return 2;
    }
    void* library = load_library(argv[1]);
    make_driver(argv[2]);
    redirected_from = "/sys/kernel/debug/dri/0/qv";
    redirected_to = argv[2];
    Device device{};
    check_steps(library, argv[2], device);
    check_numbers_of_owners(library, device);
    check_printers(library, std::string{argv[2]} + "/output", device);
    function<void(Device*)>(library, "_Z12clean_vectorP12data_vectors")(&device);
    CHECK(device.page_tables[0].empty() && device.sub_tables[0].empty());
    CHECK(device.sub_tables[2].capacity() == 300000);
    check_lookup(library);
    check_collection(library);
    check_kept_lists(library);
    return failed_checks == 0 ? 0 : 1;
}
