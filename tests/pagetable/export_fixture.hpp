// SPDX-License-Identifier: MIT
// What the library gives a host of a driver that a test makes up.
#pragma once

#include "collector_fixture.hpp"

#include <cstddef>
#include <cstring>
#include <ostream>

inline bool operator==(const _PAGETABLE_DATA& a, const _PAGETABLE_DATA& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline bool operator==(const _ALLOCATION_DATA& a, const _ALLOCATION_DATA& b)
{
    return std::memcmp(&a, &b, sizeof a) == 0;
}

inline void PrintTo(const _PAGETABLE_DATA& record, std::ostream* out)
{
    *out << "{" << record.pid << ", " << record.addr << ", " << record.Snoop << ", "
         << record.Segment << ", " << record.LargePage << ", " << record.reserved0 << ", "
         << record.level << ", " << record.index << ", " << record.parent_level << ", "
         << record.parent_index << ", " << record.kind << ", " << record.reserved1 << "}";
}

inline void PrintTo(const _ALLOCATION_DATA& record, std::ostream* out)
{
    *out << "{" << record.device_pid << ", " << record.reserved0 << ", " << record.allocation_handle
         << ", " << record.size << ", " << record.gpu_va << ", ";
    testing::internal::PrintTo(record.reserved1, out);
    *out << "}";
}

namespace nimba::test {

inline constexpr const char* kFailed = "\nThe function is being tested on this Chip......\n";

// The text of an allocation's virtual-memory node.
inline std::string vm_node(const std::string& pid, const std::string& address,
                           const std::string& size)
{
    return "=====vm node info=====\ndevice_pid = " + pid +
           "\ndevice_pname = viewer\ngpu_va = " + address + "\nsize = " + size + "\n";
}

// A record that was never written.
template <class Record>
Record untouched()
{
    Record record;
    std::memset(&record, 0xa5, sizeof record);
    return record;
}

class ExportTest : public CollectorTest {
  protected:
    ExportTest() { forget(); }
    ~ExportTest() override { forget(); }

    // Asks for the number of page-table records, which reads the driver; fills status_, output_ and
    // count_.
    void collect_all()
    {
        run([&] { return get_pagetable_data(nullptr, &count_); });
    }
    // Copies the page tables out; fills status_ and output_. Returns `room` records, those that
    // were not written as untouched() makes them.
    std::vector<_PAGETABLE_DATA> page_tables(std::size_t room)
    {
        std::vector<_PAGETABLE_DATA> records(room, untouched<_PAGETABLE_DATA>());
        run([&] { return get_pagetable_data(records.data(), nullptr); });
        return records;
    }
    void count_allocations()
    {
        run([&] { return get_allocation_data(nullptr, &count_); });
    }
    std::vector<_ALLOCATION_DATA> allocations(std::size_t room)
    {
        std::vector<_ALLOCATION_DATA> records(room, untouched<_ALLOCATION_DATA>());
        run([&] { return get_allocation_data(records.data(), nullptr); });
        return records;
    }

    // The driver can no longer be read.
    void break_driver() { driver_.list_device("gone"); }
    void mend_driver() { driver_.forget_devices(); }

    std::uint32_t count_ = 4242;

  private:
    static void forget()
    {
        Pagetable_List.clear();
        Allocation_List.clear();
        Get_Local_Data_Status = 0;
    }
};

}  // namespace nimba::test
