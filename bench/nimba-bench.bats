#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# NIMBA_BENCH is the program. How long anything takes is no matter here.
bats_require_minimum_version 1.5.0

# One small run, which the tests of the results look at.
setup_file() {
    local directory
    directory=$(mktemp -d /dev/shm/nb.XXXXXX)
    "$NIMBA_BENCH" --directory "$directory" --sizes 100,400 --lines 6000 --repetitions 1 \
        >"$BATS_FILE_TMPDIR/output" 2>"$BATS_FILE_TMPDIR/stderr" || cat "$BATS_FILE_TMPDIR/stderr"
    ls -A "$directory" >"$BATS_FILE_TMPDIR/left"
    rm -rf "$directory"
}

setup() {
    # In memory, and with a short path, since that of a tree must fit the library's global.
    directory=$(mktemp -d /dev/shm/nb.XXXXXX)
}

teardown() {
    rm -rf "$directory"
}

bench() {
    run --separate-stderr "$NIMBA_BENCH" --directory "$directory" "$@"
}

# has_row NAME COUNT [REST]: the table has exactly one row of that name and number, whose cells
# behind them begin with the rest.
has_row() {
    local rows
    rows=$(grep -cE "^\| $1 +\| +$2 \|${3:-}" "$BATS_FILE_TMPDIR/output") || true
    [ "$rows" -eq 1 ] || {
        echo "$rows rows for $1, $2"
        return 1
    }
}

@test "a run measures every query over every tree" {
    for size in 100 400; do
        has_row "bare: readdir, openat, read, close" "$size"
        has_row "plain: fopen, getline, compares, strtol" "$size"
        has_row "get_current_allocation_data" "$size"
        has_row "get_allocation_raw_list, page 0" "$size"
        has_row "get_allocation_raw_list, a later page" "$size"
        has_row "memcpy of 1,840 bytes" "$size"
        has_row "get_device_allocation_summary" "$size"
        has_row "get_device_allocation_summary_ext1" "$size"
        has_row "get_memleak_info" "$size"
        has_row "get_memleak_info less the reading" "$size"
        has_row "compare_memleak_list" "$size"
        has_row "plain: merge and grouping by search" "$size"
    done
}

@test "a run measures how the leak detector grows up to the largest tree" {
    for condition in "unchanged" "all replaced" "all of one shape"; do
        for size in 100 200 400; do
            has_row "get_memleak_info, $condition" "$size"
            has_row "get_memleak_info less the reading, $condition" "$size"
            has_row "compare_memleak_list, $condition" "$size"
        done
    done
}

@test "a run counts the memory of the queries over the largest tree" {
    has_row "peak memory of get_current_allocation_data" 400
    has_row "peak memory of get_allocation_raw_list, page 0" 400
    has_row "peak memory of get_memleak_info" 400
}

# The one device has 2, 20 and 400 page-table lines by level and 6,000 of sub-tables; half of it has
# 1, 10, 200 and 3,000, and each of the fifty 1, 2, 40 and 600.
@test "a run measures every way to read page tables, of one device and of fifty" {
    local devices count
    while IFS=: read -r devices count; do
        has_row "bare: read, memchr, bytes of the records, $devices" "$count"
        has_row "plain: fgets, find, stoi, push_back, $devices" "$count"
        has_row "plain, the record reused, $devices" "$count"
        has_row "get_pagetable_info, $devices" "$count"
        has_row "get_pagetable_info, the record reused, $devices" "$count"
        has_row "get_PageTable_data less get_AppName_info, $devices" "$count"
        has_row "get_PageTable_data with the system's ps, $devices" "$count"
    done <<<$'1 device:6,422\n50 devices:32,150'
}

@test "a run measures how reading page tables grows to twice the lines" {
    has_row "get_pagetable_info, half the lines" 3,211
    has_row "get_pagetable_info, twice the lines" 6,422
    has_row "get_PageTable_data less get_AppName_info, half the lines" 3,211
    has_row "get_PageTable_data less get_AppName_info, twice the lines" 6,422
}

@test "a run measures the copying out of page tables, and what it is held against" {
    has_row "memcpy of 48 bytes a record" 19,266
    has_row "plain: the addresses' digits by a table" 19,266
    has_row "get_pagetable_data with a buffer" 19,266
}

@test "a run counts the memory of a collection, and its large blocks" {
    has_row "peak memory of get_PageTable_data, 1 device" 6,422
    has_row "peak memory of get_PageTable_data, 50 devices" 32,150
    # Those of the working record; of a device of this size no array has 1 MiB.
    has_row "blocks from 1 MiB of get_PageTable_data, 1 device" 6,422 " +3 \| +\| 3 arrays "
    has_row "blocks from 1 MiB of get_PageTable_data, 50 devices" 32,150 " +3 \| +\| 3 arrays "
}

@test "standard output is the result alone: the machine, two tables and one sentence" {
    mapfile -t lines <"$BATS_FILE_TMPDIR/output"
    [[ ${lines[0]} == "- Processor: "* ]]
    [[ ${lines[1]} == "- Kernel: Linux "* ]]
    [[ ${lines[2]} == "- Compiler: "* ]]
    [ "${lines[3]}" = "- Repetitions: 1, more of trees up to 10,000 allocations or lines; medians shown" ]
    [[ ${lines[-1]} =~ ^[0-9]+\ of\ 39\ limits\ are\ met\.$ ]]
    [ "$(grep -cv -e '^|' -e '^$' "$BATS_FILE_TMPDIR/output")" -eq 5 ]
    [ "$(grep -c '^| measured ' "$BATS_FILE_TMPDIR/output")" -eq 2 ]
}

@test "a run leaves nothing behind" {
    [ -s "$BATS_FILE_TMPDIR/output" ]
    [ ! -s "$BATS_FILE_TMPDIR/left" ]
}

# Starts a run that would take minutes and waits until it makes its first tree. A background process
# of this shell would ignore SIGINT.
start_long_run() {
    env --default-signal=HUP,INT,TERM \
        "$NIMBA_BENCH" --directory "$directory" --sizes 1000000 \
        >/dev/null 2>"$BATS_TEST_TMPDIR/stderr" 3>&- &
    bench_pid=$!
    for _ in $(seq 500); do
        ! compgen -G "$directory/nimba-bench.*/a/allocations/1" >/dev/null || return 0
        sleep 0.02
    done
    echo "the run made no tree"
    return 1
}

# ends_clean SIGNAL: a run that is sent the signal ends by it and leaves nothing behind.
ends_clean() {
    local status=0
    start_long_run
    kill -s "$1" "$bench_pid"
    wait "$bench_pid" || status=$?
    [ "$status" -eq $((128 + $(kill -l "$1"))) ]
    [ -z "$(ls -A "$directory")" ]
}

@test "a run that is interrupted leaves nothing behind" {
    ends_clean INT
}

@test "a run that is terminated leaves nothing behind" {
    ends_clean TERM
}

@test "a run whose terminal goes away leaves nothing behind" {
    ends_clean HUP
}

@test "a run that crashes says so and leaves nothing behind" {
    local status=0
    start_long_run
    kill -s KILL "$(pgrep -P "$bench_pid")"
    wait "$bench_pid" || status=$?
    [ "$status" -eq 1 ]
    grep -qx 'nimba-bench: ended by "Killed"' "$BATS_TEST_TMPDIR/stderr"
    [ -z "$(ls -A "$directory")" ]
}

@test "a directory that cannot be used is an error before anything is measured" {
    bench --directory "$directory/none"
    [ "$status" -eq 1 ]
    [ -z "$output" ]
    [[ ${stderr_lines[0]} == "nimba-bench: $directory/none/nimba-bench."*": No such file or directory" ]]
}

@test "a directory whose path is too long for the library is an error" {
    mkdir "$directory/a-name-that-is-rather-long"
    bench --directory "$directory/a-name-that-is-rather-long"
    [ "$status" -eq 1 ]
    [ -z "$output" ]
    [[ $stderr == *"has more than 49 characters"* ]]
    [ -z "$(ls -A "$directory/a-name-that-is-rather-long")" ]
}

@test "a wrong command line is told with the usage and status 2" {
    local -A message=(
        ["--fast"]="unknown option --fast"
        ["--sizes"]="--sizes needs a value"
        ["--sizes 99"]='"99" is not a number from 100 to 1000000'
        ["--sizes 1000,"]='"" is not a number from 100 to 1000000'
        ["--sizes 1e3"]='"1e3" is not a number from 100 to 1000000'
        ["--lines 999"]='"999" is not a number from 1000 to 300000'
        ["--lines 300001"]='"300001" is not a number from 1000 to 300000'
        ["--repetitions 0"]='"0" is not a number from 1 to 1000'
        ["extra"]="unexpected argument extra"
    )
    local line
    for line in "${!message[@]}"; do
        # shellcheck disable=SC2086 # words of a command line
        run --separate-stderr "$NIMBA_BENCH" $line
        [ "$status" -eq 2 ]
        [ -z "$output" ]
        [ "${stderr_lines[0]}" = "nimba-bench: ${message[$line]}" ]
        [[ ${stderr_lines[1]} == "usage: nimba-bench "* ]]
    done
}

@test "--help prints the usage on standard output" {
    run --separate-stderr "$NIMBA_BENCH" --help
    [ "$status" -eq 0 ]
    [[ ${lines[0]} == "usage: nimba-bench "* ]]
}
