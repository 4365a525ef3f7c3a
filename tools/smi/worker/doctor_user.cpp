// SPDX-License-Identifier: MIT
#include "tools/smi/worker/doctor_user.hpp"

#include "tools/descriptor.hpp"
#include "tools/smi/doctor/preference_lines.hpp"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <span>

namespace nimba::smi {
namespace {

constexpr const char* kFileInHome = "/.local/share/wmt_gfx_util.ini";

// The library's field for the path, the NUL included.
constexpr std::size_t kPathSize = 512;

constexpr std::size_t kMostText = 16U << 20U;

// The error number of what `call` returns, which is 0 for success.
template <typename Call>
int error_of(Call call)
{
    return call() == 0 ? 0 : errno;
}

// Reads the file, or as much as a preference file may have. Returns 0, or the error number.
int read_text(const std::string& path, std::string& text)
{
    const tools::Descriptor file{::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    std::array<char, 4096> piece{};
    ssize_t length = file ? 1 : -1;
    while (length > 0 && text.size() < kMostText) {
        length = ::read(file.get(), piece.data(), piece.size());
        text.append(piece.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    }
    return length < 0 ? errno : 0;
}

int access_error(const std::string& path, int mode)
{
    return error_of([&] { return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS); });
}

void look_at_file(PreferenceFacts& facts)
{
    facts.write_error = access_error(facts.path, W_OK);
    std::string text;
    facts.read_error = read_text(facts.path, text);
    const PreferenceLines lines = count_preference_lines(text);
    facts.applications = lines.applications;
    facts.bad_lines = lines.bad;
    facts.first_bad_line = lines.first_bad;
}

}  // namespace

UserFacts user_facts()
{
    UserFacts facts;
    facts.id = ::geteuid();
    const passwd* const entry = ::getpwuid(facts.id);
    facts.name = entry == nullptr ? std::to_string(facts.id) : entry->pw_name;
    std::array<gid_t, 1024> groups{};
    const int count = ::getgroups(static_cast<int>(groups.size()), groups.data());
    for (const gid_t id : std::span{groups}.first(static_cast<std::size_t>(std::max(count, 0)))) {
        const group* const known = ::getgrgid(id);
        facts.groups.emplace_back(known == nullptr ? std::to_string(id) : known->gr_name);
    }
    return facts;
}

PreferenceFacts preference_facts(const std::optional<std::string>& home)
{
    PreferenceFacts facts;
    facts.home = home;
    const std::string path = home.value_or("") + kFileInHome;
    if (!home || home->empty() || path.size() >= kPathSize) {
        return facts;
    }
    facts.path = path;
    const std::string directory = std::filesystem::path(path).parent_path();
    struct stat status {};
    facts.directory_error = error_of([&] { return ::stat(directory.c_str(), &status); });
    if (facts.directory_error == 0 && !S_ISDIR(status.st_mode)) {
        facts.directory_error = ENOTDIR;
    }
    if (facts.directory_error != 0) {
        return facts;
    }
    const int error = error_of([&] { return ::stat(path.c_str(), &status); });
    facts.exists = error == 0;
    if (!facts.exists) {
        facts.read_error = error == ENOENT ? 0 : error;
        facts.write_error = access_error(directory, W_OK | X_OK);
        return facts;
    }
    facts.regular = S_ISREG(status.st_mode);
    if (facts.regular) {
        look_at_file(facts);
    }
    return facts;
}

}  // namespace nimba::smi
