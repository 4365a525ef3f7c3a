#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# What nimba-sim says and does when it cannot do what it was asked for: a line and a status each.

load nimba-sim.bash

@test "127: a command that is not there" {
    fails_with 127 "nimba-sim: no-such-command: No such file or directory" \
        nimba-sim run -- no-such-command
    fails_with 127 "nimba-sim: ./absent: No such file or directory" nimba-sim run -- ./absent
}

@test "126: a command that cannot be executed" {
    touch data
    fails_with 126 "nimba-sim: ./data: Permission denied" nimba-sim run -- ./data
    fails_with 126 "nimba-sim: data: Permission denied" \
        env "PATH=$BATS_TEST_TMPDIR:$PATH" nimba-sim run -- data
}

@test "2: bad usage" {
    fails_with 2 "nimba-sim: A subcommand is required; see nimba-sim --help" nimba-sim
    fails_with 2 "nimba-sim: COMMAND behind \"--\" is required; see nimba-sim --help" nimba-sim run
    fails_with 2 "nimba-sim: COMMAND behind \"--\" is required; see nimba-sim --help" nimba-sim run --
    fails_with 2 "nimba-sim: The following argument was not expected: true (a command stands behind \"--\"); see nimba-sim --help" \
        nimba-sim run true
    fails_with 2 "nimba-sim: FILE is required; see nimba-sim --help" nimba-sim check
    fails_with 2 "nimba-sim: The following argument was not expected: --wrong; see nimba-sim --help" \
        nimba-sim machines --wrong
    fails_with 2 "nimba-sim: --json takes no value; see nimba-sim --help" nimba-sim machines --json=3
}

@test "3: a machine that there is not" {
    fails_with 3 \
        "nimba-sim: no machine is called 'nope'; \`nimba-sim machines\` lists those that there are" \
        nimba-sim run --machine nope -- touch ran
    [ ! -e ran ]
    fails_with 3 "nimba-sim: ./nope: cannot be read: No such file or directory" \
        nimba-sim run --machine ./nope -- touch ran
    [ ! -e ran ]
}

@test "3: a machine file that makes no sense" {
    printf 'description = "x"\n[[adapter]]\nchip = "qv-m20"\nbus_id = "1"\ncard = 0\n' >bad.toml
    message="bad.toml:4: key 'adapter[0].bus_id': expected \"dddd:bb:dd.f\", got \"1\""
    fails_with 3 "nimba-sim: $message" nimba-sim check bad.toml
    fails_with 3 "nimba-sim: $message" nimba-sim run --machine bad.toml -- touch ran
    [ ! -e ran ]
}

@test "4: an installation without its libraries" {
    make_tree
    printf 'description = "x"\n[[kernel_interface]]\nfile = "libdrm_mv9.so.0.0.0"\n' >mine.toml
    missing="$(realpath tree)/libexec/nimba-sim/kernel_interface.so"
    fails_with 4 "nimba-sim: $missing is missing: the installation is not complete" \
        tree/bin/nimba-sim run --machine mine.toml -- touch ran
    [ ! -e ran ]
}

@test "4: an installation whose library is damaged" {
    make_tree
    mkdir -p tree/libexec/nimba-sim
    echo "not a library" >tree/libexec/nimba-sim/kernel_interface.so
    printf 'description = "x"\n[[kernel_interface]]\nfile = "libdrm_mv9.so.0.0.0"\n' >mine.toml
    fails_with 4 "nimba-sim: a stand-in for a kernel-interface library is damaged" \
        tree/bin/nimba-sim run --machine mine.toml -- touch ran
    [ ! -e ran ]
}

@test "1: output that cannot be written" {
    line="nimba-sim: cannot write to standard output: No space left on device"
    fails_with 1 "$line" bash -c "nimba-sim machines >/dev/full"
    fails_with 1 "$line" bash -c "nimba-sim machines --json >/dev/full"
    fails_with 1 "$line" bash -c "nimba-sim check default >/dev/full"
    fails_with 1 "$line" bash -c "nimba-sim --help >/dev/full"
}

@test "a standard error that cannot be written changes no status" {
    run -3 bash -c 'nimba-sim run -m nope -- true 2>&-'
    [ "$status" = 3 ]
    run -127 bash -c 'nimba-sim run -- nope 2>/dev/full'
    [ "$status" = 127 ]
    run -1 bash -c 'nimba-sim machines >/dev/full 2>/dev/full'
    [ "$status" = 1 ]
}

@test "machines lists the good files beside a bad one, and ends with 3" {
    make_tree
    machines=$(realpath tree)/share/nimba-sim/machines
    printf 'description = "Good"\n' >"$machines/good.toml"
    printf 'description = 1\n' >"$machines/bad.toml"
    run --separate-stderr tree/bin/nimba-sim machines
    [ "$status" = 3 ]
    [ "$output" = "good  Good" ]
    [ "$stderr" = "nimba-sim: $machines/bad.toml:1: key 'description': expected a text, got 1" ]
}

@test "machines --json replaces what is no UTF-8" {
    make_tree
    printf 'description = "Good"\n' >"tree/share/nimba-sim/machines/$(printf 'a\377').toml"
    run --separate-stderr tree/bin/nimba-sim machines --json
    [ "$status" = 0 ]
    [ "$(jq -r '.[0].name' <<< "$output")" = $'a\xEF\xBF\xBD' ]
}

@test "check refuses what is no regular file" {
    fails_with 3 "nimba-sim: /dev/full: is not a regular file" nimba-sim check /dev/full
    fails_with 3 "nimba-sim: ./never: is not a regular file" nimba-sim check ./never
    fails_with 3 "nimba-sim: ./: is not a regular file" nimba-sim check ./
}

@test "messages show control characters instead of sending them" {
    printf 'description = "x"\n"\\u001b[31m" = 1\n' >bad.toml
    run -3 --separate-stderr nimba-sim check bad.toml
    [[ "$stderr" == "nimba-sim: bad.toml:2: key '\\u001b[31m': unknown key, expected "* ]]
}

@test "4: files that cannot be written" {
    with_messages "ulimit -f 0; exec nimba-sim run -- touch ran"
    [ "$status" = 4 ]
    [ "${#lines[@]}" = 1 ]
    [[ "$output" == "nimba-sim: "*": File too large"* ]] || [[ "$output" == *"File too large" ]]
    no_run_directory_is_left
    [ ! -e ran ]
}

@test "4: too few descriptors" {
    [ "${SANITIZED:-0}" = 0 ] || skip "the sanitizers need descriptors for their own checks"
    with_messages "ulimit -n 8; exec nimba-sim run -- touch ran"
    [ "$status" = 4 ]
    [ "${#lines[@]}" = 1 ]
    [[ "$output" == "nimba-sim: "* ]]
    [ ! -e ran ]
}

@test "4: a simulated machine that is killed takes its command along" {
    start 'echo $PPID >said; exec sleep 1000'
    read -r -t 20 server <&9
    kill -s KILL "$server"
    status_of_run
    [ "$status" = 4 ]
    [ "$(cat errors)" = "nimba-sim: the simulated machine was ended by signal 9 (Killed)" ]
    nothing_is_left
}

@test "memory that is full: 4, or the next place" {
    unshare -rm true || skip "needs a mount namespace"
    run unshare -rm sh -c 'mount -t tmpfs -o size=8k t /dev/shm; nimba-sim run -- true
        echo $?; ls -A /dev/shm'
    [ "${#lines[@]}" = 2 ]
    [[ "${lines[0]}" == "nimba-sim: "*": No space left on device" ]]
    [ "${lines[1]}" = 4 ]
    run unshare -rm sh -c 'mount -t tmpfs -o nr_inodes=1 t /dev/shm; mkdir here; export TMPDIR=here
        nimba-sim run -- sh -c "echo \$UMOCKDEV_DIR"; TMPDIR=absent
        nimba-sim run -- sh -c "echo \$UMOCKDEV_DIR"; ls -A here'
    [ "${#lines[@]}" = 2 ]
    [[ "${lines[0]}" == "$PWD/here/nimba-sim."* ]]
    [[ "${lines[1]}" == /tmp/nimba-sim.* ]]
}

@test "4: a TMPDIR too long for sockets" {
    unshare -rm true || skip "needs a mount namespace"
    long=$PWD/a-name-that-makes-the-path-longer-than-any-socket-may-have
    mkdir "$long"
    fails_with 4 "nimba-sim: $long: too long a path for the sockets of a run; set TMPDIR to one of 48 bytes at most" \
        unshare -rm sh -c 'mount -t tmpfs -o nr_inodes=1 t /dev/shm; TMPDIR=$1 exec nimba-sim run -- true' sh "$long"
    [ "$(ls -A "$long")" = "" ]
}
