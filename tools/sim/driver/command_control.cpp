// SPDX-License-Identifier: MIT
#include "driver/command_control.hpp"

#include <cerrno>

namespace nimba::sim {

std::optional<NodeAttributes> CommandControl::look_up(const std::string& path)
{
    return path == kCommandNode ? NodeAttributes{false, 0600} : driver_.look_up(path);
}

std::vector<std::string> CommandControl::list(const std::string& directory)
{
    return driver_.list(directory);
}

std::optional<std::string> CommandControl::read(const std::string& file)
{
    if (file != kCommandNode) {
        return driver_.read(file);
    }
    const std::scoped_lock lock{mutex_};
    return log_.text();
}

int CommandControl::write(const std::string& file, std::string_view text)
{
    const std::scoped_lock lock{mutex_};
    if (file == kCommandNode) {
        if (text != kClearCommands) {
            return EINVAL;
        }
        log_.clear();
        return 0;
    }
    const int fault = plan_.command(file);
    const int error = fault != 0 ? fault : driver_.write(file, text);
    log_.add(file, error, text);
    return error;
}

}  // namespace nimba::sim
