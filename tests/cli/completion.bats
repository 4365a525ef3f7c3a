#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Command lines that bash, fish and zsh complete, with the scripts that the build made.

bats_require_minimum_version 1.5.0

: "${NIMBA_BIN:?the directory of the built programs}"
PATH=$NIMBA_BIN:$PATH
share=${NIMBA_BIN%/*}/share

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

needs() {
    command -v "$1" >/dev/null || skip "NOT TESTED: $1 is not installed"
}

# offers SHELL LINE: the words that the shell offers behind the line, sorted, in one line.
offers() {
    timeout 60 "$BATS_TEST_DIRNAME/$1-offers" "$share" "$2" | sed "s/^.*: //" | sort -u | paste -sd ' '
}

# completes SHELL LINE WORDS
completes() {
    local offered
    offered=$(offers "$1" "$2")
    [ "$offered" = "$3" ] || { printf '%s: offered behind "%s": %s\n' "$1" "$2" "$offered"; return 1; }
}

# helped_options COMMAND..., helped_commands COMMAND...: what its --help lists.
helped_options() {
    "$@" --help | awk '/^  -/ { gsub(",", "\n", $1); print $1 }'
}

helped_commands() {
    "$@" --help | awk '
        /^[A-Z].*:$/ { lists_commands = ($0 !~ /^(Options|Positionals|Exit status|Examples)/) }
        lists_commands && /^  [a-z]/ { print $1 }'
}

# The command lines of a tool that --help leads to: without a command, with one, with two.
command_lines() {
    local subcommand
    echo "$*"
    for subcommand in $(helped_commands "$@"); do
        command_lines "$@" "$subcommand"
    done
}

# Every command and option of --help is offered by the shell at its place, and no other command.
help_is_offered() {
    local shell=$1 tool line lines option subcommand
    for tool in nimba-smi nimba-sim; do
        while read -r line; do
            # shellcheck disable=SC2086,SC2094 # words; no command writes what it reads
            for option in $(helped_options $line); do
                echo "$line -: $option"
            done
            # shellcheck disable=SC2086,SC2094
            for subcommand in $(helped_commands $line); do
                echo "$line ${subcommand:0:1}: $subcommand"
            done
        done < <(command_lines "$tool")
    done | sort -u >helped
    cut -d: -f1 helped | sort -u >lines
    mapfile -t lines <lines
    [ "${#lines[@]}" -gt 40 ]
    timeout 100 "$BATS_TEST_DIRNAME/$shell-offers" "$share" "${lines[@]}" | sort -u >offered
    run comm -23 helped offered
    [ -z "$output" ] || { echo "not offered: $output"; return 1; }
    # Words that are no option are subcommands of --help.
    grep -v ': -\|: \[' offered | comm -13 helped - >invented || true
    [ ! -s invented ] || { echo "no command:"; cat invented; return 1; }
}

@test "bash is offered every command and option of --help" {
    help_is_offered bash
}

@test "fish is offered every command and option of --help" {
    needs fish
    help_is_offered fish
}

@test "zsh is offered every command and option of --help" {
    needs zsh
    help_is_offered zsh
}

# completes_everywhere LINE WORDS: in all of the shells that there are.
completes_everywhere() {
    local shell
    for shell in bash fish zsh; do
        ! command -v "$shell" >/dev/null || completes "$shell" "$@"
    done
}

@test "a command is completed behind options of all commands and their values" {
    completes_everywhere "nimba-smi --timeout 5 ver" version
    completes_everywhere "nimba-smi --timeout=5 --json pag" pagetable
    completes_everywhere "nimba-smi dvfs --adapter 0 re" restore
    completes_everywhere "nimba-smi --json dvfs -v re" restore
}

@test "options of all commands are offered behind a command, its own there alone" {
    completes_everywhere "nimba-smi dvfs restore --f" --force
    completes_everywhere "nimba-smi dvfs restore --verb" --verbose
    completes_everywhere "nimba-smi dvfs --json get dvfs_level --cs" --csv
    completes_everywhere "nimba-smi list --f" ""
}

@test "values that are known are offered behind their option" {
    completes_everywhere "nimba-smi alloc --sort p" \
        "pid pid:asc pid:desc process process:asc process:desc"
    completes_everywhere "nimba-smi pagetable --depth " "0 1 2 3"
    completes_everywhere "nimba-sim fault read --directory h" hwmon
    completes_everywhere "nimba-sim run --drivers l" live
}

@test "a value is offered behind the sign that parts it from its option" {
    completes bash "nimba-smi alloc --sort=hei" "height height:asc height:desc"
    completes bash "nimba-smi alloc --sort=height:" "asc desc"
    completes bash "nimba-smi pagetable --depth=" "0 1 2 3"
    needs zsh
    completes zsh "nimba-smi pagetable --depth=" "0 1 2 3"
    needs fish
    completes fish "nimba-smi pagetable --depth=" "--depth=0 --depth=1 --depth=2 --depth=3"
}

@test "settings are offered by name, and levels with their values" {
    completes_everywhere "nimba-smi dvfs get clock_gating_v" "clock_gating_vcp clock_gating_vpp"
    completes_everywhere "nimba-smi dvfs get dvfs_level mem" memory_clock
    completes fish "nimba-smi dvfs set dvfs_level=" "dvfs_level=balance dvfs_level=lowpower dvfs_level=performance"
    completes zsh "nimba-smi dvfs set dvfs_level=" "dvfs_level=balance dvfs_level=lowpower dvfs_level=performance"
}

@test "bash waits for a setting's value, and parts it as it parts words" {
    completes bash "nimba-smi dvfs set gfx_cl" "[nospace] gfx_clock="
    completes bash "nimba-smi dvfs set dvfs_level=" "balance lowpower performance"
    completes bash "nimba-smi dvfs set gfx_clock=1100 dvfs_level=p" performance
}

@test "machines are offered by name, and files" {
    completes fish "nimba-sim run --machine two-q" two-qv
    completes bash "nimba-sim run --machine two-q" "[default] two-qv"
    completes zsh "nimba-sim run -m two-q" two-qv
    touch my-own.toml
    completes_everywhere_files "nimba-sim check my"
}

completes_everywhere_files() {
    completes bash "$1" "[default]"
    completes zsh "$1" "$(ls)"
    completes fish "$1" "$(ls)"
}

@test "files are offered where a file is wanted" {
    touch mine.toml
    completes_everywhere_files "nimba-smi --library mi"
    completes_everywhere_files "nimba-smi dvfs save mi"
}

@test "processes are offered where one is wanted" {
    for shell in bash fish zsh; do
        [[ " $(offers "$shell" "nimba-smi pagetable --pid $$") " == *" $$ "* ]]
    done
}

@test "the command line of another program is completed behind \"--\"" {
    touch mine.toml
    completes bash "nimba-sim run -m two-qv -- nimba-s" "[default] nimba-sim nimba-smi"
    completes bash "nimba-sim run -- cat mi" "[default]"
    completes fish "nimba-sim run -m two-qv -- nimba-smi dvfs sa" save
    completes zsh "nimba-sim run -m two-qv -- nimba-smi dvfs sa" save
    touch machine.tar.zst
    completes bash "nimba-sim replay --speed 2 machine.tar.zst -- nimba-s" "[default] nimba-sim nimba-smi"
    completes fish "nimba-sim replay machine.tar.zst -- nimba-smi dvfs sa" save
    completes zsh "nimba-sim replay machine.tar.zst -- nimba-smi dvfs sa" save
}

@test "nothing is offered where anything can stand" {
    completes_everywhere "nimba-smi --timeout " ""
    completes_everywhere "nimba-sim fault read --bytes " ""
}

# typed TOOL LINE: types the line, with "\t" where Tab is pressed, into a real bash.
typed() {
    printf '%s\n' "source \"\$SCRIPT\"" "$(printf %b "$2")" exit |
        SCRIPT=$share/bash-completion/completions/$1 PS1='' INPUTRC=/dev/null TERM=dumb timeout 60 \
            script -qec "bash --noprofile --norc -i" /dev/null
}

@test "an interactive bash completes what is typed" {
    run typed nimba-smi 'nimba-smi vers\t --js\t'
    [[ "$output" == *'"schema": "nimba-smi.version.1"'* ]]
}

@test "a file whose name has blanks is completed to one argument" {
    echo 'description = "Of my own"' >"my own machine.toml"
    run typed nimba-sim 'nimba-sim check my\t'
    [[ "$output" == *"my own machine.toml: Of my own"* ]]
    ! command -v fish >/dev/null || completes fish "nimba-sim check my" "my own machine.toml"
    ! command -v zsh >/dev/null || completes zsh "nimba-sim check my" 'my\ own\ machine.toml'
}

@test "the scripts are free of what shellcheck and the shells find wrong" {
    for tool in nimba-smi nimba-sim; do
        bash -n "$share/bash-completion/completions/$tool"
        ! command -v shellcheck >/dev/null ||
            shellcheck --shell bash "$share/bash-completion/completions/$tool"
        ! command -v fish >/dev/null || fish --no-execute "$share/fish/vendor_completions.d/$tool.fish"
        ! command -v zsh >/dev/null || zsh -n "$share/zsh/vendor-completions/_$tool"
    done
}

@test "every value that is offered is taken" {
    while read -r order; do
        run -3 nimba-sim run --machine no-gpu -- nimba-smi alloc --sort "$order"
    done < <("$BATS_TEST_DIRNAME/bash-offers" "$share" "nimba-smi alloc --sort " | sed 's/^.*: //')
    while read -r kind; do
        run nimba-sim fault "$kind"
        [[ "$output" == nimba-sim:* && "$output" != *"key 'kind'"* ]]
    done < <("$BATS_TEST_DIRNAME/bash-offers" "$share" "nimba-sim fault " | sed 's/^.*: //')
}

@test "a shell that is not known is refused" {
    run -2 --separate-stderr nimba-smi completion tcsh
    [ "$stderr" = 'nimba-smi: SHELL: expected bash, fish or zsh, got "tcsh"; see nimba-smi --help' ]
    run -2 nimba-sim completion
    [[ "$output" == *"SHELL is required"* ]]
}
