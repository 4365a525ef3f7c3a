// SPDX-License-Identifier: MIT
#include "driver/node_server.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <functional>
#include <utility>

namespace nimba::sim {
namespace {

// Seconds for which the kernel need not ask for a node's attributes again, though it looks the node
// up each time, and so learns that it is gone. Without them it would ask three times at an opening.
constexpr double kAttributesHold = 3600;

std::string child_path(const std::string& directory, const std::string& name)
{
    return directory.empty() ? name : directory + "/" + name;
}

}  // namespace

struct stat NodeServer::status_of(const std::string& path, NodeAttributes attributes) const
{
    struct stat status {};
    status.st_ino = std::hash<std::string>{}(path);
    status.st_mode =
        attributes.mode | static_cast<mode_t>(attributes.directory ? S_IFDIR : S_IFREG);
    status.st_nlink = attributes.directory ? 2 : 1;
    status.st_uid = user_;
    status.st_gid = group_;
    status.st_atim.tv_sec = status.st_mtim.tv_sec = status.st_ctim.tv_sec = made_;
    return status;
}

std::optional<NodeAttributes> NodeServer::find(const std::string& path)
{
    return faults_.hides(path) ? std::nullopt : source_.look_up(path);
}

// Whether what was there after so many absences of the driver is of one that has gone away since,
// back now or not.
bool NodeServer::is_dead(const std::string& path, uint64_t absences)
{
    return faults_.absences(path) != absences;
}

void NodeServer::look_up(fuse_req_t request, fuse_ino_t parent, const char* name)
{
    const NodeTable::Node directory = nodes_.node(parent);
    const std::string path = child_path(directory.path, name);
    const uint64_t absences = faults_.absences(path);
    const auto attributes = is_dead(directory.path, directory.absences) ? std::nullopt : find(path);
    if (!attributes) {
        fuse_reply_err(request, ENOENT);
        return;
    }
    fuse_entry_param entry{};
    entry.ino = nodes_.add({path, *attributes, absences});
    entry.attr = status_of(path, *attributes);
    entry.attr_timeout = kAttributesHold;
    if (fuse_reply_entry(request, &entry) == -ENOENT) {  // the caller was interrupted
        nodes_.forget(entry.ino, 1);
    }
}

void NodeServer::forget(fuse_req_t request, fuse_ino_t number, uint64_t times)
{
    nodes_.forget(number, times);
    fuse_reply_none(request);
}

void NodeServer::forget_many(fuse_req_t request, std::size_t count, fuse_forget_data* list)
{
    for (std::size_t i = 0; i < count; ++i) {
        nodes_.forget(list[i].ino, list[i].nlookup);
    }
    fuse_reply_none(request);
}

// A node that is gone, but open somewhere, keeps its last attributes.
void NodeServer::get_attributes(fuse_req_t request, fuse_ino_t number, fuse_file_info* /*file*/)
{
    NodeTable::Node node = nodes_.node(number);
    const auto attributes = is_dead(node.path, node.absences) ? std::nullopt : find(node.path);
    if (attributes && attributes->directory == node.attributes.directory) {
        node.attributes = *attributes;
        nodes_.set_attributes(number, *attributes);
    }
    const struct stat status = status_of(node.path, node.attributes);
    fuse_reply_attr(request, &status, kAttributesHold);
}

// A shell cuts a file to no bytes before it writes there; drivers take no notice.
void NodeServer::set_attributes(fuse_req_t request, fuse_ino_t number, struct stat* /*attributes*/,
                                int which, fuse_file_info* file)
{
    constexpr int kHarmless = FUSE_SET_ATTR_SIZE | FUSE_SET_ATTR_ATIME | FUSE_SET_ATTR_MTIME |
                              FUSE_SET_ATTR_ATIME_NOW | FUSE_SET_ATTR_MTIME_NOW |
                              FUSE_SET_ATTR_CTIME;
    if ((which & ~kHarmless) != 0) {
        fuse_reply_err(request, EPERM);
        return;
    }
    get_attributes(request, number, file);
}

void NodeServer::answer_opened(fuse_req_t request, fuse_file_info* file,
                               std::shared_ptr<Opening> opening)
{
    const uint64_t handle = openings_.add(std::move(opening));
    file->fh = handle;
    if (fuse_reply_open(request, file) == -ENOENT) {  // the caller was interrupted
        openings_.remove(handle);
    }
}

void NodeServer::open(fuse_req_t request, fuse_ino_t number, fuse_file_info* file)
{
    const NodeTable::Node node = nodes_.node(number);
    auto opening = std::make_shared<Opening>();
    opening->path = node.path;
    opening->absences = node.absences;
    opening->faults = faults_.open(opening->path, false);
    if (opening->faults.open_error != 0) {
        fuse_reply_err(request, opening->faults.open_error);
        return;
    }
    auto text = is_dead(node.path, node.absences) || faults_.hides(node.path)
                    ? std::nullopt
                    : source_.read(node.path);
    if (!text) {
        fuse_reply_err(request, ENOENT);
        return;
    }
    opening->text = std::move(opening->faults.garbage).value_or(std::move(*text));
    file->direct_io = 1;
    answer_opened(request, file, std::move(opening));
}

// Returns 0, or the error with which reading fails.
int NodeServer::start_reading(fuse_req_t request, Opening& opening)
{
    if (!opening.was_read.exchange(true) && opening.faults.pause.count() != 0 &&
        !pauses_.wait(request, opening.faults.pause)) {
        return EINTR;
    }
    return is_dead(opening.path, opening.absences) ? ENODEV : 0;
}

void NodeServer::read(fuse_req_t request, fuse_ino_t /*number*/, std::size_t size, off_t offset,
                      fuse_file_info* file)
{
    const auto file_opening = openings_.opening(file->fh);
    const OpeningFaults& faults = file_opening->faults;
    const auto begin = static_cast<std::size_t>(offset);
    int error = start_reading(request, *file_opening);
    if (error == 0 && faults.fails_behind && begin >= *faults.fails_behind) {
        error = faults.read_error;
    }
    if (error != 0) {
        fuse_reply_err(request, error);
        return;
    }
    const std::scoped_lock lock{file_opening->text_mutex};
    const std::size_t end =
        std::min(file_opening->text.size(), faults.fails_behind.value_or(SIZE_MAX));
    std::size_t length = begin < end ? std::min(end - begin, size) : 0;
    length = std::min(length, faults.longest_read.value_or(SIZE_MAX));
    fuse_reply_buf(request, length == 0 ? nullptr : &file_opening->text[begin], length);
}

// A process that has a node open for both sees what its command has changed, if the node is still
// there.
void NodeServer::take_new_text(Opening& opening)
{
    if (opening.faults.garbage) {
        return;
    }
    if (auto text = source_.read(opening.path)) {
        const std::scoped_lock lock{opening.text_mutex};
        opening.text = std::move(*text);
    }
}

void NodeServer::write(fuse_req_t request, fuse_ino_t /*number*/, const char* bytes,
                       std::size_t size, off_t /*offset*/, fuse_file_info* file)
{
    const auto file_opening = openings_.opening(file->fh);
    const int error = is_dead(file_opening->path, file_opening->absences)
                          ? ENODEV
                          : source_.write(file_opening->path, {bytes, size});
    if (error != 0) {
        fuse_reply_err(request, error);
        return;
    }
    if ((file->flags & O_ACCMODE) == O_RDWR) {
        take_new_text(*file_opening);
    }
    fuse_reply_write(request, size);
}

void NodeServer::release(fuse_req_t request, fuse_ino_t /*number*/, fuse_file_info* file)
{
    openings_.remove(file->fh);
    fuse_reply_err(request, 0);
}

void NodeServer::take_names(Opening& opening)
{
    opening.names = {".", ".."};
    for (std::string& name : source_.list(opening.path)) {
        if (!faults_.hides(child_path(opening.path, name))) {
            opening.names.push_back(std::move(name));
        }
    }
}

void NodeServer::open_directory(fuse_req_t request, fuse_ino_t number, fuse_file_info* file)
{
    const NodeTable::Node node = nodes_.node(number);
    auto opening = std::make_shared<Opening>();
    opening->path = node.path;
    opening->absences = node.absences;
    opening->faults = faults_.open(opening->path, true);
    const int gone = !is_dead(node.path, node.absences) && find(node.path) ? 0 : ENOENT;
    if (const int error = opening->faults.open_error; error != 0 || gone != 0) {
        fuse_reply_err(request, error != 0 ? error : gone);
        return;
    }
    take_names(*opening);
    answer_opened(request, file, std::move(opening));
}

// As many entries, from number `begin` on, as fit in `size` bytes.
std::string NodeServer::directory_part(fuse_req_t request, const Opening& opening,
                                       std::size_t begin, std::size_t end, std::size_t size)
{
    std::string part(size, '\0');
    std::size_t used = 0;
    for (std::size_t i = begin; i < end; ++i) {
        const std::string& name = opening.names[i];
        const std::string path = i < 2 ? opening.path : child_path(opening.path, name);
        const auto attributes = i < 2 ? NodeAttributes{true, 0} : find(path);
        struct stat status {};
        if (attributes) {
            status = status_of(path, *attributes);
        }
        const std::size_t length = fuse_add_direntry(
            request, &part[used], size - used, name.c_str(), &status, static_cast<off_t>(i + 1));
        if (length > size - used) {
            break;
        }
        used += length;
    }
    part.resize(used);
    return part;
}

void NodeServer::read_directory(fuse_req_t request, fuse_ino_t /*number*/, std::size_t size,
                                off_t offset, fuse_file_info* file)
{
    const auto directory = openings_.opening(file->fh);
    const OpeningFaults& faults = directory->faults;
    const bool starts_again = offset == 0 && directory->was_read;
    if (const int error = start_reading(request, *directory); error != 0) {
        fuse_reply_err(request, error);
        return;
    }
    if (starts_again) {
        take_names(*directory);
    }
    const std::size_t count = directory->names.size();
    const std::size_t end =
        faults.listing_fails
            ? std::min<std::size_t>(count, 2 + faults.entries.value_or((count - 2) / 2))
            : count;
    const auto begin = static_cast<std::size_t>(offset);
    if (faults.listing_fails && begin >= end) {
        fuse_reply_err(request, faults.list_error);
        return;
    }
    const std::string part =
        begin < end ? directory_part(request, *directory, begin, end, size) : std::string{};
    fuse_reply_buf(request, part.data(), part.size());
}

}  // namespace nimba::sim
