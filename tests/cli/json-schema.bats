#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# Every document of nimba-smi --json, against docs/nimba-smi.schema.json.

load nimba-smi.bash

SCHEMA=$BATS_TEST_DIRNAME/../../docs/nimba-smi.schema.json

setup_file() {
    python3 -c 'import jsonschema' 2>/dev/null || skip "needs python3-jsonschema"
}

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
    export HOME=$BATS_TEST_TMPDIR
}

validate() {
    "$BATS_TEST_DIRNAME/validate-json" "$SCHEMA" "$@"
}

# A run of each command and view that changes nothing, and the forms of its documents, where there is
# an adapter.
READING='
:overview
list:list
info:info
top --interval 0.01 --count 2:overview overview
clocks:clocks
sensors:sensors
usage --interval 0.01:usage
export --once --deadline 60:export
mem:mem
ps:ps
alloc:alloc
leaks --interval 0.01 --count 2:leaks
pagetable:pagetable
pagetable --tree:pagetable-tree
pagetable --tree --depth 1:pagetable-tree
pagetable --va 0x100000000:pagetable-va
pagetable --map:pagetable-map
dvfs get:dvfs
dvfs get dvfs_level gfx_clock:dvfs
flag get:flag
prefer list:prefer
doctor:doctor
version:version'

# The same of watches, of runs that change something, and of runs that fail.
WATCHING='
--watch 0.01 --count 2:overview overview
clocks --watch 0.01 --count 2:clocks clocks
sensors --watch 0.01 --count 2:sensors sensors
usage --watch 0.01 --count 3:usage usage usage
mem --watch 0.01 --count 2:mem mem'
CHANGING='
dvfs set dvfs_level=performance gfx_clock=500 power_mode=1 --dry-run:dvfs-dry-run
dvfs set dvfs_level=performance gfx_clock=500 power_mode=1:dvfs-set
dvfs save state.json:dvfs-save
dvfs set dvfs_level=balance:dvfs-set
dvfs restore state.json --dry-run:dvfs-dry-run
dvfs restore state.json:dvfs-set
flag set 0x4:flag-set
flag clear 0x4:flag-set
capture machine.tar.zst:capture
report report.html:report
prefer set /bin/true --gpu 0:prefer
prefer list:prefer
prefer remove /bin/true:prefer'
FAILING='
--library ./none:overview
list --library ./none:list
version --library ./none:version
doctor --library ./none:doctor
prefer list --library ./none:prefer
prefer remove /bin/true:prefer
pagetable --pid 1 --map:pagetable-map
dvfs save ./none/state.json:dvfs-save'

# documents MACHINE RUNS [FAULT]: what the runs print, on a machine with that fault.
documents() {
    on "$1" bash -c "${3:+nimba-sim fault $3; }"'while IFS=: read -r arguments _; do
        eval "nimba-smi $arguments --json" </dev/null; done' <<<"${2#?}"
}

# forms_of RUNS: the names of the forms, a line for each document.
forms_of() {
    sed '1d; s/.*://' <<<"$1" | tr ' ' '\n' | sed 's/.*/nimba-smi.&.1/'
}

# follow_the_schema MACHINE RUNS [FAULT]: the runs print documents of their forms.
follow_the_schema() {
    documents "$@" >documents 2>messages || true
    validate <documents >forms || { echo "$1 ${3-}"; return 1; }
    same "$(cat forms)" "$(forms_of "$2")" || { echo "$1 ${3-}"; cat messages; return 1; }
}

@test "every command and view prints the documents that the schema has" {
    needs_live_drivers
    for runs in "$READING" "$WATCHING" "$CHANGING" "$FAILING"; do
        follow_the_schema default "$runs"
        cat forms >>met
    done
    validate <state.json >>met
    # All forms of the schema, and all commands of the help, were met.
    same "$(sort -u met)" "$(jq -r '.properties.schema.enum[]' "$SCHEMA" | sort)"
    same "$(jq -r '."$defs" | keys[] | select(startswith("nimba-smi."))' "$SCHEMA")" \
        "$(sort -u met)"
    same "$(nimba-smi --help | sed -n 's/^  \([a-z]\+\)  \+[A-Z].*/\1/p' | sort)" \
        "$(sed -n 's/^\([a-z]\+\)[ :].*/\1/p' <<<"$READING$CHANGING"$'\ncompletion ' | sort -u)"
    for command in dvfs flag prefer; do
        same "$(nimba-smi "$command" --help | sed -n 's/^  \([a-z]\+\)  \+[A-Z].*/\1/p' | sort)" \
            "$(sed -n "s/^$command \([a-z]\+\).*/\1/p" <<<"$READING$CHANGING" | sort -u)"
    done
}

@test "documents of other machines follow the schema" {
    for machine in showcase two-and-foreign forty-allocations leaking seven-segments qv-m30-heaps; do
        follow_the_schema "$machine" "$READING"
    done
}

@test "documents of machines that lack something follow the schema" {
    for machine in no-gpu foreign-only bare-adapter no-library closed-nodes; do
        documents "$machine" "$READING" >documents 2>messages || true
        validate <documents >forms || { echo "$machine"; return 1; }
        same "$(sort -u forms)" "$(forms_of "$READING" | sort -u)"
        jq -es 'map(.errors | length) | add > 0' documents >/dev/null
    done
}

@test "documents of drivers that fail follow the schema" {
    needs_live_drivers
    for fault in "open '*' --directory info --error EACCES" "garbage '*' --directory info" \
        "garbage '*'" "read '*' --directory hwmon" "vanish '*'" "gone"; do
        documents steady-adapter "$READING" "$fault" >documents 2>messages || true
        validate <documents >forms || { echo "$fault"; return 1; }
        jq -es 'map(.errors | length) | add > 0' documents >/dev/null || { echo "$fault"; return 1; }
    done
}

@test "what the schema does not have is refused wherever it stands" {
    needs_live_drivers
    for runs in "$READING" "$CHANGING"; do
        documents page-tables "$runs" >>documents 2>messages || true
    done
    cat state.json >>documents
    on two-and-foreign nimba-smi list --json >>documents
    validate --thorough <documents >forms
    same "$(sort -u forms)" "$(jq -r '.properties.schema.enum[]' "$SCHEMA" | sort)"
}

# refused WHY DOCUMENT: the document does not pass, and this is why.
refused() {
    run --separate-stderr validate <<<"$2"
    [ "$status" = 1 ] || { echo "passed: $2"; return 1; }
    [[ $stderr == *"$1"* ]] || { echo "$stderr"; return 1; }
}

@test "wrong documents do not pass" {
    local flag='{"schema": "nimba-smi.flag.1", "adapters": [{"slot": 0, "name": null,
        "bus_id": "0000:01:00.0", "flag": 4}], "errors": []}'
    validate <<<"$flag$flag"
    refused "/adapters/0: " "${flag/\"flag\": 4/\"flags\": 4}"
    refused "/adapters/0/flag: '4' is not of type 'integer', 'null'" "${flag/: 4/: \"4\"}"
    refused "/adapters/0/bus_id: '0000:1:0.0' does not match" "${flag/01:00/1:0}"
    refused "/: 'errors' is a required property" "${flag/, \"errors\": \[\]/}"
    refused '"slot" stands twice in an object' "${flag/\"name\": null/\"name\": null, \"slot\": 1}"
    refused "/schema: 'nimba-smi.flag.2' is not one of" "${flag/.1/.2}"
    refused "NaN is no JSON" "${flag/4/NaN}"
    refused "no JSON document" "$flag{"
    refused "is not of type 'object'" "[]"
}

@test "every member that the schema has is described" {
    run jq -r '. as $schema
        | def described: has("description") or (has("$ref") and
            (."$ref"[2:] / "/" | . as $place | $schema | getpath($place) | described));
        [path(.. | objects)] | map(select(.[-2] == "properties" and (index("if") | not)))[]
        | select(. as $place | $schema | getpath($place) | described | not) | join("/")' "$SCHEMA"
    same "$output" "properties/schema"
}
