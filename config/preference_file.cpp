// SPDX-License-Identifier: MIT
// The preference file: where it is, how it is loaded and how it is rewritten.
#include "config/preference_text.hpp"
#include "core/emptied_at_exit.hpp"
#include "core/handles.hpp"
#include "core/line_pieces.hpp"
#include "core/read_some.hpp"
#include "core/write_all.hpp"
#include "nimba_mgmt_interface.h"

#include <fcntl.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>

// Filled by parseINI and SetGPUPreference_config, emptied by the two operations that end in
// initGPUPreference_config.
std::vector<_UTIL_GPU_PREFERENCE_NODE> interface_config_list;

// Written by util_init_config_files alone.
char UTIL_CONFIG_PATH[512] = "";

namespace nimba {
namespace {

const EmptiedAtExit list_at_exit{interface_config_list};

constexpr std::string_view kFileInHome = "/.local/share/wmt_gfx_util.ini";
// A longer line is read in pieces.
using PreferenceLines = LinePieces<611>;
constexpr off_t kKeptTextLimit = 16 << 20;

// The file at UTIL_CONFIG_PATH is there and could not be read to its end: the list lacks records
// that rewriting it would lose.
bool list_lacks_records = false;

void note_reading(const char* path, bool whole)
{
    if (std::strcmp(path, UTIL_CONFIG_PATH) == 0) {
        list_lacks_records = !whole;
    }
}

bool would_lose_records(const char* path)
{
    return list_lacks_records && std::strcmp(path, UTIL_CONFIG_PATH) == 0;
}

// False when the file cannot be read from its beginning after all.
bool skip_byte_order_mark(int file)
{
    char mark[3] = {};
    return (read_until_full(file, mark, sizeof mark) == sizeof mark &&
            std::memcmp(mark, "\xEF\xBB\xBF", sizeof mark) == 0) ||
           ::lseek(file, 0, SEEK_SET) == 0;
}

// The record that is being read, and the number of section headers so far.
class PreferenceParser final {
  public:
    // Whole lines.
    void add_lines(std::string_view text)
    {
        while (!text.empty()) {
            const std::string_view line = PreferenceLines::first(text);
            add_line(line.substr(0, line.find('\0')));
            text.remove_prefix(line.size());
        }
    }

    // Ends the last record. Returns the number of sections.
    int32_t finish()
    {
        keep_record();
        return sections_;
    }

  private:
    void add_line(std::string_view text)
    {
        const PreferenceLine line = read_preference_line(text);
        if (line.kind == LineKind::kSection) {
            // Keys from before the first header stay and become part of the first record.
            keep_record();
            ++sections_;
            set_file_name(node_, line.name);
        } else if (line.kind == LineKind::kValue) {
            set_preference_value(node_, line.name, line.value);
        }
    }

    void keep_record()
    {
        if (sections_ > 0) {
            interface_config_list.push_back(node_);
            printConfigNodeLog("Load from config:", &node_);
            node_ = {};
        }
    }

    _UTIL_GPU_PREFERENCE_NODE node_{};
    int32_t sections_ = 0;
};

// The file's text, to be put back if rewriting fails; empty for a file that does not exist, and
// nothing for one that is no regular file, cannot be read or is too large to be a preference file.
std::optional<std::string> read_kept_text(const char* path)
{
    const Descriptor file{::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC)};
    if (!file) {
        return errno == ENOENT ? std::optional{std::string{}} : std::nullopt;
    }
    struct stat status {};
    if (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
        status.st_size > kKeptTextLimit) {
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(status.st_size), '\0');
    const bool whole = read_until_full(file.get(), text.data(), text.size()) == text.size();
    return whole ? std::optional{std::move(text)} : std::nullopt;
}

// Writes through the stream's descriptor: the stream would lose text to a signal.
bool write_to(const Stream& file, std::string_view text)
{
    return write_all(::fileno(file.get()), text);
}

void put_back(const char* path, const std::string& text)
{
    if (const Stream file{std::fopen(path, "we")}) {
        write_to(file, text);
    }
}

}  // namespace
}  // namespace nimba

int32_t util_init_config_files()
{
    const char* home = std::getenv("HOME");
    const std::string path = std::string{home != nullptr ? home : ""}.append(nimba::kFileInHome);
    if (home == nullptr || *home == '\0' || path.size() >= sizeof UTIL_CONFIG_PATH) {
        UTIL_CONFIG_PATH[0] = '\0';
        lib_print_func(
            "util_init_config_files: HOME is unset, empty or too long, no preference file is "
            "used.\n");
        return 0;
    }
    std::memcpy(UTIL_CONFIG_PATH, path.c_str(), path.size() + 1);
    parseINI(UTIL_CONFIG_PATH);
    return 0;
}

int32_t parseINI(const char* path)
{
    const nimba::Stream file{std::fopen(path, "re")};
    if (!file) {
        nimba::note_reading(path, errno == ENOENT || errno == ENOTDIR);
        lib_print_func("parseINI fail to open %s\n", path);
        return -1;
    }
    lib_print_func("parseINI %s\n", path);
    // Through the descriptor: the stream would take a signal for the end.
    const int descriptor = ::fileno(file.get());
    const bool begun = nimba::skip_byte_order_mark(descriptor);
    nimba::PreferenceParser parser;
    const bool ended = nimba::PreferenceLines{}.read(descriptor, [&](std::string_view lines) {
        parser.add_lines(lines);
        return true;
    });
    nimba::note_reading(path, begun && ended);
    return parser.finish();
}

void savefile_INI(const char* path)
{
    const std::optional<std::string> previous = nimba::read_kept_text(path);
    nimba::Stream file{nimba::would_lose_records(path) ? nullptr : std::fopen(path, "we")};
    if (!file) {
        lib_print_func("savefile_INI: can't open %s \n", path);
        return;
    }
    lib_print_func("-------------------------\n");
    bool written = nimba::write_to(file, nimba::kPreferenceHeader);
    for (const _UTIL_GPU_PREFERENCE_NODE& node : interface_config_list) {
        written = written && nimba::write_to(file, nimba::preference_section(node));
        printConfigNodeLog("Save to config:", &node);
    }
    lib_print_func("\n");
    if (std::fclose(file.release()) != 0 || !written) {
        lib_print_func("savefile_INI: can't write %s \n", path);
        if (previous) {
            nimba::put_back(path, *previous);
        }
    }
}

void printConfigNodeLog(const char* prefix, const _UTIL_GPU_PREFERENCE_NODE* node)
{
    const auto name = nimba::running_text(*node, offsetof(_UTIL_GPU_PREFERENCE_NODE, FileName));
    const auto path = nimba::running_text(*node, offsetof(_UTIL_GPU_PREFERENCE_NODE, FullPath));
    const auto gpu = nimba::running_text(*node, offsetof(_UTIL_GPU_PREFERENCE_NODE, PreferGpuName));
    lib_print_func("%s %.*s: %.*s, %.*s, %04d:%02d:%02d.%d\n", prefix,
                   static_cast<int>(name.size()), name.data(), static_cast<int>(path.size()),
                   path.data(), static_cast<int>(gpu.size()), gpu.data(), node->domain, node->bus,
                   node->device, node->function);
}

void trimWhitespace(char* text)
{
    const std::string_view kept = nimba::trimmed(text);
    const std::size_t length = kept.size();
    std::memmove(text, kept.data(), length);
    text[length] = '\0';
}

std::string get_filename(const std::string& path)
{
    const std::size_t separator = path.find_last_of("/\\");
    return separator == std::string::npos ? path : path.substr(separator + 1);
}
