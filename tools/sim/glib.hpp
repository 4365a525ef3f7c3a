// SPDX-License-Identifier: MIT
// Owners of GLib's objects.
#pragma once

#include <glib-object.h>

#include <memory>

namespace nimba::sim {

struct GObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
template <typename Object>
using GObjectOwner = std::unique_ptr<Object, GObjectUnref>;

struct GFree {
    void operator()(gchar* text) const { g_free(text); }
};
using GText = std::unique_ptr<gchar, GFree>;

// Receives a GLib function's error report.
class GErrorReport {
  public:
    GErrorReport() = default;
    ~GErrorReport() { g_clear_error(&error_); }
    GErrorReport(const GErrorReport&) = delete;
    GErrorReport& operator=(const GErrorReport&) = delete;

    GError** receiver() { return &error_; }
    const char* message() const { return error_ == nullptr ? "unknown error" : error_->message; }

  private:
    GError* error_ = nullptr;
};

}  // namespace nimba::sim
