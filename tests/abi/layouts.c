/* SPDX-License-Identifier: MIT */
/* Compiled, as C and as C++, only if the public header has the layout and the constants of the
 * table. */
#include <assert.h>
#include <nimba_mgmt_interface.h>
#include <stdalign.h>
#include <stddef.h>

#define CONSTANT(name, value) static_assert((name) == (value), #name " is not " #value);
#define RECORD(record, size, alignment)                                          \
    static_assert(sizeof(record) == (size), #record " has not " #size " bytes"); \
    static_assert(alignof(record) == (alignment), #record " is not aligned to " #alignment);
#define FIELD(record, field, offset, size)                                \
    static_assert(offsetof(record, field) == (offset),                    \
                  #record "." #field " does not begin at byte " #offset); \
    static_assert(sizeof(((record*)0)->field) == (size),                  \
                  #record "." #field " has not " #size " bytes");

#include "layout_table.h"
