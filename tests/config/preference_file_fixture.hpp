// SPDX-License-Identifier: MIT
#pragma once

#include "config/preference_records.hpp"
#include "support/messages.hpp"
#include "support/temp_directory.hpp"

#include <nimba_mgmt_interface.h>

#include <gtest/gtest.h>

#include <string>

namespace nimba::test {

// An empty list of preferences, a directory for files, and every message kept.
class PreferenceFile : public testing::Test {
  protected:
    PreferenceFile()
    {
        interface_config_list.clear();
        pServerPrintCallback = keep_message;
        take_messages();
    }

    TempDirectory directory;
    const std::string path = (directory.path() / "wmt_gfx_util.ini").string();
};

}  // namespace nimba::test
