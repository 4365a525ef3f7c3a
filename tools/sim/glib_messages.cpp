// SPDX-License-Identifier: MIT
#include "glib_messages.hpp"

#include "exit_status.hpp"
#include "message.hpp"

#include <glib.h>
#include <unistd.h>

#include <atomic>
#include <mutex>
#include <span>
#include <string_view>

namespace nimba::sim {
namespace {

// The levels that end the process. Written by the functions below, read in any thread.
std::atomic<int> fatal_levels{G_LOG_LEVEL_ERROR};

// Taken for good by the thread that ends the process, so that others which fail at the same time,
// as umockdev's own, add no line.
std::mutex ending;

GLogWriterOutput receive(GLogLevelFlags level, const GLogField* fields, gsize count,
                         gpointer /*data*/)
{
    if ((level & fatal_levels) == 0) {
        return G_LOG_WRITER_HANDLED;
    }
    const std::lock_guard last{ending};
    for (const GLogField& field : std::span{fields, count}) {
        if (field.key == std::string_view{"MESSAGE"}) {
            complain(static_cast<const char*>(field.value));
        }
    }
    _exit(kNoTestBed);
}

}  // namespace

void end_on_glib_warnings()
{
    fatal_levels = G_LOG_LEVEL_ERROR | G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_WARNING;
    // What a failed assertion prints before it aborts.
    g_set_printerr_handler([](const gchar*) {});
    g_log_set_writer_func(receive, nullptr, nullptr);
}

void drop_glib_warnings()
{
    fatal_levels = G_LOG_LEVEL_ERROR;
}

}  // namespace nimba::sim
