# SPDX-License-Identifier: MIT
# What the suites of nimba-smi dvfs share: a machine, its settings, and all of them changed.

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    write_adapter machine.toml nimba-k1 0000:01:00.0 0
}

# write_adapter FILE CHIP BUS_ID CARD: appends an adapter whose clocks stay what they are.
write_adapter() {
    [ -e "$1" ] || echo 'description = "Settings"' >"$1"
    cat >>"$1" <<TOML

[[adapter]]
chip = "$2"
bus_id = "$3"
card = $4

[adapter.clocks]
mode = 2
TOML
}

# here COMMAND...: the command on that machine.
here() {
    on ./machine.toml "$@"
}

# here_sh SCRIPT: the shell script there, with the function "log": what the driver was told, in the
# form of dvfs --dry-run, and its errors.
here_sh() {
    here bash -c '
        log() {
            nimba-sim commands --json | jq -r ".[] | (.node | split(\"/\") | last) + \": \" +
                (.text | rtrimstr(\"\n\")) + (if .error then \" -> \" + .error else \"\" end)"
        }
        '"$1"
}

ALL="power_mode=0x1f power_gating_3d=0x10 power_gating_vcp=0x11 power_gating_vpp=0xffff \
clock_gating_3d=0x7fff clock_gating_vcp=0x8000 clock_gating_vpp=0 dvfs_mode=0 dvfs_level=performance \
gfx_check_size=1 vcp0_check_size=2 vcp1_check_size=3 vpp_check_size=4 gfx_high_threshold=5 \
vcp0_high_threshold=6 vcp1_high_threshold=7 vpp_high_threshold=0xffffffff gfx_low_threshold=9 \
vcp0_low_threshold=10 vcp1_low_threshold=11 vpp_low_threshold=12 gfx_clock=1234 gfx_voltage=999"

ALL_LINES="power_mode: 0x1f
pwm_wait_count: 0 0 10
pwm_wait_count: 0 1 11
pwm_wait_count: 0 2 ffffffff
pwm_wait_count: 1 0 7fff
pwm_wait_count: 1 1 ffff8000
pwm_wait_count: 1 2 0
dvfs_mode: 0x0
dvfs_level: performance
dvfs_control_params: 0 0 1
dvfs_control_params: 1 0 2
dvfs_control_params: 2 0 3
dvfs_control_params: 3 0 4
dvfs_control_params: 0 1 5
dvfs_control_params: 1 1 6
dvfs_control_params: 2 1 7
dvfs_control_params: 3 1 ffffffff
dvfs_control_params: 0 2 9
dvfs_control_params: 1 2 a
dvfs_control_params: 2 2 b
dvfs_control_params: 3 2 c
dvfs_clk_voltage: c 0 1234
dvfs_clk_voltage: v 0 999"

SETTINGS="SLOT  FIELD                VALUE
0     power_mode           0x1
0     power_gating_3d      0x64
0     power_gating_vcp     0x64
0     power_gating_vpp     0x64
0     clock_gating_3d      0x10
0     clock_gating_vcp     0x10
0     clock_gating_vpp     0x10
0     dvfs_mode            0x2
0     dvfs_level           balance
0     gfx_check_size       0x40
0     vcp0_check_size      0x40
0     vcp1_check_size      0x40
0     vpp_check_size       0x40
0     gfx_high_threshold   0x50
0     vcp0_high_threshold  0x50
0     vcp1_high_threshold  0x50
0     vpp_high_threshold   0x50
0     gfx_low_threshold    0x1e
0     vcp0_low_threshold   0x1e
0     vcp1_low_threshold   0x1e
0     vpp_low_threshold    0x1e
0     gfx_clock            800
0     gfx_voltage          900
0     video_clock          500
0     memory_clock         1600"

ADAPTER="adapter 0000:01:00.0 (Gpu0:Nimba-K1)"
INFO=/sys/bus/pci/devices/0000:01:00.0/jw_info
