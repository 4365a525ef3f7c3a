// SPDX-License-Identifier: MIT
#pragma once

#include "driver/adapter_model.hpp"
#include "machine_of.hpp"

#include <string>

namespace nimba::sim::test {

// The model of an adapter with these keys and tables in its machine file.
inline AdapterModel model_of(const std::string& keys, const std::string& chip = "nimba-k5")
{
    return AdapterModel{machine_of("[[adapter]]\nchip = \"" + chip +
                                   "\"\nbus_id = \"0000:01:00.0\"\ncard = 0\n" + keys)
                            .adapters.at(0)};
}

inline std::string info(const AdapterModel& model, const std::string& node)
{
    return model.read(NodeDirectory::kInfo, node).value_or("(no node)");
}

inline std::string hwmon(const AdapterModel& model, const std::string& node)
{
    return model.read(NodeDirectory::kHwmon, node).value_or("(no node)");
}

inline int command(AdapterModel& model, const std::string& node, const std::string& text)
{
    return model.write(NodeDirectory::kInfo, node, text);
}

}  // namespace nimba::sim::test
