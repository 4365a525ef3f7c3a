// SPDX-License-Identifier: MIT
#pragma once

#include <unistd.h>

#include <cerrno>
#include <exception>
#include <filesystem>
#include <system_error>

namespace nimba::test {

// Files are opened for a user without privileges in its scope. Tests that run as root act as
// nobody, to whom `directory` and everything in it is given; those of another user stay that user.
class OrdinaryUser final {
  public:
    explicit OrdinaryUser(const std::filesystem::path& directory) : root_{::geteuid() == 0}
    {
        if (root_) {
            give_to_nobody(directory);
            for (const auto& entry : std::filesystem::recursive_directory_iterator{directory}) {
                give_to_nobody(entry.path());
            }
            check(::seteuid(kNobody), "seteuid");
        }
    }
    ~OrdinaryUser()
    {
        if (root_ && ::seteuid(0) != 0) {
            std::terminate();  // the tests that follow would run as somebody else
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

  private:
    static constexpr uid_t kNobody = 65534;
    static constexpr gid_t kSameGroup = static_cast<gid_t>(-1);

    static void check(int result, const char* what)
    {
        if (result != 0) {
            throw std::system_error{errno, std::generic_category(), what};
        }
    }

    static void give_to_nobody(const std::filesystem::path& path)
    {
        check(::lchown(path.c_str(), kNobody, kSameGroup), "lchown");
    }

    bool root_;
};

}  // namespace nimba::test
