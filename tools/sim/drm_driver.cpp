// SPDX-License-Identifier: MIT
#include "drm_driver.hpp"

#include "kernel_interface_ioctl.h"
#include "test_bed_error.hpp"

#include <drm.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>
#include <utility>

namespace nimba::sim {
namespace {

constexpr std::string_view kDate = "20240101";
constexpr std::string_view kDescription = "Simulated graphics adapter";

void overwrite(UMockdevIoctlData* memory, std::size_t offset, std::span<const std::byte> bytes)
{
    const auto* first = reinterpret_cast<const guint8*>(bytes.data());
    umockdev_ioctl_data_update(memory, offset, const_cast<guint8*>(first),
                               static_cast<gint>(bytes.size()));
}

// Writes `text`, cut to `length` bytes, to the buffer that the pointer at `offset` of the caller's
// record points to. Returns false when that memory cannot be reached.
bool write_text(UMockdevIoctlData* record, std::size_t offset, std::size_t length,
                std::string_view text)
{
    if (length == 0) {
        return true;
    }
    GErrorReport report;
    const GObjectOwner<UMockdevIoctlData> buffer{
        umockdev_ioctl_data_resolve(record, offset, length, report.receiver())};
    if (!buffer) {
        return false;
    }
    overwrite(buffer.get(), 0, std::as_bytes(std::span{text.substr(0, length)}));
    return true;
}

}  // namespace

DrmDriver::DrmDriver(std::string name, bool answers_version, std::function<Counters()> counters)
    : name_{std::move(name)},
      answers_version_{answers_version},
      counters_{std::move(counters)},
      handler_{umockdev_ioctl_base_new()}
{
    g_signal_connect(handler_.get(), "handle-ioctl", G_CALLBACK(handle_ioctl), this);
}

void DrmDriver::attach(UMockdevTestbed* test_bed, const std::string& node) const
{
    GErrorReport report;
    if (!umockdev_testbed_attach_ioctl(test_bed, node.c_str(), handler_.get(), report.receiver())) {
        throw TestBedError{node + ": " + report.message()};
    }
}

gboolean DrmDriver::handle_ioctl(UMockdevIoctlBase* /*handler*/, UMockdevIoctlClient* client,
                                 gpointer driver)
{
    const auto& self = *static_cast<const DrmDriver*>(driver);
    switch (umockdev_ioctl_client_get_request(client)) {
        case DRM_IOCTL_VERSION:
            self.answer_version(client);
            return TRUE;
        case NIMBA_SIM_IOCTL_COUNTERS:
            self.answer_counters(client);
            return TRUE;
        default:
            return FALSE;
    }
}

void DrmDriver::answer_version(UMockdevIoctlClient* client) const
{
    if (!answers_version_) {
        umockdev_ioctl_client_complete(client, -1, ENODEV);
    } else if (!write_version(client)) {
        umockdev_ioctl_client_complete(client, -1, EFAULT);
    } else {
        umockdev_ioctl_client_complete(client, 0, 0);
    }
}

void DrmDriver::answer_counters(UMockdevIoctlClient* client) const
{
    if (!counters_) {
        umockdev_ioctl_client_complete(client, -1, ENOTTY);
    } else if (!write_counters(client)) {
        umockdev_ioctl_client_complete(client, -1, EFAULT);
    } else {
        umockdev_ioctl_client_complete(client, 0, 0);
    }
}

bool DrmDriver::write_counters(UMockdevIoctlClient* client) const
{
    GErrorReport report;
    const GObjectOwner<UMockdevIoctlData> record{umockdev_ioctl_data_resolve(
        umockdev_ioctl_client_get_arg(client), 0, sizeof(nimba_sim_counters), report.receiver())};
    if (!record) {
        return false;
    }
    const Counters counters = counters_();
    nimba_sim_counters told{};
    told.time = counters.time;
    told.flips = counters.flips;
    std::ranges::copy(counters.hardware, told.hardware);
    std::ranges::copy(counters.usage, told.usage);
    overwrite(record.get(), 0, std::as_bytes(std::span{&told, 1}));
    return true;
}

// A caller asks twice: first with lengths of 0, to learn the lengths, then with buffers.
bool DrmDriver::write_version(UMockdevIoctlClient* client) const
{
    GErrorReport report;
    const GObjectOwner<UMockdevIoctlData> record{umockdev_ioctl_data_resolve(
        umockdev_ioctl_client_get_arg(client), 0, sizeof(drm_version), report.receiver())};
    if (!record) {
        return false;
    }
    drm_version version;
    std::memcpy(&version, record->data, sizeof(version));
    if (!write_text(record.get(), offsetof(drm_version, name), version.name_len, name_) ||
        !write_text(record.get(), offsetof(drm_version, date), version.date_len, kDate) ||
        !write_text(record.get(), offsetof(drm_version, desc), version.desc_len, kDescription)) {
        return false;
    }
    // Only the numbers are written back: the pointers are the caller's.
    const auto write_number = [&](std::size_t offset, const auto& number) {
        overwrite(record.get(), offset, std::as_bytes(std::span{&number, 1}));
    };
    write_number(offsetof(drm_version, version_major), 1);
    write_number(offsetof(drm_version, version_minor), 0);
    write_number(offsetof(drm_version, version_patchlevel), 0);
    write_number(offsetof(drm_version, name_len), name_.size());
    write_number(offsetof(drm_version, date_len), kDate.size());
    write_number(offsetof(drm_version, desc_len), kDescription.size());
    return true;
}

}  // namespace nimba::sim
