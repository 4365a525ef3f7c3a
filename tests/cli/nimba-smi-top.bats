#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The live view in a terminal.

load nimba-smi.bash
load terminal.bash

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

teardown() {
    close_terminal
}

# open_top MACHINE [WIDTH HEIGHT [OPTION...]]: the view on that machine, with its first figures.
open_top() {
    local machine_name=$1 width=${2-100} height=${3-30}
    shift $(($# < 3 ? $# : 3))
    open_terminal "$machine_name" "$width" "$height"
    enter "nimba-smi top $*"
    within shows '3D engine ─* +[0-9]+ %'
}

has_shell() {
    [ "$(terminal display-message -p '#{pane_current_command}')" = bash ]
}

# The shell has the terminal again, and says what it is asked. What is typed before that is the view's.
shell_is_back() {
    within has_shell
    enter 'echo he""re'
    within shows '^here'
}

# What the multiplexer knows of the screen: whether it is the alternate one, and shows a cursor.
modes() {
    terminal display-message -p '#{alternate_on}#{cursor_flag}#{keypad_cursor_flag}'
}

# The view in the terminal, which its shell started.
view_in_terminal() {
    local pane
    pane=$(terminal display-message -p '#{pane_pid}')
    pgrep -P "$pane" -x nimba-smi
}

workers_of() {
    pgrep -P "$1" -x nimba-smi
}

has_workers() {
    [ -n "$(workers_of "$1")" ]
}

is_gone() {
    ! kill -0 "$1" 2>/dev/null
}

@test "the view shows figures, plots, processes and keys" {
    open_top busy 80 24
    within shows '[⣿⣶⣤⣀]'
    shows '^ nimba-smi top .*Gpu0'
    shows 'Memory [─ ]*[0-9.]+ [KMG]iB'
    shows 'Temp[a-z]* ─+ +[0-9]+ °C'
    shows 'Processes: [0-9]+'
    shows 'PID .*MEMORY▼'
    shows 'q Quit +\? Help'
    type_keys q
    shell_is_back
}

@test "the figures are those of the machine" {
    open_top steady-adapter 100 30 --interval 0.1
    within shows '3D engine ─+ +45 %'
    within shows 'Frames ─+ +2[34][0-9](\.[0-9])?/s'
}

@test "the table is sorted, turned round and filtered" {
    open_top showcase 120 36
    within shows 'maze'
    type_keys N
    within shows 'PID▲'
    screen | grep -A1 'PID▲' | grep -q compositor
    type_keys r
    within shows 'PID▼'
    screen | grep -A1 'PID▼' | grep -q player
    type_keys Right
    within shows 'DEVICE▲'
    type_keys Left Left
    within shows 'PROCESS▲'
    type_keys / m a z
    within shows 'Filter: maz'
    within shows 'Processes: 1 of 4, with "maz"'
    shows 'maze'
    shows_no 'compositor'
    type_keys Enter
    within shows_no 'Filter:'
    shows 'Processes: 1 of 4'
    type_keys Escape
    within shows 'Processes: 4 '
    type_keys /
    within shows 'Filter:'
    type_keys -l 'no such'
    within shows 'no process has that'
    type_keys Escape
    within shows 'compositor'
}

@test "adapters are shown in turn, or their processes together" {
    open_top showcase 120 36
    within shows 'maze'
    type_keys Tab
    within shows '/cad/|cad'
    within shows '0000:02:00.0'
    within shows_no 'maze'
    type_keys 1
    within shows '0000:01:00.0'
    within shows 'maze'
    type_keys a
    within shows 'Processes of all adapters'
    within shows 'cad'
    shows 'maze'
    shows ' GPU '
}

@test "one adapter can be chosen" {
    open_top showcase 120 36 -i 1
    within shows 'cad'
    shows '0000:02:00.0'
    shows_no '0000:01:00.0'
}

@test "a pause takes no more samples" {
    open_top steady-adapter 100 30 --interval 0.1
    type_keys p
    within shows 'paused at [0-9:]{8}'
    type_keys Space
    within shows 'every 0.1 s'
    type_keys +
    within shows 'every 0.2 s'
    type_keys - -
    within shows 'every 0.1 s'
}

@test "the help names every key, and events have a page of their own" {
    open_top steady-adapter 100 40
    type_keys '?'
    within shows 'q, F10  Leave'
    shows 'Ctrl-L  Draw the screen anew'
    type_keys '?'
    within shows '3D engine'
    type_keys e
    within shows 'Nothing happened yet'
    type_keys Escape
    within shows '3D engine'
}

@test "plots are shown by sets and drawn with other marks" {
    open_top steady-adapter 100 30 --interval 0.1
    type_keys g
    within shows_no 'Temperature'
    shows 'VPP engine'
    type_keys g g g
    within shows_no '3D engine'
    shows 'Processes'
    type_keys g
    within shows 'Temperature'
    within shows '[⣿⣶⣤⣀]'
    type_keys b
    within shows '[▁▂▃▄▅▆▇█]{2}'
    type_keys b
    within shows '[|]{3}'
    within shows_no '[╭█⣿⣶⣤⣀]'
}

@test "the view fits every size, also one that changes" {
    open_top showcase 100 30
    within shows 'maze'
    terminal resize-window -x 40 -y 10
    within shows_no 'Temperature'
    within shows '^ ?1? .*[0-9]{2}:[0-9]{2}'
    within shows 'PID +MEMORY'
    terminal resize-window -x 39 -y 10
    within shows 'needs 40x10, q quits'
    terminal resize-window -x 20 -y 1
    within shows 'needs 40x10'
    terminal resize-window -x 250 -y 80
    within shows 'Memory clock'
    within shows 'maze'
    [ "$(screen | grep -c .)" -ge 79 ]
    type_keys q
    shell_is_back
}

@test "without UTF-8 there is nothing but ASCII" {
    open_terminal showcase 100 30
    enter 'LC_ALL=C nimba-smi top'
    within shows '3D engine -* +[0-9]+ %'
    within shows 'maze'
    LC_ALL=C terminal capture-pane -p >picture
    run grep -P '[^\x00-\x7f]' picture
    [ "$status" = 1 ] || { echo "$output"; return 1; }
    type_keys q
    shell_is_back
    enter 'nimba-smi top --ascii --interval 0.1'
    within shows '3D engine -* +[0-9]+ %'
    shows_no '[─╭]'
}

@test "there are colours, unless NO_COLOR refuses them" {
    open_top steady-adapter
    terminal capture-pane -e -p | grep -q $'\e\[38;5;'
    type_keys q
    shell_is_back
    enter 'clear; NO_COLOR=1 nimba-smi top'
    within shows '3D engine'
    run grep $'\e\[[0-9;]*3[0-8]' <(terminal capture-pane -e -p)
    [ "$status" = 1 ]
}

# happened TEXT: the page of events has the text. Below the view stands the last event alone.
happened() {
    type_keys e
    within shows "$1"
    type_keys Escape
    within shows '3D engine'
}

@test "a driver that goes is said so, and it comes back" {
    needs_live_drivers
    open_top showcase 120 36 --interval 0.2
    on_machine nimba-sim fault gone --adapter 1
    within shows '0000:01:00.0: the driver is gone or does not answer'
    happened 'the driver of adapter 0000:01:00.0 .*is gone'
    within shows '3D engine ─+ n/a'
    shows '1 [^ ]*!'
    type_keys 2
    within shows '3D engine ─+ [0-9]+ %'
    on_machine nimba-sim fault --clear
    happened 'the driver of adapter 0000:01:00.0 .*is back'
    type_keys 1
    within shows '3D engine ─+ [0-9]+ %'
    on_machine nimba-sim fault gone
    within shows '3D engine ─+ n/a'
    on_machine nimba-sim fault --clear
    within shows '3D engine ─+ [0-9]+ %'
    type_keys q
    shell_is_back
}

@test "a worker that dies is replaced, which is said" {
    # Wide enough for the name of whatever the worker was doing.
    open_top steady-adapter 200 36 --interval 0.2
    local view
    view=$(view_in_terminal)
    within has_workers "$view"
    kill -s KILL $(workers_of "$view")
    within shows 'killed by SIGKILL; a new worker was started'
    within shows '3D engine ─+ 45 %'
    within has_workers "$view"
    type_keys e
    within shows 'Events'
    within shows 'killed by SIGKILL'
}

@test "a driver that blocks does not freeze the view" {
    needs_live_drivers
    open_top steady-adapter 100 30 --interval 0.1
    on_machine nimba-sim fault block eclk --directory info --ms 60000
    within shows 'no answer for [0-9]+ s'
    type_keys '?'
    within shows 'q, F10  Leave'
    type_keys q
    shell_is_back
}

# leaves_by COMMAND...: the command ends the view, and the terminal is as it was.
leaves_by() {
    open_terminal steady-adapter
    enter 'stty -a >before'
    within test -s before
    local modes_before
    modes_before=$(modes)
    enter 'nimba-smi top; echo "status $?"'
    within shows '3D engine ─+ +[0-9]+ %'
    [ "$(modes)" != "$modes_before" ]
    "$@" "$(view_in_terminal)"
    within shows '^status [0-9]+'
    [ "$(modes)" = "$modes_before" ]
    shows 'nimba-smi top; echo'
    shows_no '3D engine'
    enter 'stty -a >after'
    within test -s after
    diff before after
    shows '^status 0$'
}

press_q() {
    type_keys q
}

press_interrupt() {
    type_keys C-c
}

@test "q gives the terminal back" { leaves_by press_q; }
@test "Ctrl-C gives the terminal back" { leaves_by press_interrupt; }
@test "SIGTERM gives the terminal back" { leaves_by kill -s TERM; }
@test "SIGHUP gives the terminal back" { leaves_by kill -s HUP; }
@test "SIGQUIT gives the terminal back" { leaves_by kill -s QUIT; }

@test "the view can be stopped and goes on" {
    open_terminal steady-adapter
    enter 'stty -a >before'
    within test -s before
    enter 'nimba-smi top'
    within shows '3D engine ─+ +[0-9]+ %'
    type_keys C-z
    within shows 'Stopped'
    shows_no '3D engine'
    [ "$(terminal display-message -p '#{alternate_on}#{cursor_flag}')" = 01 ]
    enter 'stty -a >while'
    within test -s while
    diff before while
    enter fg
    within shows '3D engine ─+ +[0-9]+ %'
    [ "$(terminal display-message -p '#{alternate_on}#{cursor_flag}')" = 10 ]
    type_keys q
    shell_is_back
    enter 'stty -a >after'
    within test -s after
    diff before after
}

@test "the view ends with its terminal, and so do its workers" {
    open_top steady-adapter
    local view workers worker
    view=$(view_in_terminal)
    within has_workers "$view"
    workers=$(workers_of "$view")
    terminal set-option -g remain-on-exit off
    terminal new-window
    terminal kill-window -t 0
    within is_gone "$view"
    for worker in $workers; do
        within is_gone "$worker"
    done
}

@test "the view ends after a number of samples" {
    open_terminal steady-adapter
    enter 'nimba-smi top --interval 0.01 --count 3; echo "status $?"'
    within shows '^status 0$'
}

@test "without an adapter the view ends with the reason" {
    open_terminal no-gpu
    enter 'nimba-smi top; echo "status $?"'
    within shows '^status 3$'
    shows 'no Nimba or QV adapter found'
}

@test "the view needs a terminal that can do what it takes" {
    run --separate-stderr nimba-smi top </dev/null
    [ "$status" = 2 ]
    same "$stderr" 'nimba-smi: top needs a terminal; use nimba-smi --watch'
    open_terminal steady-adapter
    enter 'TERM=dumb nimba-smi top; echo "status $?"'
    within shows '^status 2$'
    shows 'top needs a terminal with a cursor that can be moved'
    enter 'clear; TERM=no-such nimba-smi top; echo "status $?"'
    within shows 'top does not know the type of this terminal: set TERM'
}

@test "samples are documents without a terminal" {
    run --separate-stderr on steady-adapter nimba-smi top --json --interval 0.01 --count 3
    [ "$status" = 0 ] || { echo "$status $stderr"; return 1; }
    [ "${#lines[@]}" = 3 ]
    same "$(jq -c '[.schema, .adapters[].usage.engine_3d_percent]' <<<"${lines[2]}")" \
        '["nimba-smi.overview.1",45]'
}

@test "options without sense are refused" {
    local option
    for option in '--interval 0' '--count 0' '-i 7'; do
        run --separate-stderr nimba-smi top $option
        [ "$status" = 2 ] || { echo "$option: $status"; return 1; }
    done
}
