// SPDX-License-Identifier: MIT
#include "tools/smi/worker/node_reader.hpp"

#include "tools/smi/worker/driver_directory.hpp"
#include "tools/smi/worker/driver_files.hpp"
#include "tools/smi/worker/node_text.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <fmt/core.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace nimba::smi {
namespace {

constexpr const char* kTemperatureNode = "temp1_input";

// The error number of opening a directory; 0 when that works.
int opening_error(const std::string& directory)
{
    const tools::Descriptor opened{::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)};
    return opened ? 0 : errno;
}

}  // namespace

NodeReader::NodeReader(Session& session, const MonitorEntryPoints& entry, const Adapter& adapter,
                       const char* what, AdapterReading& reading)
    : session_{session}, entry_{entry}, what_{what}, reading_{reading}
{
    const gpu_infos& handles = session.adapters().gpu_infos[adapter.slot];
    const std::string device = "/sys/bus/pci/devices/" + adapter.bus_id;
    const char* const info = adapter.vendor_id == QV_VENDOR_ID ? "/qv_info" : "/jw_info";
    info_ = {handles.jw_info_dir_fd, device + info, true};
    hwmon_ = {handles.hwmon_dir_fd, device + "/hwmon", false};
}

std::optional<int64_t> NodeReader::info(int32_t index, const char* name)
{
    const int32_t value = session_.call(fmt::format("gpuinfo_get_jwinfoFD_value_int of {}", name),
                                        [&] { return entry_.info_value(index); });
    return value != 0 || shows_number(info_, name) ? std::optional<int64_t>(value) : std::nullopt;
}

std::optional<int64_t> NodeReader::hwmon(int32_t index, const char* name)
{
    uint32_t bytes = 0;
    const int32_t value = session_.call(fmt::format("gpuinfo_get_hwmonFD_value_int of {}", name),
                                        [&] { return entry_.hwmon_value(index, &bytes); });
    return value != 0 || shows_number(hwmon_, name) ? std::optional<int64_t>(value) : std::nullopt;
}

std::optional<int64_t> NodeReader::temperature()
{
    uint32_t values = 0;
    const int32_t value = session_.call("gpuinfo_get_temparature_value_int",
                                        [&] { return entry_.temperature(&values); });
    if (values != 0) {
        return value;
    }
    // Only for the remark: a number that came up in between is for the next reading.
    static_cast<void>(shows_number(hwmon_, kTemperatureNode));
    return std::nullopt;
}

void NodeReader::explain(const char* info_node)
{
    static_cast<void>(text_of(info_, info_node));
}

void NodeReader::explain_useless(const char* info_node)
{
    if (text_of(info_, info_node)) {
        const std::string path = info_path(info_node);
        note("open " + path, ExitStatus::kNoAdapter,
             fmt::format("there are no {} in {} (see dmesg)", what_, path));
    }
}

bool NodeReader::may_write(const char* info_node)
{
    return session_.call("access " + info_path(info_node), [&] {
        return ::faccessat(info_.fd, info_node, W_OK, AT_EACCESS) == 0 ||
               (errno != EACCES && errno != EPERM);
    });
}

std::string NodeReader::info_path(const char* name) const
{
    return fmt::format("{}/{}", info_.path, name);
}

bool NodeReader::shows_number(const Directory& directory, const char* name)
{
    const auto text = text_of(directory, name);
    if (!text || text->empty()) {
        return false;
    }
    const bool number = begins_with_number(*text);
    if (!number) {
        const std::string path = fmt::format("{}/{}", directory.path, name);
        note("open " + path, ExitStatus::kNoAdapter,
             fmt::format("there is no number in {} (see dmesg)", path));
    }
    return number;
}

std::optional<std::string> NodeReader::text_of(const Directory& directory, const char* name)
{
    const std::string path = fmt::format("{}/{}", directory.path, name);
    const std::string call = "open " + path;
    NodeText text = session_.call(call, [&] { return node_text(directory.fd, name); });
    if (text.error == 0) {
        return std::move(text.text);
    }
    if (means_absent(text.error)) {
        explain_absence(directory, name);
    } else {
        const FaultSentence fault =
            describe_fault(FileFault{path, text.error}, directory.path, what_);
        note(call, fault.status, fault.text);
    }
    return std::nullopt;
}

// A descriptor of a directory that has gone stays without nodes, also when the directory comes
// again.
void NodeReader::explain_absence(const Directory& directory, const char* name)
{
    const std::string call = "open " + directory.path;
    const int error = session_.call(call, [&] { return opening_error(directory.path); });
    if (error != 0) {
        if (directory.needed || !means_absent(error)) {
            const FaultSentence fault =
                describe_fault(FileFault{directory.path, error}, directory.path, what_);
            note(call, fault.status, fault.text);
        }
    } else if (directory.needed && exists(fmt::format("{}/{}", directory.path, name))) {
        reading_.stale = true;
        note(call, ExitStatus::kNoAdapter,
             fmt::format("{} came anew while the command ran: it is read again from the next "
                         "sample on",
                         directory.path));
    }
}

void NodeReader::note(const std::string& call, ExitStatus status, std::string message)
{
    Failure failure{status, call, std::move(message)};
    if (std::ranges::find(reading_.remarks, failure) == reading_.remarks.end()) {
        reading_.remarks.push_back(std::move(failure));
    }
}

}  // namespace nimba::smi
