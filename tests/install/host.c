/* SPDX-License-Identifier: MIT */
#include <nimba_mgmt_interface.h>
#include <stdio.h>

int main(void)
{
    static find_adapter adapters = {.header = {.vendor_id_filter = 0xFFFF}};
    set_print_callback(NULL);
    gfx_find_adapter(&adapters);
    printf("interface version %d\n", (int)get_interface_version());
    for (int slot = 0; slot < adapters.header.chip_num; ++slot) {
        printf("%s %s\n", adapters.header.chip_name[slot], adapters.gpu_infos[slot].busid);
    }
    return 0;
}
