#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi prefer on simulated machines.

load nimba-smi.bash
load nimba-smi-prefer.bash

@test "a list without a file is empty, and no fault" {
    prefer list
    [ "$status" = 0 ]
    same "$output" ""
    same "$stderr" "nimba-smi: $FILE is not there; nimba-smi prefer set adds a preference"
    [ ! -e "$HOME/.local" ]
    prefer list --json
    [ "$status" = 0 ]
    same "$(jq -c '[.schema, .file, .preferences]' <<<"$output")" \
        "[\"nimba-smi.prefer.1\",\"$FILE\",[]]"
    keep_entries
    prefer list
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: $FILE holds no preference; nimba-smi prefer set adds a preference"
}

@test "set makes the file and its directory, and shows what the file holds" {
    prefer set /opt/maze --gpu 0
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" "$NOT_THERE /opt/maze yet
nimba-smi: made the directory $SHARE"
    same "$output" "\
APPLICATION  VALUE  GPU              BUS ID        PRESENT
maze         1      Gpu0:Nimba-GT-K  0000:01:00.0  yes"
    diff "$FILE" <(entries 1 maze)
    same "$(stat -c %a "$HOME/.local" "$SHARE")" "700
700"
    prefer set /opt/maze --gpu 0 --value -7
    [ "$status" = 0 ]
    same "$stderr" "$NOT_THERE /opt/maze yet"
    diff "$FILE" <(entries -7 maze)
    same "$(ls -A "$SHARE")" wmt_gfx_util.ini
}

@test "set takes an application as a command, a path or a name alone" {
    mkdir "$HOME/bin"
    install -m 755 /dev/null "$HOME/bin/maze"
    PATH=$HOME/bin:$PATH prefer set maze --gpu 02:00.0
    [ "$status" = 0 ]
    prefer set nowhere --gpu 1
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: there is no nowhere in PATH: its preference has the name alone"
    cd "$HOME/bin"
    cp maze solver
    prefer set ../bin/solver --gpu 1 --json
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$(jq -c '.preferences[]' <<<"$output")" "\
{\"application\":\"maze\",\"path\":\"$HOME/bin/maze\",\"value\":1,\"gpu\":{\"name\":\
\"Gpu1:NimbaK5\",\"bus_id\":\"0000:02:00.0\",\"present\":true}}
{\"application\":\"nowhere\",\"path\":\"nowhere\",\"value\":1,\"gpu\":{\"name\":\
\"Gpu1:NimbaK5\",\"bus_id\":\"0000:02:00.0\",\"present\":true}}
{\"application\":\"solver\",\"path\":\"$HOME/bin/solver\",\"value\":1,\"gpu\":{\"name\":\
\"Gpu1:NimbaK5\",\"bus_id\":\"0000:02:00.0\",\"present\":true}}"
}

@test "set takes the GPU of another vendor by its bus id alone" {
    prefer set /bin/sh --gpu 0000:03:00.0
    [ "$status" = 0 ]
    same "$output" "\
APPLICATION  VALUE  GPU              BUS ID        PRESENT
sh           1      Gpu2:Nvidia-GPU  0000:03:00.0  yes"
    prefer set /bin/sh --gpu 2
    [ "$status" = 3 ]
    same "$output" ""
    same "$stderr" \
        "nimba-smi: there is no adapter in slot 2; nimba-smi list shows those that are there"
    prefer set /bin/sh --gpu 09:00.0
    [ "$status" = 3 ]
}

@test "set without any GPU changes nothing" {
    run --separate-stderr on no-gpu nimba-smi prefer set /bin/sh --gpu 0
    [ "$status" = 3 ]
    [ ! -e "$HOME/.local" ]
}

@test "list and remove need no GPU, and list tells which are present" {
    keep_entries maze solver
    entry other 5 | sed 's/:01:/:175:/; s/^PreferGpuName.*/PreferGpuName =/' >>"$FILE"
    run --separate-stderr on no-gpu nimba-smi prefer list
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    same "$stderr" ""
    same "$output" "\
APPLICATION  VALUE  GPU              BUS ID        PRESENT
maze         1      Gpu0:Nimba-GT-K  0000:01:00.0  no
solver       1      Gpu0:Nimba-GT-K  0000:01:00.0  no
other        5      -                0000:af:00.0  no"
    prefer list --csv
    same "$output" "\
application,path,value,gpu_name,bus_id,present
maze,/opt/maze,1,Gpu0:Nimba-GT-K,0000:01:00.0,yes
solver,/opt/solver,1,Gpu0:Nimba-GT-K,0000:01:00.0,yes
other,/opt/other,5,,0000:af:00.0,no"
    run --separate-stderr on no-gpu nimba-smi prefer remove /elsewhere/maze
    [ "$status" = 0 ]
    same "$stderr" ""
    same "$output" "\
APPLICATION  VALUE  GPU              BUS ID        PRESENT
solver       1      Gpu0:Nimba-GT-K  0000:01:00.0  no
other        5      -                0000:af:00.0  no"
    run --separate-stderr on no-gpu nimba-smi prefer remove other
    run --separate-stderr on no-gpu nimba-smi prefer remove solver
    [ "$status" = 0 ]
    same "$output" ""
    diff "$FILE" <(entries 1)
}

@test "in a file of a hundred, no other entry changes" {
    local -a names
    mapfile -t names < <(seq -f 'a%g' 100)
    for name in a1 a50 a100; do
        keep_entries "${names[@]}"
        prefer set "/opt/$name" --gpu 0 --value 3
        [ "$status" = 0 ] || { echo "$stderr"; return 1; }
        diff "$FILE" <(printf '; wmt_gfx_util.ini\n\n'
            for n in "${names[@]}"; do
                if [ "$n" = "$name" ]; then entry "$n" 3; else entry "$n"; fi
            done)
        prefer remove "$name"
        [ "$status" = 0 ]
        mapfile -t rest < <(seq -f 'a%g' 100 | grep -vx "$name")
        diff "$FILE" <(entries 1 "${rest[@]}")
        prefer set "/opt/$name" --gpu 0
        [ "$status" = 0 ]
        diff "$FILE" <(entries 1 "${rest[@]}" "$name")
    done
}

@test "thousands of entries are no different" {
    local -a names
    mapfile -t names < <(seq -f 'b%g' 3000)
    keep_entries "${names[@]}"
    prefer remove b1500
    [ "$status" = 0 ]
    same "${#lines[@]}" 3000
    diff "$FILE" <(entries 1 "${names[@]:0:1499}" "${names[@]:1500}")
}

@test "names that are no UTF-8 keep their bytes" {
    keep_entries $'\xe9t\xe9' maze
    prefer set $'/opt/\xff' --gpu 0
    [ "$status" = 0 ] || { echo "$stderr"; return 1; }
    prefer remove maze
    diff "$FILE" <(entries 1 $'\xe9t\xe9' $'\xff')
    prefer remove $'\xe9t\xe9'
    diff "$FILE" <(entries 1 $'\xff')
}

@test "a preference that is set already is not written again" {
    keep_entries maze solver
    before=$(stat -c '%i %y' "$FILE")
    prefer set /opt/maze --gpu 0
    [ "$status" = 0 ]
    same "$(stat -c '%i %y' "$FILE")" "$before"
}

@test "what an application has twice is removed as a whole" {
    keep_entries maze solver maze
    prefer remove maze
    [ "$status" = 0 ]
    diff "$FILE" <(entries 1 solver)
}

@test "removing what is not there tells so and leaves the file alone" {
    prefer remove maze
    [ "$status" = 9 ]
    same "$output" ""
    same "$stderr" "nimba-smi: $FILE has no preference for maze; nimba-smi prefer list shows those \
that it has"
    [ ! -e "$HOME/.local" ]
    keep_entries solver
    echo '; mine' >>"$FILE"
    before=$(stat -c '%i %y' "$FILE")
    prefer remove /opt/maze
    [ "$status" = 9 ]
    same "$(stat -c '%i %y' "$FILE")" "$before"
    same "$(ls -A "$SHARE")" wmt_gfx_util.ini
    prefer remove /opt/
    [ "$status" = 2 ]
    same "$stderr" 'nimba-smi: "/opt/" names no application'
}

@test "lines that the library does not keep are told, and stay in a copy" {
    keep_entries maze solver
    sed -i 's/^\[maze\]/; for the demo\n[maze]\nColour = red/' "$FILE"
    cp "$FILE" before
    prefer set /opt/solver --gpu 0 --value 2
    [ "$status" = 0 ]
    same "$stderr" "nimba-smi: $FILE has 2 lines that the library does not keep, such as comments or \
unknown keys; a copy is in $FILE.bak
$NOT_THERE /opt/solver yet"
    diff before "$FILE.bak"
    diff "$FILE" <(entries 1 maze; entry solver 2)
}

@test "a link to the file stays a link" {
    keep_entries maze
    mv "$FILE" "$HOME/elsewhere"
    ln -s "$HOME/elsewhere" "$FILE"
    prefer set /opt/solver --gpu 0
    [ "$status" = 0 ]
    [ -L "$FILE" ]
    diff "$HOME/elsewhere" <(entries 1 maze solver)
}

@test "several at the same time wait for each other" {
    keep_entries maze
    on two-and-foreign bash -c 'for i in 1 2 3 4 5 6; do
            nimba-smi --timeout 55 prefer set "/opt/p$i" --gpu 0 &
        done
        nimba-smi --timeout 55 prefer remove maze &
        wait' >/dev/null 2>&1
    same "$(grep '^\[' "$FILE" | sort)" "[p1]
[p2]
[p3]
[p4]
[p5]
[p6]"
}
