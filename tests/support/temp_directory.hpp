// SPDX-License-Identifier: MIT
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace nimba::test {

inline std::string read_file(const std::filesystem::path& path)
{
    std::ifstream file{path, std::ios::binary};
    if (!file) {
        throw std::runtime_error{"cannot read " + path.string()};
    }
    return {std::istreambuf_iterator<char>{file}, std::istreambuf_iterator<char>{}};
}

inline void write_file(const std::filesystem::path& path, std::string_view text)
{
    std::ofstream file{path, std::ios::binary};
    file << text << std::flush;
    if (!file) {
        throw std::runtime_error{"cannot write " + path.string()};
    }
}

// A new empty directory that is removed, with everything in it, at the end of its scope.
class TempDirectory final {
  public:
    TempDirectory()
    {
        std::string name = (std::filesystem::temp_directory_path() / "nimba-test-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error{"cannot make the directory " + name};
        }
        path_ = name;
    }
    ~TempDirectory()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;

    const std::filesystem::path& path() const { return path_; }

    // Makes the file `name` with `text` in the directory; returns its path.
    std::string write(const std::string& name, std::string_view text) const
    {
        write_file(path_ / name, text);
        return (path_ / name).string();
    }

    std::string read(const std::string& name) const { return read_file(path_ / name); }

  private:
    std::filesystem::path path_;
};

}  // namespace nimba::test
