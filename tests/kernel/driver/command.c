// SPDX-License-Identifier: MIT OR GPL-2.0
#include "reference.h"

#include <linux/string.h>

static int parse_word(const struct reference_key* keys, size_t count, char* word, s64* numbers)
{
    char* const name = strsep(&word, "=");
    size_t i;

    for (i = 0; word && i < count; i++) {
        if (strcmp(keys[i].name, name) == 0) {
            return kstrtos64(word, 0, &numbers[i]) ? -EINVAL : 0;
        }
    }
    return -EINVAL;
}

void reference_numbers_initialise(const struct reference_key* keys, size_t count, s64* numbers)
{
    size_t i;

    for (i = 0; i < count; i++) {
        numbers[i] = keys[i].initial;
    }
}

int reference_numbers_parse(const struct reference_key* keys, size_t count, char* words,
                            s64* numbers)
{
    char* word;

    while ((word = strsep(&words, " ")) != NULL) {
        if (*word != '\0' && parse_word(keys, count, word, numbers)) {
            return -EINVAL;
        }
    }
    return 0;
}
