#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi export: its three faces and what is in them.

load nimba-smi.bash
load ordinary_user.bash
load exporting.bash

teardown_file() {
    drop_ordinary_user_copy
}

@test "all three faces have the same samples" {
    NIMBA_SIM_DRIVERS=plain exporting steady-desktop '
        nimba-smi export --once "${PATIENT[@]}" | samples >once
        nimba-smi export --textfile file.prom "${PATIENT[@]}"
        samples <file.prom >file
        start_exporter "${PATIENT[@]}"
        scrape >served
        drop_exporter
        nimba-smi export --once --json "${PATIENT[@]}" >document
        wc -l <once
        diff once file
        diff once served
        [ "$(stat -c %a file.prom)" = "$(printf %o $((0666 & ~$(umask))))" ]'
    ended_with 0
    ((output > 70)) || { echo "$output"; return 1; }
    # The document has them, too.
    python3 - once document <<'PY'
import json, re, sys
lines = open(sys.argv[1]).read().splitlines()
texts = {}
for line in lines:
    name, labels, value = re.fullmatch(r'(\w+)(?:{(.*)})? (\S+)', line).groups()
    texts[name, frozenset(re.findall(r'(\w+)="([^"]*)"', labels or ''))] = float(value)
document = json.load(open(sys.argv[2]))
assert document['schema'] == 'nimba-smi.export.1', document
samples = {(metric['name'], frozenset(sample['labels'].items())): sample['value']
           for metric in document['metrics'] for sample in metric['samples']
           if not metric['name'].endswith('_seconds')}
assert samples == texts, samples.items() ^ texts.items()
PY
}

@test "figures are those of the machine" {
    needs_live_drivers
    exporting steady-adapter 'nimba-smi export --once "${PATIENT[@]}"'
    ended_with 0
    local -a expected=(
        'nimba_adapters 1'
        'nimba_adapter_up{gpu="0000:01:00.0",slot="0"} 1'
        'nimba_clock_driver_units{gpu="0000:01:00.0",slot="0",clock="video"} 350'
        'nimba_clock_driver_units{gpu="0000:01:00.0",slot="0",clock="core"} 600'
        'nimba_temperature_celsius{gpu="0000:01:00.0",slot="0"} 50'
        'nimba_fan_driver_units{gpu="0000:01:00.0",slot="0",fan="fan_speed"} 1600'
        'nimba_dvfs_setting{gpu="0000:01:00.0",slot="0",setting="gfx_high_threshold"} 80'
        'nimba_memory_total_bytes{gpu="0000:01:00.0",slot="0"} 7514000000'
        'nimba_engine_busy_ratio{gpu="0000:01:00.0",slot="0",engine="3d"} 0.45'
        'nimba_bandwidth_word{gpu="0000:01:00.0",slot="0",word="0"} 6000'
        'nimba_allocations{gpu="0000:01:00.0",slot="0",segment="0"} 0'
        'nimba_page_table_address_spaces{gpu="0000:01:00.0",slot="0"} 0')
    local line
    for line in "${expected[@]}"; do
        grep -Fxq "$line" <<<"$output" || { echo "no $line in $output"; return 1; }
    done
    # The first scrape has nothing to compare with.
    [[ "$output" != *nimba_frame_rate* ]]
}

@test "rates are those since the scrape before, and leaks are counted from scrape to scrape" {
    needs_live_drivers
    exporting leaking '
        start_exporter "${PATIENT[@]}"
        scrape >first
        new_frame() { scrape >second; grep -q "^nimba_frame_rate_hertz.*kind=\"flip\"" second; }
        within 60 new_frame
        for file in first second; do
            sort -n < <(value_of nimba_leak_group_oldest_scrapes <$file) | tail -1
        done
        drop_exporter'
    ended_with 0
    [ "${lines[0]}" = 1 ] || { echo "$output"; return 1; }
    ((lines[1] > 1))
}

@test "what the driver does not give is absent, and an adapter that gives nothing is down" {
    exporting bare-adapter 'nimba-smi export --once "${PATIENT[@]}"'
    [ "$status" = 3 ]
    [[ "$output" == *'nimba_adapter_up{gpu="0000:01:00.0",slot="0"} 0'* ]]
    [[ "$output" == *'nimba_collector_success{collector="memory",gpu="0000:01:00.0",slot="0"} 0'* ]]
    # But a frame rate, which the library may tell without the driver.
    ! grep -E '^nimba_(clock|temperature|fan|memory|allocation|process|leak|page|frames|engine)' \
        <<<"$output"
}

@test "without an adapter, and without a library, the exporter's own series are there" {
    exporting no-gpu 'nimba-smi export --once "${PATIENT[@]}" | samples'
    [[ "$output" == *'nimba_adapters 0'* ]]
    [[ "$output" != *'gpu='* ]]
    exporting no-gpu 'nimba-smi --library /nowhere.so export --once'
    [ "$status" = 4 ]
    [[ "$output" == *'nimba_collector_success{collector="library"} 0'* ]]
    [[ "$output" != *nimba_adapters* ]]
    [[ "$output" != *nimba_library_info* ]]
    [ "${#stderr_lines[@]}" = 1 ]
    exporting no-gpu '
        start_exporter --library /nowhere.so
        scrape
        drop_exporter'
    ended_with 0
    [[ "$output" == *'nimba_collector_success{collector="discovery"} 0'* ]]
}

@test "an address that cannot be had is one line and a status" {
    exporting no-gpu '
        start_exporter
        nimba-smi export --listen "127.0.0.1:$port" || echo "status $?"
        drop_exporter'
    same "$output" "status 1"
    [[ "$stderr" == "nimba-smi: cannot listen on 127.0.0.1:"*": Address already in use; choose another with --listen" ]]
    # Somebody else may have the one that it has of itself.
    exporting no-gpu '
        nimba-smi export 2>errors &
        exporter=$!
        within 60 grep " on 127.0.0.1:9835: Address already in use\|serving http://127.0.0.1:9835/" errors
        drop_exporter'
    ended_with 0
    run --separate-stderr nimba-smi export --listen localhost
    [ "$status" = 2 ]
    same "$stderr" 'nimba-smi: --listen: expected a numeric address and a port, such as '\
'127.0.0.1:9835 or [::1]:9835, got "localhost"; see nimba-smi --help'
    run --separate-stderr nimba-smi export --once --interval 1
    [ "$status" = 2 ]
}

@test "an address of IPv6 is one in brackets" {
    exporting no-gpu '
        [ -s /proc/net/if_inet6 ] || { echo "nimba_adapters 0"; exit; }
        HOST=[::1]
        start_exporter "${PATIENT[@]}"
        grep -q "http://\[::1\]:$port/metrics" exporter.errors
        scrape | grep nimba_adapters
        drop_exporter'
    ended_with 0
    same "$output" "nimba_adapters 0"
    # An address that no machine has, as ::1 on one without IPv6.
    exporting no-gpu 'nimba-smi export --listen "[2001:db8::1]:0" || echo "status $?"'
    same "$output" "status 1"
    [[ "$stderr" == "nimba-smi: cannot listen on [2001:db8::1]:0: "*"; no interface of this machine has it" ||
        "$stderr" == "nimba-smi: cannot listen on [2001:db8::1]:0: "*"; this machine has no IPv6" ]]
}

@test "a file that cannot be written is one line and a status, and leaves nothing" {
    exporting no-gpu '
        mkdir empty
        cd empty
        (ulimit -f 1; trap "" XFSZ
         nimba-smi export --textfile a.prom "${PATIENT[@]}" || echo "status $?") 2>&1 | cat
        ls -A'
    # The first line is about the machine.
    [ "${#lines[@]}" = 3 ] || { echo "$output"; return 1; }
    same "${lines[1]}" "nimba-smi: cannot write a.prom: File too large"
    same "${lines[2]}" "status 1"
    exporting no-gpu 'nimba-smi export --textfile /dev/full || echo "status $?"'
    same "$output" "status 1"
    [[ "$stderr" == *"nimba-smi: cannot write /dev/full: No space left on device"* ]]
    exporting no-gpu 'nimba-smi export --textfile nowhere/a.prom || echo "status $?"'
    same "$output" "status 1"
    [[ "$stderr" == *"nimba-smi: cannot write nowhere/a.prom: No such file or directory"* ]]
}

@test "a file is written again and again, and tried again, until a signal" {
    exporting default '
        mkdir directory
        nimba-smi export --textfile directory/a.prom --interval 0.05 "${PATIENT[@]}" 2>errors &
        exporter=$!
        within 60 test -s directory/a.prom
        mv directory elsewhere
        cannot() { grep -q "cannot write directory/a.prom: No such file" errors; }
        within 60 cannot
        mkdir directory
        within 60 test -s directory/a.prom
        end_exporter
        grep -c cannot errors
        ls -A directory | grep -c "^[.]" || true'
    ended_with 0
    same "$output" "1
0"
}

@test "a file is as it was when a signal comes in the middle of its scrape" {
    needs_live_drivers
    exporting steady-adapter '
        mkdir directory
        echo before >directory/a.prom
        nimba-sim fault block "*" --directory info --ms 600000
        nimba-smi export --textfile directory/a.prom "${PATIENT[@]}" &
        exporter=$!
        scraping() { [ -n "$(workers)" ]; }
        within 60 scraping
        end_exporter || echo "status $?"
        ls -A directory
        cat directory/a.prom'
    ended_with 0
    same "$output" "status 143
a.prom
before"
}

@test "an ordinary user gets what the driver shows to all" {
    run --separate-stderr as_ordinary_user timeout 300 nimba-sim run --machine unreadable -- \
        nimba-smi export --once --deadline 60
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    [[ "$output" == *"nimba_adapter_info"* ]]
    [[ "$output" == *' 0'* ]]
    grep -q '^nimba_collector_success.* 0$' <<<"$output"
    run --separate-stderr as_ordinary_user timeout 300 nimba-sim run --machine default -- \
        nimba-smi export --textfile /nimba.prom --deadline 60
    [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
    [[ "$stderr" == *"cannot write /nimba.prom: Permission denied"* ]]
}

@test "the options of the systemd unit leave out what its user may not read, and nothing fails" {
    local unit=$BATS_TEST_DIRNAME/../../packaging/systemd/nimba-exporter.service
    local NIMBA_EXPORT_OPTIONS options
    NIMBA_EXPORT_OPTIONS=$(sed -n 's/^Environment=NIMBA_EXPORT_OPTIONS=//p' "$unit")
    options=$(eval "echo $(sed -n 's/^ExecStart=nimba-smi export --listen [^ ]* //p' "$unit")")
    [ -n "$options" ]
    local machine=$BATS_FILE_TMPDIR/machine.toml
    cat >"$machine" <<'MACHINE'
description = "A Nimba K5 and a QV M30 whose debugfs only root can read"

[[adapter]]
chip = "nimba-k5"
bus_id = "0000:01:00.0"
card = 0
unreadable = ["debug"]

[[adapter]]
chip = "qv-m30"
bus_id = "0000:02:00.0"
card = 1
unreadable = ["debug"]
MACHINE
    cp "$BATS_TEST_DIRNAME/export.bash" "$BATS_FILE_TMPDIR"
    chmod a+rx "$BATS_RUN_TMPDIR" "$BATS_FILE_TMPDIR" 2>/dev/null || true
    chmod a+r "$machine" "$BATS_FILE_TMPDIR/export.bash"
    run --separate-stderr as_ordinary_user timeout 300 nimba-sim run --machine "$machine" \
        --drivers plain -- bash -euo pipefail -c "source '$BATS_FILE_TMPDIR/export.bash'
            find \"\$UMOCKDEV_DIR/sys/devices\" -name enable_usage -exec chmod 444 {} +
            cd \"\$(mktemp -d)\"
            start_exporter --deadline 60 $options
            scrape >first
            scrape
            drop_exporter
            grep permission exporter.errors >&2
            rm -r \"\$PWD\""
    ended_with 0
    same "$(grep '^nimba_collector_success' <<<"$output")" \
'nimba_collector_success{collector="library"} 1
nimba_collector_success{collector="discovery"} 1
nimba_collector_success{collector="summary",gpu="0000:01:00.0",slot="0"} 1
nimba_collector_success{collector="clocks",gpu="0000:01:00.0",slot="0"} 1
nimba_collector_success{collector="settings",gpu="0000:01:00.0",slot="0"} 1
nimba_collector_success{collector="segments",gpu="0000:01:00.0",slot="0"} 1
nimba_collector_success{collector="sensors",gpu="0000:01:00.0",slot="0"} 1
nimba_collector_success{collector="counters",gpu="0000:01:00.0",slot="0"} 1
nimba_collector_success{collector="summary",gpu="0000:02:00.0",slot="1"} 1
nimba_collector_success{collector="clocks",gpu="0000:02:00.0",slot="1"} 1
nimba_collector_success{collector="settings",gpu="0000:02:00.0",slot="1"} 1
nimba_collector_success{collector="sensors",gpu="0000:02:00.0",slot="1"} 1
nimba_collector_success{collector="counters",gpu="0000:02:00.0",slot="1"} 1'
    [[ "$output" != *nimba_engine_busy* ]]
    # Each is told once.
    [ -n "$stderr" ]
    same "$(sort <<<"$stderr")" "$(sort -u <<<"$stderr")"
}

@test "processes are named up to the limit, or not at all" {
    exporting fifty-contexts '
        nimba-smi export --once --max-processes 3 --without pagetables "${PATIENT[@]}" -i 0 |
            grep "^nimba_process_allocations"
        echo
        nimba-smi export --once --no-processes "${PATIENT[@]}" | grep -E "process=|pid=" || true'
    ended_with 0
    [ "${#lines[@]}" = 4 ] || { echo "$output"; return 1; }
    [[ "${lines[3]}" == 'nimba_process_allocations{gpu="0000:01:00.0",slot="0",process="other"} '* ]]
}

@test "a process has the same name in all series" {
    exporting page-tables '
        nimba-smi export --once "${PATIENT[@]}" | grep -o "pid=\"[^,]*,process=\"[^,}]*" | sort -u'
    ended_with 0
    same "$output" 'pid="4100001",process="/usr/bin/viewer"
pid="4100002",process="/usr/games/maze"'
}

@test "collectors that are left out have no series" {
    exporting default '
        nimba-smi export --once --without leaks,memory,pagetables "${PATIENT[@]}" |
            grep -E "nimba_(leak|process|page)|collector=\"(leaks|memory|pagetables)\"" || true'
    ended_with 0
    same "$output" ""
}

@test "memory and descriptors stay as they are over many scrapes" {
    needs_live_drivers
    [ "$SANITIZED" = 0 ] || skip "a sanitizer keeps what is freed"
    run "$BATS_TEST_DIRNAME/../../scripts/export-soak" --scrapes 204 --programs "$NIMBA_BIN"
    ended_with 0
}

@test "the systemd unit is one, and a hardened one" {
    command -v systemd-analyze >/dev/null || skip "needs systemd-analyze"
    sed "s|^ExecStart=nimba-smi|ExecStart=$NIMBA_BIN/nimba-smi|" \
        "$BATS_TEST_DIRNAME/../../packaging/systemd/nimba-exporter.service" >nimba-exporter.service
    run systemd-analyze verify --man=no ./nimba-exporter.service
    ended_with 0
    same "$output" ""
    run systemd-analyze security --offline=yes --threshold=20 ./nimba-exporter.service
    ended_with 0
}
