#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi export: drivers that fail, go and come, clients that misbehave, and how it ends.

load nimba-smi.bash
load exporting.bash

@test "a collector that cannot read costs its own figures alone" {
    needs_live_drivers
    exporting steady-adapter '
        nimba-sim fault read fan_speed --directory info
        nimba-sim fault list allocations --error EIO --entries 0
        nimba-smi export --once "${PATIENT[@]}" || echo "status $?"'
    [[ "$output" == *'status 3' ]]
    local failed
    failed=$(sed -n 's/^nimba_collector_success{collector="\([a-z]*\)".* 0$/\1/p' <<<"$output" | xargs)
    [ "$failed" = "sensors memory leaks" ] || { echo "$failed"; echo "$stderr"; return 1; }
    [[ "$output" == *'nimba_temperature_celsius{gpu="0000:01:00.0",slot="0"} 50'* ]]
    [[ "$output" != *'fan="fan_speed"'* ]]
    [[ "$output" != *nimba_allocations* ]]
}

@test "a map of contexts that cannot be read is no map without contexts" {
    needs_live_drivers
    exporting default '
        nimba-sim fault list devices --error EIO --entries 0
        nimba-smi export --once "${PATIENT[@]}" -i 0 | grep -o "^nimba_[ad][el][a-z_]*" | sort -u'
    [[ "$output" == *nimba_allocation_bytes* ]] || { echo "$output"; return 1; }
    [[ "$output" != *nimba_device_contexts* ]]
}

# scrape_with FAULT: the counts of two adapters of a library that misbehaves so.
scrape_with() {
    NIMBA_STUB_ADAPTERS=2 NIMBA_STUB_FAULT=$1 timeout 300 nimba-smi \
        --library "$NIMBA_STUBS/stub_with_power.so" export --once --deadline 60 2>/dev/null |
        grep -E '^nimba_(collector_success|workers_replaced_total|adapters)'
}

@test "a library that aborts or throws in a call costs that collector and a worker" {
    scrape_with 1/gpuinfo_get_temparature_value_int/note >whole
    grep -Fxq 'nimba_collector_success{collector="sensors",gpu="0000:04:00.0",slot="1"} 1' whole
    sed -e '/"sensors".*slot="1"/s/ 1$/ 0/' -e '/^nimba_workers.*slot="1"/s/ 0$/ 1/' whole >expected
    for how in abort throw; do
        scrape_with 1/gpuinfo_get_temparature_value_int/$how >broken
        diff expected broken
    done
    # A worker that discovery loses counts as one of no adapter; what it would tell is absent.
    scrape_with discovery/gfx_find_adapter/abort >undiscovered
    same "$(<undiscovered)" 'nimba_collector_success{collector="library"} 1
nimba_collector_success{collector="discovery"} 0
nimba_workers_replaced_total 1'
}

@test "how many adapters there are is not told any more when discovery fails" {
    exporting no-gpu '
        cp "$(nimba-smi version --json | jq -r .library.path)" library.so
        start_exporter --library ./library.so "${PATIENT[@]}"
        scrape | grep -cE "^nimba_(adapters|library)" || true
        mv library.so elsewhere.so
        scrape | grep -cE "^nimba_(adapters|library)" || true
        mv elsewhere.so library.so
        scrape | grep -cE "^nimba_(adapters|library)" || true
        drop_exporter'
    ended_with 0
    same "$output" "2
0
2"
}

@test "an adapter whose driver is gone at the start comes up beside the others without a restart" {
    needs_live_drivers
    exporting three-adapters '
        nimba-sim fault gone --adapter 1
        start_exporter "${PATIENT[@]}" --without pagetables
        scrape >gone
        nimba-sim fault --clear
        scrape >back
        for file in gone back; do
            sed -n "s/^nimba_adapter_up{gpu=\"\([^\"]*\)\".* /\1 /p" $file
        done
        drop_exporter'
    ended_with 0
    same "$output" "0000:01:00.0 1
0000:02:00.0 0
0001:03:00.0 1
0000:01:00.0 1
0000:02:00.0 1
0001:03:00.0 1"
}

@test "a collector that blocks is given up, its worker is replaced, and it comes last from then on" {
    needs_live_drivers
    exporting steady-adapter '
        start_exporter --deadline "$(shortest_deadline)" --without pagetables
        nimba-sim fault block fan0_input --directory hwmon --ms 600000
        scrape >first
        scrape >second
        nimba-sim fault --clear
        scrape >third
        for file in first second third; do
            echo "$(value_of "nimba_collector_success{collector=\"sensors\"" <$file)" \
                "$(grep -c "^nimba_collector_success.* 1$" $file)" \
                "$(value_of "nimba_workers_replaced_total{" <$file)" \
                "$(value_of nimba_temperature_celsius <$file)"
        done
        drop_exporter
        cat exporter.errors'
    ended_with 0
    # Of library, discovery and eight collectors; the summary tells the temperature, too.
    same "${lines[0]}" "0 9 1 50"
    same "${lines[1]}" "0 9 2 50"
    same "${lines[2]}" "1 10 2 50"
    # Told once, since it lasted.
    [ "$(grep -c 'no answer within' <<<"$output")" = 1 ]
}

@test "a driver that blocks everywhere is given up after two collectors" {
    needs_live_drivers
    exporting steady-adapter '
        start_exporter --deadline "$(shortest_deadline)" --without pagetables
        scrape >/dev/null
        nimba-sim fault block "*" --directory info --ms 600000
        scrape
        drop_exporter'
    ended_with 0
    [[ "$output" == *'nimba_workers_replaced_total{gpu="0000:01:00.0",slot="0"} 2'* ]]
}

@test "a worker that the kernel does not let go is waited for, and none is lost in its place" {
    exporting default '
        start_exporter --deadline "$(shortest_deadline)"
        scrape >/dev/null
        first=$(pgrep -o -P "$exporter")
        '"$BATS_TEST_DIRNAME"'/hold-exit "$first" >held &
        holding=$!
        within 60 test -s held
        kill -s STOP "$first"
        scrape >lost
        scrape >again
        workers | wc -l
        kill "$holding"
        back() { scrape >behind; ! grep -q "collector=\"summary\".* 0$" behind; }
        within 60 back
        workers | wc -l
        for file in lost again behind; do
            grep "^nimba_collector_success.* 0$" $file || true
            value_of "nimba_workers_replaced_total{" <$file
        done
        drop_exporter
        grep -c "killed but still in the driver" exporter.errors'
    ended_with 0
    same "$output" '3
2
nimba_collector_success{collector="summary",gpu="0000:01:00.0",slot="0"} 0
1
nimba_collector_success{collector="summary",gpu="0000:01:00.0",slot="0"} 0
1
1
1'
}

@test "without room for worker processes its own series are there all the same" {
    [ "${SANITIZED:-0}" = 0 ] || skip "the sanitizers need descriptors for their own checks"
    exporting no-gpu '
        exec 3>&- 4>&-
        ulimit -n 6
        nimba-smi export --once || echo "status $?"'
    [[ "$output" == *'nimba_collector_success{collector="library"} 0
nimba_collector_success{collector="discovery"} 0'*'
status 1' ]]
    [ "${#stderr_lines[@]}" = 2 ] || { echo "$stderr"; return 1; }
    [[ "${stderr_lines[0]}" == "nimba-smi: library: cannot "*": Too many open files" ]]
    [[ "${stderr_lines[1]}" == "nimba-smi: discovery: cannot "*": Too many open files" ]]
}

@test "a driver that goes and comes needs no restart" {
    needs_live_drivers
    exporting steady-adapter '
        steady() { grep -vE "^nimba_(frame|leak|workers)"; }
        start_exporter "${PATIENT[@]}"
        scrape | steady >before
        nimba-sim fault gone
        scrape >gone
        scrape | value_of nimba_adapter_up
        nimba-sim fault --clear
        scrape | steady >behind
        diff before behind
        not grep -E "^nimba_(clock|temperature|memory|process|allocation|engine)" gone
        drop_exporter'
    ended_with 0
    same "$output" 0
}

@test "a worker that dies is replaced" {
    exporting default '
        start_exporter "${PATIENT[@]}"
        scrape >/dev/null
        kill -s KILL $(workers)
        scrape >broken
        scrape | grep -c "^nimba_collector_success.* 1$"
        value_of nimba_adapter_up <broken
        drop_exporter'
    ended_with 0
    same "$output" "11
1"
}

@test "scrapes at the same time are all answered in full" {
    NIMBA_SIM_DRIVERS=plain exporting steady-desktop '
        start_exporter "${PATIENT[@]}"
        scrape | grep -v "^nimba_leak\|^nimba_frame" >alone
        for i in 1 2 3 4 5 6; do
            scrape | grep -v "^nimba_leak\|^nimba_frame" >together.$i &
            scrapes[i]=$!
        done
        wait "${scrapes[@]}"
        for i in 1 2 3 4 5 6; do
            diff alone together.$i
        done
        drop_exporter'
    ended_with 0
}

@test "requests that are too long or for something else are refused, and scrapes go on" {
    exporting no-gpu '
        start_exporter "${PATIENT[@]}"
        http "GET /metrics HTTP/1.0
X-Long: $(printf "%9000s" | tr " " x)" | sed -n 1p
        http "GET /etc/passwd HTTP/1.0" | sed -n 1p
        scrape | grep nimba_adapters
        drop_exporter'
    ended_with 0
    [[ "${lines[0]}" == "HTTP/1."?" 400 "* ]] || { echo "$output"; return 1; }
    [[ "${lines[1]}" == "HTTP/1."?" 404 "* ]]
    same "${lines[2]}" "nimba_adapters 0"
}

@test "who sends a body or nothing at all does not keep scrapes from being answered" {
    exporting no-gpu '
        start_exporter "${PATIENT[@]}"
        drip() {
            connect
            printf "GET /metrics HTTP/1.0\r\n%s\r\n\r\n" "$1" >&"$connection"
            head -1 <&"$connection"
            while printf x >&"$connection"; do sleep 0.1; done
        }
        # One for each thread and one more.
        for header in "Content-Length: 1" "Transfer-Encoding: chunked" \
            "Content-Length: 1000000"{,,,,,,,,,,,,,,}; do
            drip "$header" >>refused 2>/dev/null &
        done
        refused() { [ "$(grep -c " 413 " refused)" = 17 ]; }
        within 60 refused
        scrape | grep nimba_adapters
        for i in {1..17}; do
            connect
        done
        scrape | grep nimba_adapters
        connect
        end_exporter'
    ended_with 0
    same "$output" "nimba_adapters 0
nimba_adapters 0"
}

@test "it ends upon a signal with status 0, and nothing is left" {
    exporting default '
        for signal in TERM INT HUP; do
            start_exporter "${PATIENT[@]}"
            scrape >/dev/null
            workers >>left
            kill -s $signal $exporter
            ended+=($exporter)
        done
        for exporter in "${ended[@]}"; do
            wait $exporter
        done
        [ "$(wc -l <left)" -ge 3 ]
        while read -r worker; do
            not kill -0 $worker 2>/dev/null
        done <left'
    ended_with 0
}

@test "its workers end with it when it is killed" {
    exporting default '
        start_exporter "${PATIENT[@]}"
        scrape >/dev/null
        left=$(workers)
        [ -n "$left" ]
        end_exporter KILL 2>/dev/null || true
        all_gone() { for worker in $left; do ! kill -0 $worker 2>/dev/null || return 1; done; }
        within 60 all_gone'
    ended_with 0
}

@test "a signal in the middle of a scrape ends it soon, and half a scrape is not served" {
    needs_live_drivers
    exporting steady-adapter '
        start_exporter "${PATIENT[@]}"
        nimba-sim fault block allocations --ms 600000
        nimba-sim fault block "*" --directory info --ms 600000
        http "GET /metrics HTTP/1.0" >served &
        scraping() { [ -n "$(workers)" ]; }
        within 60 scraping
        end_exporter
        wait
        not grep "^nimba_" served'
    ended_with 0
}
