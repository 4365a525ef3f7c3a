// SPDX-License-Identifier: MIT
#include "support/loaded_library.hpp"
#include "support/messages.hpp"

#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <vector>

namespace nimba::test {
namespace {

constexpr const char* kMajorMismatch = "major version mismatch !!!\n";
constexpr const char* kMatch = "client_interface_version ALL Match.\n";
constexpr const char* kOlder = "minor version compatile.\n";
constexpr const char* kNewer =
    "warning!!! client minor version > server minior vesion, might have compatible issue.\n";

constexpr uint32_t kUnset = 0xDEADBEEF;

struct Handshake {
    uint32_t client;
    uint32_t result;
    const char* message;
    uint32_t result_when_logged;  // a match alone is stored before its message
};

const std::vector<Handshake> kHandshakes = {
    {0, 201, kOlder, kUnset},
    {1, 201, kOlder, kUnset},
    {21, 201, kOlder, kUnset},
    {22, 200, kMatch, 200},
    {23, 202, kNewer, kUnset},
    {65535, 202, kNewer, kUnset},
    {0x00010000, 100, kMajorMismatch, kUnset},
    {0x00010015, 100, kMajorMismatch, kUnset},
    {0x00010016, 100, kMajorMismatch, kUnset},
    {0x0001FFFF, 100, kMajorMismatch, kUnset},
    {0x80000016, 100, kMajorMismatch, kUnset},
    {0xFFFFFFFF, 100, kMajorMismatch, kUnset},
};

// The record under test, and its state at each message.
interface_version_info record{};
std::vector<interface_version_info> states;

int keep_message_and_state(const char* text, ...)
{
    kept_messages.emplace_back(text);
    states.push_back(record);
    return 0;
}

class InterfaceVersion : public testing::Test {
  protected:
    InterfaceVersion() { install(keep_message_and_state); }

    void install(nimba_print_callback callback)
    {
        library.symbol<decltype(::set_print_callback)>("set_print_callback")(callback);
        take_messages();
        states.clear();
    }

    LoadedLibrary library;
    decltype(::get_interface_version_ext1)& get_interface_version_ext1 =
        library.symbol<decltype(::get_interface_version_ext1)>("get_interface_version_ext1");
};

TEST_F(InterfaceVersion, Is22)
{
    EXPECT_EQ(library.symbol<decltype(::get_interface_version)>("get_interface_version")(), 22);
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(InterfaceVersion, HandshakeComparesMajorAndMinorVersion)
{
    for (const Handshake& handshake : kHandshakes) {
        SCOPED_TRACE(handshake.client);
        record = {.server_interface_version = kUnset,
                  .client_interface_version = handshake.client,
                  .version_match_result = kUnset};
        EXPECT_EQ(get_interface_version_ext1(&record), 0);
        EXPECT_EQ(record.server_interface_version, 22U);
        EXPECT_EQ(record.client_interface_version, handshake.client);
        EXPECT_EQ(record.version_match_result, handshake.result);
        EXPECT_EQ(take_messages(), Texts{handshake.message});
    }
}

TEST_F(InterfaceVersion, HandshakeStoresOnlyAMatchBeforeItsMessage)
{
    for (const Handshake& handshake : kHandshakes) {
        SCOPED_TRACE(handshake.client);
        record = {.server_interface_version = kUnset,
                  .client_interface_version = handshake.client,
                  .version_match_result = kUnset};
        states.clear();
        get_interface_version_ext1(&record);
        ASSERT_EQ(states.size(), 1U);
        EXPECT_EQ(states.front().server_interface_version, 22U);
        EXPECT_EQ(states.front().version_match_result, handshake.result_when_logged);
    }
}

TEST_F(InterfaceVersion, HandshakeFillsTheRecordWhenTheLibraryIsSilenced)
{
    install(nullptr);
    for (const Handshake& handshake : kHandshakes) {
        SCOPED_TRACE(handshake.client);
        record = {.server_interface_version = kUnset,
                  .client_interface_version = handshake.client,
                  .version_match_result = kUnset};
        EXPECT_EQ(get_interface_version_ext1(&record), 0);
        EXPECT_EQ(record.server_interface_version, 22U);
        EXPECT_EQ(record.version_match_result, handshake.result);
    }
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(InterfaceVersion, DriverInfoAnswersZeroWithoutEffect)
{
    EXPECT_EQ(library.symbol<decltype(::get_driver_info)>("get_driver_info")(), 0);
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(InterfaceVersion, SelfCheckReportsNoProblem)
{
    uint32_t status[2] = {0xFFFFFFFF, kUnset};
    EXPECT_EQ(library.symbol<decltype(::selfcheck_current_tool_status)>(
                  "selfcheck_current_tool_status")(&status[0]),
              0);
    EXPECT_EQ(status[0], 0U);
    EXPECT_EQ(status[1], kUnset);
    EXPECT_EQ(take_messages(), Texts{});
}

}  // namespace
}  // namespace nimba::test
