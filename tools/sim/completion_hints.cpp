// SPDX-License-Identifier: MIT
#include "completion_hints.hpp"

namespace nimba::sim {

completion::Hints completion_hints()
{
    const completion::Value machine{.listing = "machines", .files = true};
    return {.values = {{"MACHINE", machine},
                       {"FILE", machine},
                       {"CAPTURE", {.files = true}},
                       {"WHICH", {.words = {"auto", "live", "plain"}}},
                       {"KIND",
                        {.words = {"open", "read", "short", "block", "garbage", "write", "vanish",
                                   "list", "gone"}}},
                       {"--directory", {.words = {"debug", "info", "hwmon", "proc"}}},
                       {"--error",
                        {.words = {"EACCES", "EAGAIN", "EBUSY", "EINTR", "EINVAL", "EIO", "EMFILE",
                                   "ENFILE", "ENODEV", "ENOENT", "ENOMEM", "ENXIO", "EPERM",
                                   "ESTALE", "ETIMEDOUT"}}}},
            .runs_another = {" run", " replay"}};
}

}  // namespace nimba::sim
