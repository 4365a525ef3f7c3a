#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-sim as a user types it: statuses, messages, signals, and what is left behind.
bats_require_minimum_version 1.5.0

load ordinary_user.bash

: "${NIMBA_BIN:?the directory of the built programs}"
PATH=$NIMBA_BIN:$PATH

teardown_file() {
    drop_ordinary_user_copy
}

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    mkfifo said never
    exec 9<>said # stays open, so that nothing said between two readings is lost
}

# Ends the background run of a test that failed.
teardown() {
    if [ -n "${sim-}" ] && kill -s KILL "$sim" 2>/dev/null; then
        rm -rf "$(dirname "${bed:?}")"
    fi
}

# fails_with STATUS LINE COMMAND...: the command has this status and says this line, no more.
fails_with() {
    local expected_status=$1 line=$2
    shift 2
    run "-$expected_status" --separate-stderr "$@"
    [ "$status" = "$expected_status" ] || { echo "status $status: $stderr"; return 1; }
    [ "$stderr" = "$line" ] || { echo "said: $stderr"; return 1; }
    [ "$output" = "" ]
}

# gone PID: waits until the process is no more, 20 seconds at most.
gone() {
    local tries
    for ((tries = 0; tries < 400; ++tries)); do
        kill -0 "$1" 2>/dev/null || return 0
        sleep 0.05
    done
    echo "process $1 is still there"
    return 1
}

# start SCRIPT: runs the shell script on the default machine in the background. The script's own
# process says who it is before it begins. Sets sim, command and bed: the process ids of nimba-sim and
# of the command, and the directory of the test bed.
start() {
    nimba-sim run -- bash -c 'echo $$ "$UMOCKDEV_DIR" >said; '"$1" >output 2>errors &
    sim=$!
    read -r -t 20 command bed <&9
    [ -d "$bed" ]
}

# The status that the background run ends with.
status_of_run() {
    status=0
    wait "$sim" || status=$?
}

# make_tree: an installation of nimba-sim without its libraries, in the directory tree.
make_tree() {
    mkdir -p tree/bin tree/share/nimba-sim/machines
    cp "$NIMBA_BIN/nimba-sim" tree/bin
}

# Runs the shell script with standard error in the output, where limits of files do not count.
with_messages() {
    run --separate-stderr bash -c "($1) 2>&1 | cat; exit \${PIPESTATUS[0]}"
}

no_run_directory_is_left() {
    # The message names it; other runs may be there at the same time.
    [[ "$output" =~ (/[a-z/]+/nimba-sim\.[A-Za-z0-9]{6})/ ]]
    [ ! -e "${BASH_REMATCH[1]}" ]
}

nothing_is_left() {
    gone "$command"
    [ ! -e "$bed" ]
    [ ! -e "$(dirname "$bed")" ]
}

@test "the command's exit status is that of the run" {
    nimba-sim run -- true
    run nimba-sim run -- sh -c 'exit 7'
    [ "$status" = 7 ]
    run nimba-sim run -- sh -c 'exit 255'
    [ "$status" = 255 ]
}

@test "a command that a signal ended gives 128 plus the signal" {
    run nimba-sim run -- sh -c 'kill -TERM $$'
    [ "$status" = 143 ]
    run nimba-sim run -- sh -c 'kill -KILL $$'
    [ "$status" = 137 ]
}

@test "the command has the standard streams and its arguments as they are" {
    run --separate-stderr bash -c \
        "echo in | nimba-sim run -- sh -c 'cat; echo \"\$1|\$2\"; echo err >&2' sh 'two words' --machine"
    [ "$output" = "$(printf 'in\ntwo words|--machine')" ]
    [ "$stderr" = err ]
}

@test "the command's arguments are nobody else's, whatever they look like" {
    run --separate-stderr nimba-sim run -- printf '<%s>' '[]' '[a,b]' -- -m nope --help ''
    [ "$output" = "<[]><[a,b]><--><-m><nope><--help><>" ]
    [ "$stderr" = "" ]
}

@test "the command gets the signal dispositions, mask and file mode mask of nimba-sim" {
    look='grep -E "^Sig(Blk|Ign|Cgt)" /proc/self/status; umask'
    for flags in "--default-signal" "--ignore-signal=USR1,CHLD --block-signal=TERM"; do
        expected=$(umask 0777; exec env --default-signal $flags sh -c "$look")
        run --separate-stderr env --default-signal $flags \
            sh -c 'umask 0777; exec nimba-sim run -- sh -c "$1"' sh "$look"
        [ "$output" = "$expected" ] || { echo "$output instead of $expected"; return 1; }
        [ "$stderr" = "" ]
    done
}

@test "closed standard descriptors are the null device, not a socket of the machine" {
    bash -c 'nimba-sim run -- bash -c "readlink /proc/\$\$/fd/{0,1,2} >seen; :" <&- >&- 2>&-'
    [ "$(cat seen)" = "$(printf '/dev/null\n/dev/null\n/dev/null')" ]
    nimba-sim run -- ls /dev/dri <&- >&-
}

@test "a script without an interpreter line is run by the shell" {
    printf 'echo "script $1"; exit 8\n' >script
    chmod +x script
    run --separate-stderr nimba-sim run -- ./script 'two words'
    [ "$status" = 8 ]
    [ "$output" = "script two words" ]
    run --separate-stderr env "PATH=$PWD:$PATH" nimba-sim run -- script one
    [ "$output" = "script one" ]
}

@test "without PATH the command is looked for where the system's programs are" {
    sim=$(type -P nimba-sim)
    run --separate-stderr env -u PATH "$sim" run -- sh -c 'echo "$PATH"'
    sim=
    [ "$status" = 0 ]
    [ "$output" = "$(env -u PATH "$(type -P getconf)" PATH):$(realpath "$NIMBA_BIN")" ]
}

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
    missing="$(realpath tree)/libexec/nimba-sim/gfx_get_struct_size/libdrm_mv9.so.0.0.0"
    fails_with 4 "nimba-sim: $missing is missing: the installation is not complete" \
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
    [ "$(jq -r '.[0].name' <<< "$output")" = $'a\uFFFD' ]
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

@test "check says what a good machine file is" {
    printf 'description = "Nothing at all"\n' >mine.toml
    run --separate-stderr nimba-sim check mine.toml
    [ "$status" = 0 ]
    [ "$output" = "mine.toml: Nothing at all" ]
    [ "$stderr" = "" ]
    nimba-sim check default
}

@test "machines lists names and descriptions, also as JSON" {
    run nimba-sim machines
    [ "$status" = 0 ]
    [[ "$output" == *"default               One Nimba K1 with an NVIDIA GPU beside it"* ]]
    names=$(printf '%s\n' "${lines[@]}" | cut -d ' ' -f 1)
    run nimba-sim machines --json
    [ "$status" = 0 ]
    [ "$(jq -r '.[].name' <<< "$output")" = "$names" ]
    [ "$(jq -r '.[] | select(.name == "no-gpu").description' <<< "$output")" = \
        "No graphics device at all" ]
    for file in $(jq -r '.[].file' <<< "$output"); do
        nimba-sim check "$file"
    done
}

@test "help tells the exit statuses, version the version" {
    run nimba-sim --help
    [ "$status" = 0 ]
    for words in "128+N  signal N" "127    " "126    " "2      bad usage" \
        "3      no such machine, or a bad machine file" \
        "4      the simulated machine could not be made"; do
        [[ "$output" == *"$words"* ]]
    done
    run nimba-sim --version
    [ "$status" = 0 ]
    [[ "$output" =~ ^nimba-sim\ [0-9]+\.[0-9]+\.[0-9]+$ ]]
}

@test "the environment is extended, not replaced" {
    # A nimba-sim that is built with the address sanitizer needs that option for itself here.
    sanitizer=verify_asan_link_order=0
    run env LD_PRELOAD=libm.so.6 LD_LIBRARY_PATH=/mine ASAN_OPTIONS=$sanitizer TMPDIR=/tmp \
        nimba-sim run -- bash -c 'echo "$LD_PRELOAD"; echo "$LD_LIBRARY_PATH"; echo "$ASAN_OPTIONS"
                                  echo "$TMPDIR"; echo "${PATH##*:}"'
    [ "${lines[0]}" = "libumockdev-preload.so.0 libm.so.6" ]
    [[ "${lines[1]}" == /*/lib:/mine ]]
    [ "${lines[2]}" = "$sanitizer:verify_asan_link_order=0" ]
    [ "${lines[3]}" = /tmp ]
    [ "${lines[4]}" = "$(realpath "$NIMBA_BIN")" ]
}

@test "nothing is left when the command has ended" {
    start 'exit 3'
    status_of_run
    [ "$status" = 3 ]
    nothing_is_left
}

@test "signals that are sent to nimba-sim reach the command, and nothing is left" {
    for signal in TERM:143 INT:130 HUP:129 QUIT:131 USR1:138 ALRM:142 XCPU:152 IO:157 PWR:158 SYS:159 RTMIN+3:165; do
        # Shells start background jobs with SIGINT and SIGQUIT ignored; the command wants them.
        # No shell is in between: some ignore SIGQUIT.
        echo ready >text
        start 'exec env --default-signal=INT,QUIT tail -n 1 -f text >said'
        read -r -t 20 _ <&9
        kill -s "${signal%:*}" "$sim"
        status_of_run
        [ "$status" = "${signal#*:}" ] || { echo "$signal gave $status"; return 1; }
        nothing_is_left
    done
}

@test "a command may catch a signal and end as it likes" {
    start 'trap "echo caught; exit 9" TERM; echo ready >said; while :; do read -r -t 1 <>never; done'
    read -r -t 20 _ <&9
    kill -s TERM "$sim"
    status_of_run
    [ "$status" = 9 ]
    [ "$(cat output)" = caught ]
    nothing_is_left
}

@test "processes that the command leaves behind are ended" {
    nimba-sim run -- bash -c 'sleep 1000 & echo $! >child
        setsid bash -c "sleep 1000 & echo \$! >grandchild"'
    gone "$(cat child)"
    gone "$(cat grandchild)"
}

@test "processes that nimba-sim was given by its caller live on" {
    bash -c 'sleep 1000 & echo $! >child; exec nimba-sim run -- true'
    kill -s TERM "$(cat child)"
}

@test "the command does not outlive nimba-sim" {
    start 'exec sleep 1000'
    kill -s KILL "$sim"
    gone "$command"
    rm -r "$(dirname "$bed")"
}

@test "permissions that the command takes away do not keep anything" {
    start 'mkdir "$UMOCKDEV_DIR/sys/x"; touch "$UMOCKDEV_DIR/sys/x/y"; chmod 0 "$UMOCKDEV_DIR/sys/x"'
    status_of_run
    [ "$status" = 0 ]
    nothing_is_left
}

@test "an ordinary user can run machines, unreadable ones too" {
    run as_ordinary_user nimba-sim run -- cat /sys/kernel/debug/dri/0/jw/info
    [ "$status" = 0 ]
    [ "$output" = "VA=1" ]
    run as_ordinary_user nimba-sim run --machine unreadable -- bash -c 'echo "$UMOCKDEV_DIR"
        cat /sys/kernel/debug/dri/0/jw/info
        ls /sys/bus/pci/devices/0000:01:00.0/jw_info'
    [ "$status" = 2 ]
    [ "${lines[1]}" = "cat: /sys/kernel/debug/dri/0/jw/info: Permission denied" ]
    [ "${lines[2]}" = \
        "ls: cannot open directory '/sys/bus/pci/devices/0000:01:00.0/jw_info': Permission denied" ]
    [ ! -e "$(dirname "${lines[0]}")" ]
}

@test "runs at the same time have their own machines" {
    nimba-sim run --machine two-qv -- bash -c 'echo up >said; ls /dev/dri' >first &
    sim=$!
    nimba-sim run --machine no-gpu -- bash -c 'read -r -t 20 <&9; ls /dev/dri' >second
    wait "$sim"
    [ "$(tr '\n' ' ' <first)" = "card0 card1 renderD128 renderD129 " ]
    [ "$(cat second)" = "" ]
}

@test "a machine inside a machine is the inner one" {
    run nimba-sim run -- nimba-sim run --machine no-gpu -- ls -A /dev/dri
    [ "$status" = 0 ]
    [ "$output" = "" ]
    run nimba-sim run --machine no-gpu -- nimba-sim run -- ls -A /dev/dri
    [ "$status" = 0 ]
    [ "$(tr '\n' ' ' <<< "$output")" = "card0 card1 renderD128 renderD129 " ]
}
