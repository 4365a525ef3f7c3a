# SPDX-License-Identifier: MIT
# A terminal to type into and to look at, in a simulated machine. What is waited for may take 30
# seconds at most.

# terminal COMMAND...: a command of the terminal's own multiplexer, with nobody's settings.
terminal() {
    env -u TMUX tmux -u -f /dev/null -S "$BATS_TEST_TMPDIR/terminal" "$@"
}

# within COMMAND...: waits until the command succeeds.
within() {
    local tries
    for ((tries = 0; tries < 300; ++tries)); do
        if "$@"; then
            return 0
        fi
        sleep 0.1
    done
    echo "in vain: $*"
    screen
    return 1
}

# open_terminal MACHINE [WIDTH HEIGHT]: a shell on that machine, in a terminal of that size.
open_terminal() {
    export LC_ALL=C.UTF-8
    unset NO_COLOR
    cat >"$BATS_TEST_TMPDIR/serve" <<'SHELL'
export TERM=tmux-256color
terminal="tmux -u -f /dev/null -S $1"
env -u TMUX $terminal start-server \; set-option -g default-terminal tmux-256color \; \
    set-option -g status off \; set-option -g escape-time 0 \; \
    set-option -g remain-on-exit on \; set-option -g remain-on-exit-format "" \; \
    new-session -d -x "$2" -y "$3" "bash --noprofile --norc"
env -u TMUX $terminal wait-for ever
SHELL
    nimba-sim run --machine "$1" -- bash "$BATS_TEST_TMPDIR/serve" "$BATS_TEST_TMPDIR/terminal" \
        "${2-100}" "${3-30}" >"$BATS_TEST_TMPDIR/served" 2>&1 3>&- &
    machine=$!
    within shows '[#$] *$'
}

close_terminal() {
    terminal kill-server 2>/dev/null || true
    if [ -n "${machine-}" ]; then
        wait "$machine" || true
    fi
}

# type_keys KEY...: each a character, a name such as Tab or Escape, or a text that is typed as it is.
type_keys() {
    terminal send-keys "$@"
}

# enter COMMAND: types a command and its end.
enter() {
    terminal send-keys -l "$1"
    terminal send-keys Enter
}

# on_machine COMMAND...: runs a command on the machine, beside the terminal.
on_machine() {
    terminal run-shell "$*"
}

screen() {
    terminal capture-pane -p 2>/dev/null
}

shows() {
    screen | grep -Eq -- "$1"
}

shows_no() {
    ! shows "$1"
}
