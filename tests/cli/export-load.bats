#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi export: drivers that are slow, and more who ask than it scrapes for.

load nimba-smi.bash
load exporting.bash

@test "a driver that is slow everywhere costs the collectors behind the budget, which come first next" {
    needs_live_drivers
    exporting steady-adapter '
        start_exporter --deadline 1 --without pagetables
        scrape >/dev/null
        nimba-sim fault block "*" --directory info --ms 20
        nimba-sim fault block "*" --directory hwmon --ms 20
        nimba-sim fault block allocations --ms 400
        nimba-sim fault block devices --ms 400
        all() { http "GET /metrics HTTP/1.0"; }
        all >first
        all >second
        failed() { sed -n "s/^nimba_collector_success{collector=\"\([a-z]*\)\",.* 0$/\1/p" $1; }
        took() { grep -q "^nimba_collector_duration_seconds{collector=\"$2\"," $1; }
        left_out() { for name in $(failed $1); do took $1 $name || echo $name; done; }
        left_out first >left
        [ -s left ]
        # The first of them has a whole budget before it.
        took second "$(sed -n 1p left)"
        drop_exporter
        grep -c "there was no time for all collectors" exporter.errors'
    ended_with 0
    same "$output" 1
}

@test "who asks while a scrape is under way shares the next one" {
    NIMBA_SIM_DRIVERS=plain exporting steady-adapter '
        start_exporter "${PATIENT[@]}"
        scrape >/dev/null
        held=$(workers)
        kill -s STOP $held
        for i in {1..13}; do
            http "GET /metrics HTTP/1.0" | grep "^nimba_scrape_duration_seconds" >answer.$i &
            asking[i]=$!
        done
        connected() {
            [ "$(awk -v end="$(printf :%04X "$port")" "\$2 ~ end && \$4 == \"01\"" /proc/net/tcp |
                wc -l)" -ge 13 ]
        }
        within 60 connected
        kill -s CONT $held
        wait "${asking[@]}"
        drop_exporter
        cat answer.* | wc -l
        sort -u answer.* | wc -l'
    ended_with 0
    same "${lines[0]}" 13
    # Two, or some more if one came late.
    ((lines[1] < 9)) || { echo "$output"; return 1; }
}

@test "fifteen connections that ask nothing do not keep a scrape waiting" {
    exporting no-gpu '
        start_exporter "${PATIENT[@]}"
        scrape >/dev/null
        for i in {1..15}; do
            connect
        done
        begin=$SECONDS
        scrape | grep nimba_adapters
        echo $((SECONDS - begin))
        drop_exporter'
    ended_with 0
    same "${lines[0]}" "nimba_adapters 0"
    # Each of them is given up behind 5 seconds: with fewer threads it would be 10 and more.
    ((lines[1] < 9)) || { echo "$output"; return 1; }
}
