// SPDX-License-Identifier: MIT
// A host that stops the library in an exit handler which it registered before it loaded the
// library: the library's static destructors have run by then. The whole standard output is
// compared.
#include "abi/host.h"
#include "support/descriptor.hpp"
#include "support/temp_directory.hpp"

#include <fcntl.h>
#include <nimba_mgmt_interface.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace {

// What the exit handler uses; trivially destroyed, so that it outlives the host's static objects.
void* library;
find_adapter record;

template <class Type>
Type& exported(const char* name)
{
    return *static_cast<Type*>(symbol(library, name));
}

template <class Function>
Function& function(const char* name)
{
    return *reinterpret_cast<Function*>(symbol(library, name));
}

bool kernel_interface_loaded()
{
    void* handle = ::dlopen("libnimbahwbridge_v2.so.0.0.0", RTLD_LAZY | RTLD_NOLOAD);
    if (handle == nullptr) {
        return false;
    }
    ::dlclose(handle);
    return true;
}

char usage()
{
    const nimba::test::Descriptor node{
        ::openat(record.gpu_infos[0].jw_info_dir_fd, "enable_usage", O_RDONLY)};
    char first = ' ';
    return ::read(node.get(), &first, 1) == 1 ? first : ' ';
}

void show_state(const char* when)
{
    std::int32_t preferences = -1;
    function<decltype(get_gpu_preference)>("get_gpu_preference")(nullptr, &preferences);
    std::printf("host: %s: preferences %d, usage %c, %s, %s\n", when, preferences, usage(),
                exported<void*>("pdev") == nullptr ? "no block" : "block",
                kernel_interface_loaded() ? "library" : "no library");
}

void stop_library()
{
    if (library == nullptr) {
        return;  // it could not be loaded
    }
    show_state("exit handler");
    function<decltype(gfx_global_exit)>("gfx_global_exit")(0);
    show_state("stopped");
}

void start_library(int info_directory)
{
    record.header.chip_id[0] = DEVICE_ID_NIMBA_K1;
    std::strcpy(record.header.chip_name[0], "Gpu0:Nimba-K1");
    record.gpu_infos[0].jw_info_dir_fd = info_directory;
    if (function<decltype(gfx_global_init)>("gfx_global_init")(&record) != DEVICE_ID_NIMBA_K1) {
        std::exit(3);
    }
}

void set_preference()
{
    _UTIL_GPU_PREFERENCE_NODE node{};
    std::strcpy(node.FileName, "app");
    std::strcpy(node.FullPath, "/usr/bin/app");
    function<decltype(set_gpu_preference)>("set_gpu_preference")(&node);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fputs("usage: exit_handler_host LIBRARY EMPTY-DIRECTORY\n", stderr);
        return 2;
    }
    std::filesystem::current_path(argv[2]);
    std::filesystem::create_directories(".local/share");
    nimba::test::write_file("enable_usage", "?");
    ::setenv("HOME", ".", 1);
    const nimba::test::Descriptor directory{::open(".", O_RDONLY | O_DIRECTORY)};

    if (std::atexit(stop_library) != 0) {
        return 2;
    }
    library = load_library(argv[1]);
    start_library(directory.get());
    set_preference();
    show_state("running");
    std::exit(0);  // with the directory still open
}
