// SPDX-License-Identifier: MIT OR GPL-2.0
/* The dump of page tables: one entry of level 0, one of level 1 below it, and the tables of level 2
 * with their pages. Lines are made as they are read, so that a dump may have any number of them. */
#include "reference.h"

#include <linux/fs.h>

enum { LINES_BEFORE_TABLES = 2 };

static loff_t line_count(const struct reference_page_tables* shape)
{
    return LINES_BEFORE_TABLES + (loff_t)shape->tables * (1 + shape->pages);
}

static void* dump_start(struct seq_file* text, loff_t* position)
{
    return *position < line_count(text->private) ? position : NULL;
}

static void* dump_next(struct seq_file* text, void* line, loff_t* position)
{
    ++*position;
    return dump_start(text, position);
}

static void dump_stop(struct seq_file* text, void* line) {}

static void show_table_line(struct seq_file* text, unsigned long table, unsigned long line)
{
    const unsigned long page = line - 1;

    if (line == 0) {
        seq_printf(text, "2:%lu: entry addr:%lx, buffer:pt2_%lu\n", table,
                   0x10002000 + table * 0x1000, table);
    } else {
        seq_printf(text, "2:%lu Snoop:%lu Segment:%lu LargePage:0 Addr:%lx\n", page, page % 2,
                   table % 2, 0x1000000 + table * 0x200000 + page * 0x1000);
    }
}

static int dump_show(struct seq_file* text, void* line)
{
    const struct reference_page_tables* const shape = text->private;
    const unsigned long number = *(loff_t*)line;
    const unsigned long behind = number - LINES_BEFORE_TABLES;

    if (number < LINES_BEFORE_TABLES) {
        seq_printf(text, "%lu:0: entry addr:%lx, buffer:pt%lu_0\n", number,
                   0x10000000 + number * 0x1000, number);
    } else {
        show_table_line(text, behind / (1 + shape->pages), behind % (1 + shape->pages));
    }
    return 0;
}

static const struct seq_operations dump_operations = {
    .start = dump_start,
    .next = dump_next,
    .stop = dump_stop,
    .show = dump_show,
};

static int dump_open(struct inode* inode, struct file* file)
{
    const int status = seq_open(file, &dump_operations);

    if (status == 0) {
        ((struct seq_file*)file->private_data)->private = inode->i_private;
    }
    return status;
}

const struct file_operations reference_page_tables_fops = {
    .owner = THIS_MODULE,
    .open = dump_open,
    .read = seq_read,
    .llseek = seq_lseek,
    .release = seq_release,
};
