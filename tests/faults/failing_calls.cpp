// SPDX-License-Identifier: MIT
// The functions that stand before those of the C library.
#include "failing.hpp"
#include "imports.hpp"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>

namespace nimba::test {
namespace {

// What is called in the place of a function, and what it was.
struct Originals {
    int (*open)(const char*, int, ...) = nullptr;
    int (*openat)(int, const char*, int, ...) = nullptr;
    std::FILE* (*fopen)(const char*, const char*) = nullptr;
    std::FILE* (*fdopen)(int, const char*) = nullptr;
    int (*fileno)(std::FILE*) = nullptr;
    int (*fclose)(std::FILE*) = nullptr;
    ssize_t (*read)(int, void*, std::size_t) = nullptr;
    ssize_t (*write)(int, const void*, std::size_t) = nullptr;
    int (*close)(int) = nullptr;
    off_t (*lseek)(int, off_t, int) = nullptr;
    int (*fstat)(int, struct stat*) = nullptr;
    DIR* (*opendir)(const char*) = nullptr;
    DIR* (*fdopendir)(int) = nullptr;
    dirent* (*readdir)(DIR*) = nullptr;
    int (*closedir)(DIR*) = nullptr;
    std::FILE* (*popen)(const char*, const char*) = nullptr;
    int (*pclose)(std::FILE*) = nullptr;
    void* (*dlopen)(const char*, int) = nullptr;
    void* (*dlsym)(void*, const char*) = nullptr;
    void* (*malloc)(std::size_t) = nullptr;
    void (*free)(void*) = nullptr;
    void* (*new_one)(std::size_t) = nullptr;
    void* (*new_many)(std::size_t) = nullptr;
    void (*delete_one)(void*) = nullptr;
    void (*delete_sized)(void*, std::size_t) = nullptr;
    void (*delete_many)(void*) = nullptr;
    int (*puts)(const char*) = nullptr;
    int (*usleep)(useconds_t) = nullptr;
};
Originals originals;

// The sanitizers count memory themselves, and have the program's own operators.
template <typename Block>
Block* hold_memory(Block* block)
{
#ifdef NIMBA_SANITIZE
    return block;
#else
    return hold(block);
#endif
}

int failing_open(const char* path, int flags, ...)
{
    std::va_list values;
    va_start(values, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(values, int) : 0;
    va_end(values);
    return fails_with(Kind::kOpen, EMFILE) ? -1 : originals.open(path, flags, mode);
}

int failing_openat(int directory, const char* path, int flags, ...)
{
    std::va_list values;
    va_start(values, flags);
    const int mode = (flags & O_CREAT) != 0 ? va_arg(values, int) : 0;
    va_end(values);
    return fails_with(Kind::kOpenAt, EMFILE) ? -1 : originals.openat(directory, path, flags, mode);
}

ssize_t failing_read(int fd, void* buffer, std::size_t size)
{
    if (fails_with(Kind::kRead, EIO) || fails_with(Kind::kInterruptedRead, EINTR)) {
        return -1;
    }
    return originals.read(fd, buffer, size);
}

ssize_t failing_write(int fd, const void* buffer, std::size_t size)
{
    if (fails_with(Kind::kWrite, EIO) || fails_with(Kind::kInterruptedWrite, EINTR)) {
        return -1;
    }
    return originals.write(fd, buffer, size);
}

int failing_close(int fd)
{
    const int result = originals.close(fd);
    return fails_with(Kind::kClose, EIO) ? -1 : result;
}

off_t failing_lseek(int fd, off_t offset, int origin)
{
    return fails_with(Kind::kSeek, EOVERFLOW) ? -1 : originals.lseek(fd, offset, origin);
}

int failing_fstat(int fd, struct stat* status)
{
    return fails_with(Kind::kState, EIO) ? -1 : originals.fstat(fd, status);
}

// Streams whose reads, writes and closing can fail, by descriptor: the C library's own go past this
// test. Such a stream is known by its place here.
std::array<std::FILE*, 4096> streams{};

int descriptor_of(const void* place)
{
    return static_cast<int>(static_cast<std::FILE* const*>(place) - streams.data());
}

ssize_t read_stream(void* cookie, char* buffer, std::size_t size)
{
    return failing_read(descriptor_of(cookie), buffer, size);
}

ssize_t write_stream(void* cookie, const char* buffer, std::size_t size)
{
    return std::max<ssize_t>(failing_write(descriptor_of(cookie), buffer, size), 0);
}

int seek_stream(void* cookie, off64_t* offset, int origin)
{
    *offset = failing_lseek(descriptor_of(cookie), *offset, origin);
    return *offset < 0 ? -1 : 0;
}

int close_stream(void* cookie)
{
    return failing_close(descriptor_of(cookie));
}

std::FILE* stream_of(int fd, const char* mode)
{
    std::FILE*& place = streams.at(static_cast<std::size_t>(fd));
    place = ::fopencookie(&place, mode, {read_stream, write_stream, seek_stream, close_stream});
    return place;
}

std::FILE* failing_fdopen(int fd, const char* mode)
{
    if (!is_fault_on()) {
        return hold(originals.fdopen(fd, mode));
    }
    return fails_with(Kind::kStreamOf, ENOMEM) ? nullptr : hold(stream_of(fd, mode));
}

std::FILE* failing_fopen(const char* path, const char* mode)
{
    if (!is_fault_on()) {
        return hold(originals.fopen(path, mode));
    }
    if (fails_with(Kind::kOpenStream, EMFILE)) {
        return nullptr;
    }
    const int flags = *mode == 'w' ? O_WRONLY | O_CREAT | O_TRUNC : O_RDONLY;
    const int fd = ::open(path, flags | O_CLOEXEC, 0666);
    return fd < 0 ? nullptr : hold(stream_of(fd, mode));
}

int fileno_of(std::FILE* stream)
{
    const auto* const place = std::ranges::find(streams, stream);
    return place == streams.end() ? originals.fileno(stream) : descriptor_of(place);
}

int failing_fclose(std::FILE* stream)
{
    note_given_back(stream);
    std::ranges::replace(streams, stream, static_cast<std::FILE*>(nullptr));
    return originals.fclose(stream);
}

DIR* failing_opendir(const char* path)
{
    return fails_with(Kind::kOpenDirectory, EMFILE) ? nullptr : hold(originals.opendir(path));
}

DIR* failing_fdopendir(int fd)
{
    return fails_with(Kind::kDirectoryOf, ENOMEM) ? nullptr : hold(originals.fdopendir(fd));
}

dirent* failing_readdir(DIR* directory)
{
    return fails_with(Kind::kListing, EIO) ? nullptr : originals.readdir(directory);
}

int failing_closedir(DIR* directory)
{
    note_given_back(directory);
    return originals.closedir(directory);
}

std::FILE* failing_popen(const char* command, const char* mode)
{
    return fails_with(Kind::kCommand, EMFILE) ? nullptr : hold(originals.popen(command, mode));
}

int failing_pclose(std::FILE* stream)
{
    note_given_back(stream);
    return originals.pclose(stream);
}

void* failing_dlopen(const char* name, int flags)
{
    return fails(Kind::kLoad) ? nullptr : originals.dlopen(name, flags);
}

void* failing_dlsym(void* library, const char* name)
{
    return fails(Kind::kLookUp) ? nullptr : originals.dlsym(library, name);
}

void* failing_malloc(std::size_t size)
{
    return fails_with(Kind::kMalloc, ENOMEM) ? nullptr : hold_memory(originals.malloc(size));
}

void counted_free(void* block)
{
    note_given_back(block);
    originals.free(block);
}

void* failing_new(std::size_t size)
{
    return fails(Kind::kNew) ? throw std::bad_alloc{} : hold_memory(originals.new_one(size));
}

void* failing_new_many(std::size_t size)
{
    return fails(Kind::kNew) ? throw std::bad_alloc{} : hold_memory(originals.new_many(size));
}

void counted_delete(void* block)
{
    note_given_back(block);
    originals.delete_one(block);
}

void counted_delete_sized(void* block, std::size_t size)
{
    note_given_back(block);
    originals.delete_sized(block, size);
}

void counted_delete_many(void* block)
{
    note_given_back(block);
    originals.delete_many(block);
}

int kept_puts(const char* text)
{
    if (!is_fault_on()) {
        return originals.puts(text);
    }
    keep_output(text);
    keep_output("\n");
    return 0;
}

// The pauses between passes are told of by other tests.
int skipped_usleep(useconds_t duration)
{
    return is_fault_on() ? 0 : originals.usleep(duration);
}

// Makes the C library's function the one that stands for it here; what is called before either is
// what the loader finds first.
template <typename Function>
Replacement replacement(const char* name, Function* function, Function*& original)
{
    original = reinterpret_cast<Function*>(::dlsym(RTLD_DEFAULT, name));
    return {name, reinterpret_cast<void*>(function)};
}

}  // namespace

void take_over_calls()
{
    Originals& o = originals;
    const std::array memory{
        replacement("_Znwm", failing_new, o.new_one),
        replacement("_Znam", failing_new_many, o.new_many),
        replacement("_ZdlPv", counted_delete, o.delete_one),
        replacement("_ZdlPvm", counted_delete_sized, o.delete_sized),
        replacement("_ZdaPv", counted_delete_many, o.delete_many),
    };
    const std::array functions{
        replacement("open", failing_open, o.open),
        replacement("openat", failing_openat, o.openat),
        replacement("fopen", failing_fopen, o.fopen),
        replacement("fdopen", failing_fdopen, o.fdopen),
        replacement("fileno", fileno_of, o.fileno),
        replacement("fclose", failing_fclose, o.fclose),
        replacement("read", failing_read, o.read),
        replacement("write", failing_write, o.write),
        replacement("close", failing_close, o.close),
        replacement("lseek", failing_lseek, o.lseek),
        replacement("fstat", failing_fstat, o.fstat),
        replacement("opendir", failing_opendir, o.opendir),
        replacement("fdopendir", failing_fdopendir, o.fdopendir),
        replacement("readdir", failing_readdir, o.readdir),
        replacement("closedir", failing_closedir, o.closedir),
        replacement("popen", failing_popen, o.popen),
        replacement("pclose", failing_pclose, o.pclose),
        replacement("dlopen", failing_dlopen, o.dlopen),
        replacement("dlsym", failing_dlsym, o.dlsym),
        replacement("malloc", failing_malloc, o.malloc),
        replacement("free", counted_free, o.free),
        replacement("puts", kept_puts, o.puts),
        replacement("usleep", skipped_usleep, o.usleep),
    };
    for (const char* object : {"", "libnimba_mgmt_interface.so", "libstdc++.so"}) {
        replace_imports(object, memory);
    }
    replace_imports("libnimba_mgmt_interface.so", functions);
}

}  // namespace nimba::test
