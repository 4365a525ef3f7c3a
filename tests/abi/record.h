/* SPDX-License-Identifier: MIT */
/* Checks that are counted, and little-endian fields of records that are known as bytes alone. */
#ifndef NIMBA_TESTS_ABI_RECORD_H
#define NIMBA_TESTS_ABI_RECORD_H

#include <stdint.h>
#include <stdio.h>
#include <string.h>

static int failed_checks;

/* Reports a condition that does not hold, and goes on. */
#define CHECK(condition)                                                                  \
    do {                                                                                  \
        if (!(condition)) {                                                               \
            fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition); \
            ++failed_checks;                                                              \
        }                                                                                 \
    } while (0)

static inline uint32_t u32_at(const unsigned char* record, size_t offset)
{
    const unsigned char* byte = record + offset;
    return (uint32_t)byte[0] | (uint32_t)byte[1] << 8 | (uint32_t)byte[2] << 16 |
           (uint32_t)byte[3] << 24;
}

static inline int32_t i32_at(const unsigned char* record, size_t offset)
{
    const uint32_t value = u32_at(record, offset);
    int32_t result;
    memcpy(&result, &value, sizeof result);
    return result;
}

static inline uint32_t u16_at(const unsigned char* record, size_t offset)
{
    return (uint32_t)(record[offset] | record[offset + 1] << 8);
}

static inline void put_u32(unsigned char* record, size_t offset, uint32_t value)
{
    for (size_t byte = 0; byte < 4; ++byte) {
        record[offset + byte] = (unsigned char)(value >> (8 * byte) & 0xFF);
    }
}

/* Whether `count` bytes from `offset` on all have the value `byte`. */
static inline int all_bytes(const unsigned char* record, size_t offset, size_t count, int byte)
{
    for (size_t index = offset; index < offset + count; ++index) {
        if (record[index] != byte) {
            return 0;
        }
    }
    return 1;
}

static inline int text_at(const unsigned char* record, size_t offset, const char* text)
{
    return memcmp(record + offset, text, strlen(text) + 1) == 0;
}

#endif
