/* SPDX-License-Identifier: MIT */
/* call_size_function FILE...: loads the libraries, all at the same time, by their file names, and
 * prints what their size functions return for standard input and for a descriptor that is not open.
 */
#include <dlfcn.h>
#include <stdint.h>
#include <stdio.h>

typedef uint32_t size_function(int descriptor);

static void call(const char* file, void* library, const char* name)
{
    void* symbol = dlsym(library, name);
    if (symbol == NULL) {
        return;
    }
    size_function* function = NULL;
    *(void**)&function = symbol;
    printf("%s: %s: %u, %u\n", file, name, function(0), function(-1));
}

int main(int argument_count, char** arguments)
{
    for (int index = 1; index < argument_count; ++index) {
        void* library = dlopen(arguments[index], RTLD_LAZY | RTLD_GLOBAL);
        if (library == NULL) {
            printf("%s: not there\n", arguments[index]);
            continue;
        }
        printf("%s: loaded\n", arguments[index]);
        call(arguments[index], library, "gfx_get_struct_size");
        call(arguments[index], library, "qv_get_struct_size");
    }
    return 0;
}
