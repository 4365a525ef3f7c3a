// SPDX-License-Identifier: MIT
#include "tools/smi/pagetable/entry_stream.hpp"

#include "tools/smi/pagetable/address_space.hpp"
#include "tools/smi/pagetable/entry_text.hpp"
#include "tools/smi/pagetable/process_space.hpp"
#include "tools/smi/pagetable/source.hpp"
#include "tools/smi/text/output.hpp"

#include <fmt/core.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace nimba::smi {
namespace {

class EntryStream final {
  public:
    EntryStream(const Options& options, int fd)
        : options_{options},
          fd_{fd},
          text_{options.json ? entries_as_json(options.page_tables.split)
                             : entries_as_csv(options.page_tables.split)},
          source_{options}
    {
    }

    std::vector<Problem> run()
    {
        const auto contents = source_.read(problems_);
        const auto devices = contents
                                 ? chosen_devices(*contents, options_.page_tables.pids, problems_)
                                 : std::vector<VmDevice>{};
        bool whole = write(text_->begin(devices));
        for (std::size_t i = 0; i < devices.size() && whole; ++i) {
            whole = write_device(i, devices[i], contents->devices);
        }
        whole = whole && (!contents || write_allocations(*contents));
        if (whole) {
            write(text_->end(problems_));
        }
        return std::move(problems_);
    }

  private:
    bool write(const std::string& text)
    {
        const int error = write_all(fd_, text);
        if (error != 0) {
            problems_.push_back(
                {ExitStatus::kFailed, std::nullopt, std::nullopt,
                 fmt::format("cannot write to standard output: {}", std::strerror(error))});
        }
        return error == 0;
    }

    bool write_device(std::size_t number, const VmDevice& device, std::span<const VmDevice> all)
    {
        const AddressSplit& split = options_.page_tables.split;
        Oddities odd;
        const TakeRecords<TableRecord> tables = [&](std::span<const TableRecord> records) {
            for (const TableRecord& record : records) {
                odd.outside += split.table_range(record.level, record.index) ? 0 : 1;
            }
            return write(text_->tables(number, records));
        };
        const TakeRecords<PageRecord> pages = [&](std::span<const PageRecord> records) {
            for (const PageRecord& record : records) {
                odd.outside += place_of(split, record) ? 0 : 1;
            }
            return write(text_->pages(number, records));
        };
        const bool whole = source_.hand_over(device, tables, problems_) &&
                           source_.hand_over(device, pages, problems_);
        std::ranges::move(oddity_problems(process_title(device, all), odd),
                          std::back_inserter(problems_));
        return whole;
    }

    bool write_allocations(const PageTableContents& contents)
    {
        const auto& pids = options_.page_tables.pids;
        const TakeRecords<VmAllocationRecord> take = [&](std::span<const VmAllocationRecord> all) {
            std::vector<VmAllocationRecord> records;
            std::ranges::copy_if(all, std::back_inserter(records), [&](const auto& record) {
                return is_asked_for(record.pid, pids);
            });
            return write(text_->allocations(records));
        };
        return source_.hand_over(contents, take, problems_);
    }

    const Options& options_;
    int fd_;
    std::unique_ptr<EntryText> text_;
    PageTableSource source_;
    std::vector<Problem> problems_;
};

}  // namespace

std::vector<Problem> stream_entries(const Options& options, int fd)
{
    return EntryStream{options, fd}.run();
}

}  // namespace nimba::smi
