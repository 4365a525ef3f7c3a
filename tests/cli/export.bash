# SPDX-License-Identifier: MIT
# An exporter and who scrapes it, on the machine on which this is read.

# No test waits for a deadline that it does not mean.
# shellcheck disable=SC2034 # the scripts of export.bats use it
PATIENT=(--deadline 60)

# within SECONDS CONDITION...: waits for the condition, and fails when it does not come.
within() {
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS < end)) || return 1
        sleep 0.02
    done
}

# A command that has to fail: "!" would not end the script.
not() {
    if "$@"; then
        return 1
    fi
}

# Where exporters listen, with the brackets of IPv6.
HOST=127.0.0.1

serving() {
    port=$(sed -n 's|^nimba-smi: serving http://.*:\([0-9]*\)/metrics$|\1|p' exporter.errors)
    [ -n "$port" ]
}

# start_exporter OPTION...: sets exporter, its process id, and port. What it says is in
# exporter.errors.
start_exporter() {
    : >exporter.errors
    # The shell lets what is in its background ignore SIGINT.
    env --default-signal=INT nimba-smi export --listen "$HOST:0" "$@" 2>exporter.errors &
    exporter=$!
    within 60 serving
}

# A deadline for collectors that block, in seconds: a whole scrape, with its start, takes a quarter
# of it at this moment.
shortest_deadline() {
    nimba-smi export --once "${PATIENT[@]}" |
        awk '/^nimba_scrape_duration_seconds/ { print ($2 < 0.1) ? 0.4 : 4 * $2 }'
}

# Sets connection, a descriptor.
connect() {
    local host=${HOST#[}
    exec {connection}<>"/dev/tcp/${host%]}/$port"
}

# http REQUEST: the whole answer.
http() {
    local connection
    connect
    # Who is refused may be so before all is said.
    (trap '' PIPE; printf '%s\r\n\r\n' "$1" >&"$connection") 2>/dev/null || true
    tr -d '\r' <&"$connection"
    exec {connection}>&-
}

# The metrics, without the lines that are about the scrape's time.
scrape() {
    http 'GET /metrics HTTP/1.0' | sed '1,/^$/d' | samples
}

samples() {
    grep '^nimba_' | grep -v '_seconds[{ ]'
}

# The value of the series that begins so; nothing when there is none.
value_of() {
    sed -n "s/^$1[^ ]* //p"
}

# Makes an end of the exporter, sooner than it ends itself: its server looks every two seconds.
drop_exporter() {
    end_exporter KILL 2>/dev/null || true
}

# The status with which the exporter ends.
end_exporter() {
    kill -s "${1-TERM}" "$exporter"
    wait "$exporter"
}

workers() {
    pgrep -P "$exporter"
}
