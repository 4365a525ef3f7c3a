// SPDX-License-Identifier: MIT
// Single values of the adapter's nodes, as the library reads them, told apart from those that are
// not there.
#pragma once

#include "tools/smi/adapter.hpp"
#include "tools/smi/worker/adapter_reading.hpp"
#include "tools/smi/worker/monitor_library.hpp"
#include "tools/smi/worker/session.hpp"

#include <cstdint>
#include <optional>
#include <string>

namespace nimba::smi {

// For the adapter that the session has entered. What keeps a node from being read goes to the
// remarks of the reading; that a driver does not have a node is none.
class NodeReader final {
  public:
    // `what` the nodes tell, for sentences: "clocks".
    NodeReader(Session& session, const MonitorEntryPoints& entry, const Adapter& adapter,
               const char* what, AdapterReading& reading);

    // A number of the info directory: an enum info_node, and its name.
    std::optional<int64_t> info(int32_t index, const char* name);

    // A number of the hwmon directory: an enum hwmon_node, and its name.
    std::optional<int64_t> hwmon(int32_t index, const char* name);

    // Degrees Celsius.
    std::optional<int64_t> temperature();

    // Notes what keeps a node of the info directory from being read that gave no figures.
    void explain(const char* info_node);

    // The same for one that should have had some.
    void explain_useless(const char* info_node);

    // Whether the user may write a node of the info directory.
    bool may_write(const char* info_node);

    // "/sys/bus/pci/devices/0000:01:00.0/jw_info/eclk"
    [[nodiscard]] std::string info_path(const char* name) const;

  private:
    struct Directory {
        int fd;  // negative: the library could not open it
        std::string path;
        bool needed;  // an adapter without it is none
    };

    // Whether the node has a number, which is then 0.
    bool shows_number(const Directory& directory, const char* name);
    std::optional<std::string> text_of(const Directory& directory, const char* name);
    void explain_absence(const Directory& directory, const char* name);
    void note(const std::string& call, ExitStatus status, std::string message);

    Session& session_;
    const MonitorEntryPoints& entry_;
    const char* what_;
    AdapterReading& reading_;
    Directory info_;
    Directory hwmon_;
};

}  // namespace nimba::smi
