// SPDX-License-Identifier: MIT
#include "support/captured_stdout.hpp"
#include "support/loaded_library.hpp"
#include "support/messages.hpp"

#include <future>
#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <memory>
#include <string>
#include <thread>

namespace nimba::test {
namespace {

int answer_minus_five(const char* text, ...)
{
    kept_messages.emplace_back(text);
    return -5;
}

// Two threads that log at the same time.
struct Meeting {
    std::promise<void> first_came;
    std::promise<void> second_logged;
    std::string first_text;
    std::string second_text;
};

Meeting* meeting = nullptr;
thread_local bool is_first = false;

bool comes_in_time(std::promise<void>& event)
{
    return event.get_future().wait_for(std::chrono::seconds{10}) == std::future_status::ready;
}

// A thread-safe callback that lets the second thread log before it looks at the first one's text.
int keep_first_after_second(const char* text, ...)
{
    if (!is_first) {
        meeting->second_text = text;
        return 0;
    }
    meeting->first_came.set_value();
    meeting->first_text = comes_in_time(meeting->second_logged) ? text : "second never logged";
    return 0;
}

class Logging : public testing::Test {
  protected:
    Logging() { take_messages(); }

    LoadedLibrary library;
    decltype(::lib_print_func)& lib_print_func =
        library.symbol<decltype(::lib_print_func)>("lib_print_func");
    decltype(::set_print_callback)& set_print_callback =
        library.symbol<decltype(::set_print_callback)>("set_print_callback");
    nimba_print_callback& callback = library.symbol<nimba_print_callback>("pServerPrintCallback");
};

TEST_F(Logging, PrintfIsTheCallbackAtLoad)
{
    EXPECT_EQ(callback, &std::printf);
}

TEST_F(Logging, InstalledCallbackGetsItsInstallationAsFirstMessage)
{
    EXPECT_EQ(set_print_callback(keep_message), 0);
    EXPECT_EQ(callback, &keep_message);
    EXPECT_EQ(take_messages(), (Texts{"set_print_callback.\n"}));
}

TEST_F(Logging, ReplacedCallbackHearsNothingMore)
{
    set_print_callback(keep_message);
    take_messages();
    const std::string written = stdout_of([&] { set_print_callback(std::printf); });
    EXPECT_EQ(written, "set_print_callback.\n");
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(Logging, MessageIsFormattedByTheRulesOfPrintf)
{
    set_print_callback(keep_message);
    take_messages();
    EXPECT_EQ(lib_print_func("%s: %d, 0x%04x, %5.2f, %lld, %c, %%\n ", "text", -7, 0x4E4D, 3.14159,
                             9223372036854775807LL, 'c'),
              0);
    EXPECT_EQ(take_messages(), (Texts{"text: -7, 0x4e4d,  3.14, 9223372036854775807, c, %\n "}));
}

TEST_F(Logging, EveryMessageIsHandedOnByItselfAndInOrder)
{
    set_print_callback(keep_message);
    take_messages();
    lib_print_func("first");
    lib_print_func("%s", "");
    lib_print_func("third\n\n");
    EXPECT_EQ(take_messages(), (Texts{"first", "", "third\n\n"}));
}

TEST_F(Logging, CallbackGetsPercentSignsAsTheyStandInTheFormattedText)
{
    set_print_callback(keep_message);
    take_messages();
    lib_print_func("%s %%s\n", "100%d of %n");
    EXPECT_EQ(take_messages(), (Texts{"100%d of %n %s\n"}));
}

TEST_F(Logging, MessageIsCutTo1023Characters)
{
    set_print_callback(keep_message);
    for (const std::size_t length : {1022U, 1023U, 1024U, 1025U, 5000U}) {
        SCOPED_TRACE(length);
        take_messages();
        EXPECT_EQ(lib_print_func("%s", std::string(length, 'm').c_str()), 0);
        EXPECT_EQ(take_messages(), Texts{std::string(length == 1022 ? 1022 : 1023, 'm')});
    }
}

TEST_F(Logging, CutFallsInTheFormattedTextAndNotInTheFormat)
{
    set_print_callback(keep_message);
    take_messages();
    lib_print_func("%s%s", std::string(1000, 'a').c_str(), std::string(1000, 'b').c_str());
    EXPECT_EQ(take_messages(), Texts{std::string(1000, 'a') + std::string(23, 'b')});
}

TEST_F(Logging, ResultOfTheCallbackIsIgnored)
{
    EXPECT_EQ(set_print_callback(answer_minus_five), 0);
    EXPECT_EQ(lib_print_func("message"), 0);
    EXPECT_EQ(take_messages(), (Texts{"set_print_callback.\n", "message"}));
}

TEST_F(Logging, FunctionOfOneTextServesAsCallback)
{
    // By way of void (*)(), the one function type that may be cast to any other without a warning.
    const auto puts_as_callback =
        reinterpret_cast<nimba_print_callback>(reinterpret_cast<void (*)()>(&std::puts));
    const std::string written = stdout_of([&] {
        set_print_callback(puts_as_callback);
        lib_print_func("%d lines", 2);
    });
    EXPECT_EQ(written, "set_print_callback.\n\n2 lines\n");
}

TEST_F(Logging, DefaultCallbackWritesToStandardOutput)
{
    const std::string written = stdout_of([&] { lib_print_func("drm_card_idx: %d\n", 3); });
    EXPECT_EQ(written, "drm_card_idx: 3\n");
}

TEST_F(Logging, DefaultCallbackReadsTheFormattedTextAsAFormatOnceMore)
{
    const std::string written =
        stdout_of([&] { lib_print_func("%s at 50%%%% %%%%d\n", "loaded 100%%"); });
    EXPECT_EQ(written, "loaded 100% at 50% %d\n");
}

TEST_F(Logging, NullCallbackSilencesTheLibrary)
{
    int32_t installed = -1;
    int32_t printed = -1;
    const std::string written = stdout_of([&] {
        installed = set_print_callback(nullptr);
        printed = lib_print_func("message\n");
    });
    EXPECT_EQ(installed, 0);
    EXPECT_EQ(printed, 0);
    EXPECT_EQ(callback, nullptr);
    EXPECT_EQ(written, "");
}

TEST_F(Logging, NullCallbackSilencesAnEarlierCallback)
{
    set_print_callback(keep_message);
    take_messages();
    set_print_callback(nullptr);
    lib_print_func("message\n");
    EXPECT_EQ(take_messages(), Texts{});
}

TEST_F(Logging, ArgumentsAreNotFormattedForANullCallback)
{
    int formatted_characters = -1;
    set_print_callback(nullptr);
    EXPECT_EQ(lib_print_func("four%n", &formatted_characters), 0);
    EXPECT_EQ(formatted_characters, -1);

    set_print_callback(keep_message);
    lib_print_func("four%n", &formatted_characters);
    EXPECT_EQ(formatted_characters, 4);
}

TEST_F(Logging, CallbackWrittenToTheGlobalIsUsed)
{
    callback = keep_message;
    lib_print_func("message\n");
    EXPECT_EQ(take_messages(), (Texts{"message\n"}));
}

TEST_F(Logging, MessagesOfTwoThreadsArriveWhole)
{
    Meeting here;
    meeting = &here;
    callback = keep_first_after_second;
    std::thread first{[&] {
        is_first = true;
        lib_print_func("%s thread, %d\n", "first", 1);
    }};
    const bool first_came = comes_in_time(here.first_came);
    lib_print_func("%s of the threads, %d\n", "second", 2);
    here.second_logged.set_value();
    first.join();
    EXPECT_TRUE(first_came);
    EXPECT_EQ(here.first_text, "first thread, 1\n");
    EXPECT_EQ(here.second_text, "second of the threads, 2\n");
}

TEST_F(Logging, CallbackOutlivesAnExit)
{
    set_print_callback(keep_message);
    take_messages();
    library.symbol<decltype(::gfx_global_exit)>("gfx_global_exit")(0);
    EXPECT_EQ(callback, &keep_message);
    EXPECT_EQ(take_messages(), (Texts{"gfx_global_exit enter, chip_id_idx: 0 \n",
                                      "uninitGPUPreference_config.\n "}));
}

TEST(LoadAndUnload, WriteOneLineEachToStandardOutput)
{
    std::unique_ptr<LoadedLibrary> library;
    EXPECT_EQ(stdout_of([&] { library = std::make_unique<LoadedLibrary>(); }),
              "init_100_priority, init print callback.\n");
    EXPECT_EQ(stdout_of([&] { library.reset(); }), "uninit_100_priority.\n");
    EXPECT_FALSE(LoadedLibrary::loaded());
}

TEST(LoadAndUnload, UnloadLineDoesNotGoThroughTheCallback)
{
    for (const nimba_print_callback installed : {&keep_message, nimba_print_callback{nullptr}}) {
        LoadedLibrary library;
        library.symbol<decltype(::set_print_callback)>("set_print_callback")(installed);
        take_messages();
        EXPECT_EQ(stdout_of([&] { library.unload(); }), "uninit_100_priority.\n");
        EXPECT_EQ(take_messages(), Texts{});
    }
}

TEST(LoadAndUnload, LoadingAgainInstallsPrintfAnew)
{
    {
        const LoadedLibrary library;
        library.symbol<nimba_print_callback>("pServerPrintCallback") = nullptr;
    }
    const LoadedLibrary library;
    EXPECT_EQ(library.symbol<nimba_print_callback>("pServerPrintCallback"), &std::printf);
}

}  // namespace
}  // namespace nimba::test
