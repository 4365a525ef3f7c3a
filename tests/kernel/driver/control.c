// SPDX-License-Identifier: MIT OR GPL-2.0
/* /sys/kernel/debug/nimba_reference/control: tests read there which adapters are bound, and change
 * them by commands "<adapter> <verb> key=number...", one a write. */
#include "reference.h"

#include <linux/debugfs.h>
#include <linux/slab.h>
#include <linux/string.h>
#include <linux/uaccess.h>

enum { GREATEST_COMMAND = 512 };

static struct dentry* directory;

static int set_frames(struct reference_adapter* adapter, char* words)
{
    static const struct reference_key keys[] = {{"flips", 0}, {"time", 0}, {"blits", 0}};
    s64 numbers[ARRAY_SIZE(keys)] = {};

    if (reference_numbers_parse(keys, ARRAY_SIZE(keys), words, numbers)) {
        return -EINVAL;
    }
    mutex_lock(&adapter->lock);
    adapter->state.flips = numbers[0];
    adapter->state.flip_time = numbers[1];
    adapter->state.blits = numbers[2];
    mutex_unlock(&adapter->lock);
    return 0;
}

static int set_displays(struct reference_adapter* adapter, char* words)
{
    static const struct reference_key keys[] = {{"ports", 0}};
    s64 numbers[ARRAY_SIZE(keys)] = {};

    if (reference_numbers_parse(keys, ARRAY_SIZE(keys), words, numbers)) {
        return -EINVAL;
    }
    mutex_lock(&adapter->lock);
    adapter->state.ports = numbers[0];
    mutex_unlock(&adapter->lock);
    return 0;
}

static const struct {
    const char* name;
    int (*run)(struct reference_adapter* adapter, char* words);
} verbs[] = {
    {"allocate", reference_allocation_add},
    {"free", reference_allocation_remove},
    {"open", reference_context_add},
    {"close", reference_context_remove},
    {"frames", set_frames},
    {"displays", set_displays},
};

static int run_verb(struct reference_adapter* adapter, char* words)
{
    const char* const name = strsep(&words, " ");
    size_t i;

    for (i = 0; i < ARRAY_SIZE(verbs); i++) {
        if (strcmp(verbs[i].name, name) == 0) {
            return verbs[i].run(adapter, words);
        }
    }
    return -EINVAL;
}

static int run_command(char* command)
{
    char* words = strim(command);
    const char* const number_word = strsep(&words, " ");
    struct reference_adapter* adapter;
    unsigned int number;
    int status;

    if (!words || kstrtouint(number_word, 10, &number)) {
        return -EINVAL;
    }
    adapter = reference_adapters_find(number);
    if (!adapter) {
        return -ENODEV;
    }
    status = run_verb(adapter, words);
    reference_adapters_release();
    return status;
}

static ssize_t control_write(struct file* file, const char __user* from, size_t length,
                             loff_t* position)
{
    char* command;
    int status;

    if (length > GREATEST_COMMAND) {
        return -EINVAL;
    }
    command = memdup_user_nul(from, length);
    if (IS_ERR(command)) {
        return PTR_ERR(command);
    }
    status = run_command(command);
    kfree(command);
    return status ?: length;
}

static int control_show(struct seq_file* text, void* unused)
{
    reference_adapters_show(text);
    return 0;
}

static int control_open(struct inode* inode, struct file* file)
{
    return single_open(file, control_show, NULL);
}

static const struct file_operations control_operations = {
    .owner = THIS_MODULE,
    .open = control_open,
    .read = seq_read,
    .write = control_write,
    .llseek = seq_lseek,
    .release = single_release,
};

int reference_control_create(void)
{
    directory = debugfs_create_dir(REFERENCE_NAME, NULL);
    if (IS_ERR(directory)) {
        return PTR_ERR(directory);
    }
    debugfs_create_file("control", 0600, directory, NULL, &control_operations);
    return 0;
}

void reference_control_remove(void)
{
    debugfs_remove(directory);
}
