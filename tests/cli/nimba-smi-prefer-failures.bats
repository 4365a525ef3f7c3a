#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi prefer when something is in its way: no entry of the file is ever lost.

load nimba-smi.bash
load nimba-smi-prefer.bash
load ordinary_user.bash

teardown() {
    if [ -n "${OTHER_HOME-}" ]; then
        chmod -R u+rwx "$OTHER_HOME"
        rm -r "$OTHER_HOME"
    fi
}

teardown_file() {
    drop_ordinary_user_copy
}

# as_user HOME COMMAND...: on the machine, as a user without any right who has this home directory.
as_user() {
    as_ordinary_user env HOME="$1" timeout 60 nimba-sim run --machine two-and-foreign --drivers \
        plain -- "${@:2}"
}

@test "applications that the file cannot carry are refused" {
    keep_entries maze
    cp "$FILE" before
    for application in '/opt/a;b' $'/opt/a\nb' '/opt/a]' '/opt/a ' /opt/ .. '' \
        "/opt/$(printf %064d 0)" "/$(printf %0510d 0)/a"; do
        prefer set "$application" --gpu 0
        [ "$status" = 2 ] || { echo "$application: $status $stderr"; return 1; }
        same "$output" ""
        [[ "$stderr" == *"can have no preference: "* ]]
        diff before "$FILE"
    done
    prefer set '/opt/a = [b' --gpu 0
    [ "$status" = 0 ]
    diff "$FILE" <(entries 1 maze 'a = [b')
}

@test "a HOME that tells of no file is told" {
    unset HOME
    prefer list
    [ "$status" = 1 ]
    same "$output" ""
    same "$stderr" "nimba-smi: HOME is not set, so there is no preference file: set it to your home \
directory"
    cd "$BATS_TEST_TMPDIR"
    HOME=home prefer set /bin/sh --gpu 0
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: HOME is no absolute path (home), so there is no preference file: set \
it to your home directory"
    [ ! -e home/.local ]
    HOME=$PWD/none prefer set /bin/sh --gpu 0
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: cannot make the directory $PWD/none/.local: No such file or directory"
}

@test "what is no regular file is not touched" {
    mkdir -p "$SHARE"
    ln -s /dev/full "$FILE"
    for words in list "set /bin/sh --gpu 0" "remove sh"; do
        prefer $words
        [ "$status" = 1 ]
        same "$stderr" \
            "nimba-smi: $FILE is no regular file, so it is no preference file: move it away"
    done
    [ "$(readlink "$FILE")" = /dev/full ]
}

@test "a file that is closed to the user is named, and stays as it is" {
    # Another user cannot come into the directories of bats.
    OTHER_HOME=$(mktemp -d)
    SHARE=$OTHER_HOME/.local/share
    FILE=$SHARE/wmt_gfx_util.ini
    keep_entries maze
    if [ "$(id -u)" = 0 ]; then
        chown -R 65534 "$OTHER_HOME"
    fi
    chmod 444 "$FILE"
    for words in "set /bin/sh --gpu 0" "remove maze"; do
        run --separate-stderr as_user "$OTHER_HOME" nimba-smi prefer $words
        [ "$status" = 6 ] || { echo "$status $stderr"; return 1; }
        same "$output" ""
        same "$stderr" "nimba-smi: no permission to write $FILE"
    done
    chmod 200 "$FILE"
    for words in list "set /bin/sh --gpu 0" "remove maze"; do
        run --separate-stderr as_user "$OTHER_HOME" nimba-smi prefer $words
        [ "$status" = 6 ]
        same "$stderr" "nimba-smi: no permission to read $FILE"
    done
    chmod 600 "$FILE"
    chmod 555 "$SHARE"
    run --separate-stderr as_user "$OTHER_HOME" nimba-smi prefer remove maze
    [ "$status" = 6 ]
    same "$stderr" "nimba-smi: no permission to write $FILE"
    diff "$FILE" <(entries 1 maze)
}

@test "a full disk loses no entry" {
    unshare -rm true 2>/dev/null || skip "no file system can be mounted here"
    mkdir -p "$SHARE"
    # Four pages: the file takes three.
    run --separate-stderr unshare -rm bash -c "mount -t tmpfs -o size=16k none '$SHARE'
        $(declare -f entry entries)
        entries 1 \$(seq -f a%g 100) >'$FILE'
        cp '$FILE' '$HOME/before'
        timeout 60 nimba-sim run --machine two-and-foreign -- nimba-smi prefer set /bin/sh --gpu 0
        s=\$?; diff '$HOME/before' '$FILE' && ls -A '$SHARE'; exit \$s"
    [ "$status" = 1 ] || { echo "$status $output $stderr"; return 1; }
    same "$output" wmt_gfx_util.ini
    same "$stderr" "nimba-smi: cannot write $FILE: No space left on device"
}

@test "a write of the library that is cut short loses no entry" {
    local -a names
    mapfile -t names < <(seq -f 'a%g' 77)
    keep_entries "${names[@]}"
    # 8 KiB have room for the file as it is, but for no more than 182 bytes.
    same "$(stat -c %s "$FILE")" 8010
    cp "$FILE" before
    run --separate-stderr on two-and-foreign bash -c "trap '' XFSZ; ulimit -f 8
        nimba-smi prefer set /opt/$(printf %063d 0) --gpu 0"
    [ "$status" = 9 ] || { echo "$status $stderr"; return 1; }
    same "$output" ""
    same "$stderr" "$NOT_THERE /opt/$(printf %063d 0) yet
nimba-smi: the library did not write the preferences as it was told to; nothing was changed"
    diff before "$FILE"
}

@test "a worker that dies while the library writes loses no entry" {
    local -a names
    mapfile -t names < <(seq -f 'a%g' 77)
    keep_entries "${names[@]}"
    cp "$FILE" before
    mkdir "$BATS_TEST_TMPDIR/tmp"
    run --separate-stderr on two-and-foreign env TMPDIR="$BATS_TEST_TMPDIR/tmp" bash -c "ulimit -f 8
        nimba-smi prefer set /opt/$(printf %063d 0) --gpu 0"
    [ "$status" = 7 ] || { echo "$status $stderr"; return 1; }
    same "$output" ""
    same "${stderr_lines[1]}" "nimba-smi: preferences: worker lost in set_gpu_preference: killed by \
SIGXFSZ; run with --verbose to see the library's last messages"
    diff before "$FILE"
    same "$(ls -A "$BATS_TEST_TMPDIR/tmp")" ""
}

@test "one that is not let in in time gives up" {
    keep_entries maze
    cp "$FILE" before
    exec 9<"$SHARE"
    flock 9
    prefer remove maze --timeout 3 9<&-
    exec 9<&-
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: $FILE is being changed by another nimba-smi: no answer within 3 s; \
run the command again"
    diff before "$FILE"
}

# with_blocked_driver ARGUMENT...: where no GPU can be found, since a driver does not answer.
with_blocked_driver() {
    run --separate-stderr on two-and-foreign sh -c 'info=$UMOCKDEV_DIR/sys/kernel/debug/dri/0/jw/info
        rm "$info" && mkfifo "$info" && exec nimba-smi prefer "$@" --timeout 5' prefer "$@"
}

@test "without an answer of the driver a file is listed and an entry removed, and none is set" {
    local lost="nimba-smi: discovery: worker lost in gfx_find_adapter at adapter 0000:01:00.0: no \
answer within 5 s; the driver may be blocked: see dmesg, or allow more with --timeout"
    keep_entries maze solver
    with_blocked_driver list
    [ "$status" = 0 ] || { echo "$status $stderr"; return 1; }
    same "$output" "\
APPLICATION  VALUE  GPU              BUS ID        PRESENT
maze         1      Gpu0:Nimba-GT-K  0000:01:00.0  unknown
solver       1      Gpu0:Nimba-GT-K  0000:01:00.0  unknown"
    same "$stderr" "$lost"
    with_blocked_driver set /bin/sh --gpu 0
    [ "$status" = 7 ] || { echo "$status $stderr"; return 1; }
    same "$output" ""
    same "$stderr" "$lost"
    diff "$FILE" <(entries 1 maze solver)
    with_blocked_driver remove maze
    [ "$status" = 0 ] || { echo "$status $stderr"; return 1; }
    diff "$FILE" <(entries 1 solver)
}

@test "a library that lacks preferences is named" {
    keep_entries maze
    run --separate-stderr smi prefer list
    [ "$status" = 4 ]
    same "$output" ""
    [[ "$stderr" == *"lacks the entry point get_gpu_preference: install"* ]]
}

@test "nothing is left in the directory for temporary files" {
    mkdir "$BATS_TEST_TMPDIR/tmp"
    keep_entries maze
    on two-and-foreign env TMPDIR="$BATS_TEST_TMPDIR/tmp" bash -c \
        'nimba-smi prefer set /bin/sh --gpu 0; nimba-smi prefer remove none; nimba-smi prefer remove sh'
    same "$(ls -A "$BATS_TEST_TMPDIR/tmp")" ""
}
