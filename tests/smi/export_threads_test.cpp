// SPDX-License-Identifier: MIT
#include "tools/smi/export/deadline.hpp"
#include "tools/smi/export/server.hpp"
#include "tools/smi/export/shared_work.hpp"
#include "tools/smi/export/task_thread.hpp"

#include <poll.h>

#include <gtest/gtest.h>
#include <prometheus/metric_family.h>
#include <sys/eventfd.h>

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <variant>
#include <vector>

namespace nimba::smi::exporting {
namespace {

using namespace std::chrono_literals;

constexpr int kBound = 20'000;  // milliseconds, which no test comes near

bool becomes_readable(int descriptor, int patience)
{
    pollfd state{descriptor, POLLIN, 0};
    return ::poll(&state, 1, patience) == 1;
}

TEST(ExportDeadline, IsReadableOnceItIsOver)
{
    const Deadline deadline{20ms, -1};
    EXPECT_TRUE(becomes_readable(deadline.descriptor(), kBound));
}

TEST(ExportDeadline, IsReadableOnceTheUserWantsToEnd)
{
    const tools::Descriptor stop{::eventfd(0, EFD_CLOEXEC)};
    const Deadline deadline{600s, stop.get()};
    EXPECT_FALSE(becomes_readable(deadline.descriptor(), 0));
    ::eventfd_write(stop.get(), 1);
    EXPECT_TRUE(becomes_readable(deadline.descriptor(), kBound));
}

TEST(ExportDeadline, WithoutAnyTimeIsOverAtOnce)
{
    const Deadline deadline{-1000ms, -1};
    EXPECT_TRUE(becomes_readable(deadline.descriptor(), kBound));
}

TEST(ExportTaskThread, DoesAllTasksInOneThreadThatIsNotTheCallers)
{
    TaskThread thread;
    std::vector<std::thread::id> threads(2);
    for (auto& id : threads) {
        thread.start([&id] { id = std::this_thread::get_id(); }).get();
    }
    EXPECT_EQ(threads[0], threads[1]);
    EXPECT_NE(threads[0], std::this_thread::get_id());
}

TEST(ExportTaskThread, WhatATaskThrowsComesOutAndTheNextIsDone)
{
    TaskThread thread;
    auto failed = thread.start([] { throw std::runtime_error{"no"}; });
    EXPECT_THROW(failed.get(), std::runtime_error);
    bool done = false;
    thread.start([&done] { done = true; }).get();
    EXPECT_TRUE(done);
}

TEST(ExportSharedWork, WhoAskedBeforeItBeganSharesTheResult)
{
    int done = 0;
    SharedWork<int> shared{[&] { return ++done; }};
    const auto asked = SharedWork<int>::Clock::now();
    EXPECT_EQ(shared.get(asked), 1);
    EXPECT_EQ(shared.get(asked), 1);
    EXPECT_EQ(shared.get(asked - 1h), 1);
}

TEST(ExportSharedWork, WhoAskedBehindItsBeginGetsTheNext)
{
    int done = 0;
    SharedWork<int> shared{[&] { return ++done; }};
    EXPECT_EQ(shared.get({}), 1);
    EXPECT_EQ(shared.get(SharedWork<int>::Clock::now() + 1ns), 2);
    EXPECT_EQ(shared.get({}), 2);
}

TEST(ExportSharedWork, WhatItThrowsComesOutAndTheNextIsDone)
{
    int done = 0;
    SharedWork<int> shared{[&] {
        if (++done == 1) {
            throw std::runtime_error{"no"};
        }
        return done;
    }};
    EXPECT_THROW(shared.get({}), std::runtime_error);
    EXPECT_EQ(shared.get({}), 2);
}

class Nothing final : public prometheus::Collectable {
  public:
    [[nodiscard]] std::vector<prometheus::MetricFamily> Collect() const override { return {}; }
};

TEST(ExportServer, TellsThePortThatWasChosenAndThatNobodyElseCanHaveIt)
{
    auto first = serve({"127.0.0.1", 0, false}, std::make_shared<Nothing>());
    ASSERT_TRUE(std::holds_alternative<Server>(first));
    const uint16_t port = std::get<Server>(first).port();
    ASSERT_NE(port, 0);
    const auto second = serve({"127.0.0.1", port, false}, std::make_shared<Nothing>());
    ASSERT_TRUE(std::holds_alternative<Problem>(second));
    const auto& problem = std::get<Problem>(second);
    EXPECT_EQ(problem.status, ExitStatus::kFailed);
    EXPECT_EQ(problem.message, "cannot listen on 127.0.0.1:" + std::to_string(port) +
                                   ": Address already in use; choose another with --listen");
}

TEST(ExportServer, AnAddressOfIpVersionSixIsOneOrAProblem)
{
    const auto served = serve({"::1", 0, true}, std::make_shared<Nothing>());
    if (const auto* const server = std::get_if<Server>(&served)) {
        EXPECT_NE(server->port(), 0);
    } else {  // on a machine without
        const std::string message = std::get<Problem>(served).message;
        EXPECT_TRUE(message.starts_with("cannot listen on [::1]:0: ")) << message;
        EXPECT_TRUE(message.ends_with("; no interface of this machine has it") ||
                    message.ends_with("; this machine has no IPv6"))
            << message;
    }
}

TEST(ExportServer, AnAddressOfAnotherMachineIsAProblem)
{
    const auto served = serve({"192.0.2.1", 0, false}, std::make_shared<Nothing>());
    ASSERT_TRUE(std::holds_alternative<Problem>(served));
    EXPECT_EQ(std::get<Problem>(served).message,
              "cannot listen on 192.0.2.1:0: Cannot assign requested address; no interface of this "
              "machine has it");
}

}  // namespace
}  // namespace nimba::smi::exporting
