// SPDX-License-Identifier: MIT
// What GLib and umockdev have to say. An error ends the process with kNoTestBed after one line on
// standard error.
#pragma once

namespace nimba::sim {

// Takes warnings for errors, from now on: what they announce breaks the test bed that is being
// made.
void end_on_glib_warnings();

// Keeps warnings from the user, from now on: they are about programs that end while they are
// served.
void drop_glib_warnings();

}  // namespace nimba::sim
