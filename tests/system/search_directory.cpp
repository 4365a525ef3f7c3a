// SPDX-License-Identifier: MIT
#include "search_directory.hpp"

#include "support/temp_directory.hpp"

#include <dlfcn.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <stdexcept>
#include <system_error>

namespace nimba::test {

namespace {

constexpr const char* kDirectoryVariable = "NIMBA_TEST_LIBRARIES";

}  // namespace

std::filesystem::path search_directory()
{
    return std::getenv(kDirectoryVariable);
}

void install_stub(const std::string& stub, const std::string& name)
{
    std::filesystem::copy_file(std::filesystem::path{NIMBA_STUB_DIRECTORY} / (stub + ".so"),
                               search_directory() / name);
}

void install_garbage(const std::string& name)
{
    write_file(search_directory() / name, std::string(4096, '#'));
}

bool in_process(const std::string& name)
{
    void* handle = ::dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    ::dlclose(handle);
    return true;
}

bool visible_to_everyone(const char* symbol)
{
    // Found through RTLD_DEFAULT, the library could not leave the process any more.
    void* program = ::dlopen(nullptr, RTLD_LAZY);
    const bool visible = ::dlsym(program, symbol) != nullptr;
    ::dlclose(program);
    return visible;
}

int force_out(const std::string& name)
{
    constexpr int kBound = 64;
    int holders = 0;
    while (void* handle = ::dlopen(name.c_str(), RTLD_LAZY | RTLD_NOLOAD)) {
        ::dlclose(handle);
        ::dlclose(handle);
        if (++holders > kBound) {
            throw std::runtime_error{name + " does not leave the process"};
        }
    }
    return holders;
}

void empty_search_directory()
{
    for (const auto& entry : std::filesystem::directory_iterator{search_directory()}) {
        force_out(entry.path().filename().string());
        std::filesystem::remove(entry.path());
    }
}

HeldLibrary::HeldLibrary(const std::string& name, int flags)
    : handle_{::dlopen(name.c_str(), RTLD_LAZY | flags)}
{
    if (handle_ == nullptr) {
        throw std::runtime_error{::dlerror()};
    }
}

HeldLibrary::~HeldLibrary()
{
    release();
}

void HeldLibrary::release()
{
    if (handle_ != nullptr) {
        ::dlclose(handle_);
        handle_ = nullptr;
    }
}

void* HeldLibrary::symbol(const char* name) const
{
    void* address = ::dlsym(handle_, name);
    if (address == nullptr) {
        throw std::runtime_error{::dlerror()};
    }
    return address;
}

}  // namespace nimba::test

// The sanitizer's allocator refuses what an exhausted address space refuses, instead of ending the
// program.
extern "C" const char* __asan_default_options()
{
    return "allocator_may_return_null=1:max_allocation_size_mb=2048";
}

// The loader reads LD_LIBRARY_PATH once, at the start of a program: the program makes its
// directory, puts it on the path and starts itself anew.
int main(int argc, char** argv)
{
    using nimba::test::kDirectoryVariable;
    if (std::getenv(kDirectoryVariable) == nullptr) {
        std::string directory =
            (std::filesystem::temp_directory_path() / "nimba-test-XXXXXX").string();
        if (::mkdtemp(directory.data()) == nullptr) {
            throw std::system_error{errno, std::generic_category(), directory};
        }
        const char* path = std::getenv("LD_LIBRARY_PATH");
        ::setenv(kDirectoryVariable, directory.c_str(), 1);
        ::setenv("LD_LIBRARY_PATH", (path ? directory + ":" + path : directory).c_str(), 1);
        ::execv("/proc/self/exe", argv);
        throw std::system_error{errno, std::generic_category(), "cannot start anew"};
    }
    testing::InitGoogleTest(&argc, argv);
    const int status = RUN_ALL_TESTS();
    std::filesystem::remove_all(nimba::test::search_directory());
    return status;
}
