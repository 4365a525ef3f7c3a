#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Libraries that die, throw or hang: what nimba-smi saves, what it says, and that nothing is left.

load nimba-smi.bash

SLOT_0='0     Gpu0:Nimba-K1      0000:03:00.0  0     0x1001  va      0x0:0x30000'
SLOT_2='2     Gpu2:Nimba-GT-K3t  0001:8f:1f.7  12    0x1013  va      0x1:0x8f1f07'
HEADER='SLOT  NAME               BUS ID        CARD  DEVICE  DRIVER  LUID'
ADVICE="run with --verbose to see the library's last messages"

# loses FAULT LINE...: with this fault, list has status 7 and says these lines.
loses() {
    local fault=$1
    shift
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FAULT=$fault run --separate-stderr smi --timeout 3 list
    [ "$status" = 7 ] || { echo "status $status: $stderr"; return 1; }
    same "$stderr" "$(printf 'nimba-smi: %s\n' "$@")"
}

@test "discovery that dies is one line, whatever the call and the way" {
    loses discovery/gfx_find_adapter/abort \
        "discovery: worker lost in gfx_find_adapter: killed by SIGABRT; $ADVICE"
    same "$output" ""
    loses discovery/gfx_find_adapter_ext1/crash \
        "discovery: worker lost in gfx_find_adapter_ext1: killed by SIGSEGV; $ADVICE"
    same "$output" "\
SLOT  NAME           BUS ID        CARD  DEVICE  DRIVER   LUID
0     Gpu0:Nimba-K1  0000:03:00.0  0     0x1001  va       0x0:0x30000
1     Gpu1:QV M-30   0000:04:00.0  1     0x2030  unknown  0x0:0x40000
2     -              0001:8f:1f.7  -     -       va       0x1:0x8f1f07"
    loses discovery/set_print_callback/exit \
        "discovery: worker lost in set_print_callback: exit status 3; $ADVICE"
    loses discovery/dlopen/exit \
        "discovery: worker lost in dlopen: exit status 3; it said \"stub: a complaint\""
    loses discovery/get_interface_version_ext1/throw "discovery: worker lost in \
get_interface_version_ext1: it threw std::invalid_argument: stoi; $ADVICE"
    loses discovery/gfx_find_adapter/throw-number \
        "discovery: worker lost in gfx_find_adapter: it threw int; $ADVICE"
    loses discovery/gfx_find_adapter/hang "discovery: worker lost in gfx_find_adapter: no answer \
within 3 s; the driver may be blocked: see dmesg, or allow more with --timeout"
}

@test "an adapter that dies leaves the others their rows" {
    for how in 'abort killed by SIGABRT' 'crash killed by SIGSEGV' 'exit exit status 3' \
        'throw it threw std::invalid_argument: stoi'; do
        loses "1/gfx_find_adapter/${how%% *}" "adapter 0000:04:00.0 (Gpu1:QV M-30): worker lost in \
gfx_find_adapter: ${how#* }; $ADVICE"
        same "$output" "$HEADER
$SLOT_0
$SLOT_2"
    done
}

@test "an adapter that hangs leaves the others their rows" {
    loses 1/gfx_find_adapter_ext1/hang "adapter 0000:04:00.0 (Gpu1:QV M-30): worker lost in \
gfx_find_adapter_ext1: no answer within 3 s; the driver may be blocked: see dmesg, or allow more \
with --timeout"
    same "$output" "$HEADER
$SLOT_0
$SLOT_2"
}

@test "the JSON document has the survivors and an entry for the lost adapter" {
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FAULT=1/gfx_find_adapter/abort \
        run --separate-stderr smi list --json
    [ "$status" = 7 ]
    same "$(jq -c '[.adapters[].slot]' <<<"$output")" '[0,2]'
    same "$(jq -c '[.errors[] | [.status, .adapter, .call]]' <<<"$output")" \
        '[[7,"0000:04:00.0","gfx_find_adapter"]]'
    same "nimba-smi: $(jq -r '.errors[0].message' <<<"$output")" "$stderr"
}

@test "a lost worker outweighs an adapter that went away" {
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_GONE=2 NIMBA_STUB_FAULT=0/gfx_find_adapter/exit \
        run --separate-stderr smi list
    [ "$status" = 7 ]
    same "${#stderr_lines[@]}" 2
}

@test "version survives a library that hangs" {
    NIMBA_STUB_FAULT=discovery/get_interface_version/hang \
        run --separate-stderr smi --timeout 3 version
    [ "$status" = 7 ]
    same "$output" "nimba-smi  0.1.0"
    same "$stderr" "nimba-smi: library: worker lost in get_interface_version: no answer within \
3 s; the driver may be blocked: see dmesg, or allow more with --timeout"
}

@test "the adapters are asked at the same time" {
    make_pid_directory
    # Each adapter's worker goes on only once all three are there.
    NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FAULT=adapters/gfx_find_adapter/meet \
        run --separate-stderr smi --timeout 20 list
    [ "$status" = 0 ]
    pids_left 3
    [ "${#lines[@]}" = 4 ]
}

@test "a hung worker is gone when the command ends, and so is what it started" {
    make_pid_directory
    NIMBA_STUB_FAULT=all/gfx_find_adapter/hang-with-child \
        run --separate-stderr smi --timeout 3 list
    [ "$status" = 7 ]
    pids_left 2
    within_bounds all_gone
}

@test "workers die with a tool that is killed, and so does what they started" {
    make_pid_directory
    export NIMBA_STUB_ADAPTERS=3 NIMBA_STUB_FAULT=adapters/gfx_find_adapter/hang-with-child
    for signal in KILL TERM INT; do
        # A shell without job control has its background commands ignore SIGINT.
        env --default-signal=INT nimba-smi --library "$STUB" --timeout 600 list 3>&- &
        tool=$!
        within_bounds pids_left 6
        kill -s "$signal" "$tool"
        wait "$tool" || true
        within_bounds all_gone
        rm "$NIMBA_STUB_PIDS"/*
    done
}

@test "a signal ends ps and alloc behind the library's own end, and so does not leave accounting on" {
    make_pid_directory
    export NIMBA_STUB_FAULT=adapters/get_allocation_raw_list/hang
    for signal in HUP=129 INT=130 TERM=143; do
        env --default-signal=HUP,INT,TERM nimba-smi --library "$STUB" --verbose --timeout 600 alloc \
            >"$BATS_TEST_TMPDIR/out" 2>"$BATS_TEST_TMPDIR/err" 3>&- &
        tool=$!
        within_bounds pids_left 1
        kill -s "${signal%=*}" "$tool"
        status=0
        wait "$tool" || status=$?
        [ "$status" = "${signal#*=}" ]
        same "$(cat "$BATS_TEST_TMPDIR/out")" ""
        same "$(sed -n 's/^stub: \(gfx_global\|get_alloc\)/\1/p' "$BATS_TEST_TMPDIR/err" | paste -sd ' ')" \
            "gfx_global_init get_allocation_raw_list gfx_global_init gfx_global_exit"
        within_bounds all_gone
        rm "$NIMBA_STUB_PIDS"/*
    done
}

@test "a tool whose parent ignores SIGCHLD still knows how its workers end" {
    NIMBA_STUB_FAULT=discovery/gfx_find_adapter/abort run --separate-stderr \
        bash -c "trap '' CHLD; exec nimba-smi --library '$STUB' list"
    [ "$status" = 7 ]
    same "$stderr" \
        "nimba-smi: discovery: worker lost in gfx_find_adapter: killed by SIGABRT; $ADVICE"
}
