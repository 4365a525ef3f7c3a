// SPDX-License-Identifier: MIT
#include "kernel_counters_fixture.hpp"

#include <stdexcept>
#include <utility>

namespace nimba::test {
namespace {

KernelCountersTest* current_test = nullptr;

// How many words of the function's record are its own.
std::size_t words_of(const std::string& function)
{
    static const std::map<std::string, std::size_t> kSizes{
        {"gfx_flip_count", 4},      {"gfx_get_hwinfo", 12},         {"qv_get_hwinfo", 12},
        {"gfx_get_hwinfo_ext", 12}, {"gfx_get_usage_info_ext", 13}, {"gfx_get_usage_info", 3},
        {"qvGetHwqInfo", 3}};
    return kSizes.at(function);
}

const char* library_of(std::uint32_t chip)
{
    switch (chip) {
        case DEVICE_ID_QV_M20:
            return kQvLibrary;
        case DEVICE_ID_QV_M30:
        case DEVICE_ID_QV_M40:
            return kMv9Library;
        default:
            return kNimbaLibrary;
    }
}

}  // namespace

KernelCountersTest::KernelCountersTest()
{
    current_test = this;
}

KernelCountersTest::~KernelCountersTest()
{
    current_test = nullptr;
}

std::int32_t KernelCountersTest::start(const std::string& stub, std::uint32_t chip)
{
    install_stub(stub, library_of(chip));
    return start_again(chip);
}

std::int32_t KernelCountersTest::start_again(std::uint32_t chip)
{
    fill_slot(0, chip, 3);
    const std::int32_t status = init(0);
    calls_.clear();
    take_messages();
    return status;
}

std::vector<CounterCall> KernelCountersTest::take_calls()
{
    return std::exchange(calls_, {});
}

Texts KernelCountersTest::take_called()
{
    Texts functions;
    for (const CounterCall& call : take_calls()) {
        functions.push_back(call.function);
    }
    return functions;
}

}  // namespace nimba::test

std::int32_t kernel_counters_called(const char* function, std::int32_t drm_fd, const void* block,
                                    void* record)
{
    using namespace nimba::test;
    if (current_test == nullptr) {
        throw std::logic_error{"a kernel-interface library was called outside a test"};
    }
    CounterCall call{function, drm_fd, block, record, {}};
    if (record != nullptr) {
        call.words.resize(words_of(function));
        std::memcpy(call.words.data(), record, call.words.size() * sizeof(std::uint32_t));
        const Words& answer = current_test->answers_[function];
        if (!answer.empty()) {
            std::memcpy(record, answer.data(), answer.size() * sizeof(std::uint32_t));
        }
    }
    current_test->calls_.push_back(std::move(call));
    return current_test->results_[function];
}
