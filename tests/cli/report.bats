#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# nimba-smi report, of simulated machines and of captures of them.

load nimba-smi.bash
load ordinary_user.bash

setup() {
    cd "$BATS_TEST_TMPDIR" || return 1
}

# The page has each of these.
has() {
    local page=$1 part
    shift
    for part in "$@"; do
        grep -qF -- "$part" "$page" || { echo "$page lacks: $part"; return 1; }
    done
}

# The page needs nothing but itself, and its tags are closed.
stands_alone() {
    python3 - "$1" <<'PYTHON'
import re
import sys
from html.parser import HTMLParser
from pathlib import Path

VOID = {"meta", "link"}


class Tags(HTMLParser):
    open = []

    def handle_starttag(self, tag, attributes):
        assert tag not in ("script", "img", "iframe", "object", "embed", "base", "form"), tag
        for name, value in attributes:
            assert not name.startswith("on"), name
            assert name not in ("src", "srcset", "action", "style") or re.fullmatch(
                r"width:[0-9.]+%", value), (name, value)
            assert name != "href" or re.fullmatch(r"#[a-z-]+|data:,", value), value
        if tag not in VOID:
            self.open.append(tag)

    def handle_startendtag(self, tag, attributes):
        self.handle_starttag(tag, attributes)
        self.open.pop()

    def handle_endtag(self, tag):
        assert self.open.pop() == tag, tag


text = Path(sys.argv[1]).read_text(encoding="utf-8")
tags = Tags()
tags.feed(text)
tags.close()
assert not tags.open, tags.open
assert not re.search(r"https?:|url\(|@import|<script|[\x00-\x08\x0b-\x1f\x7f]", text)
PYTHON
}

@test "a page tells of the machine, and of samples over time" {
    needs_live_drivers
    umask 027
    run --separate-stderr on leaking nimba-smi report --samples 3 --interval 0.2 report.html
    [ "$status" = 0 ]
    same "$stderr" ""
    [[ $output =~ ^report\.html:\ 1\ adapter,\ 3\ samples,\ [0-9.]+\ KiB$ ]]
    same "$(stat -c %a report.html)" 640
    stands_alone report.html
    has report.html 'Gpu0:Nimba-GT-K3 (0000:01:00.0)' '<h2>What the doctor found</h2>' \
        'All 25 checks are ok.' 'Everything could be read.' 'over 3 samples</h3>' \
        '<svg class="plot"' '<caption>Memory segments of Gpu0:Nimba-GT-K3 (0000:01:00.0)</caption>' \
        '/usr/games/maze (4100003)' '<caption>Largest allocations</caption>' \
        'GPU address space of process 4100001 (compositor)' '<svg class="strip"' \
        '<caption>Every field of the summaries</caption>'
}

@test "the page goes to standard output, or its description as JSON" {
    run --separate-stderr on steady-adapter nimba-smi report -
    [ "$status" = 0 ]
    [[ $output == "<!DOCTYPE html>"*"</html>" ]]
    run --separate-stderr on steady-adapter nimba-smi report --json report.html
    same "$(jq -c '[.schema, .file, .capture, .adapters, .samples, .errors]' <<<"$output")" \
        '["nimba-smi.report.1","report.html",null,1,1,[]]'
    same "$(jq .bytes <<<"$output")" "$(stat -c %s report.html)"
}

@test "a page of a captured machine names the leak that a replay of it names" {
    needs_live_drivers
    on leaking nimba-smi capture --samples 2 --interval 0.1 machine.tar.zst
    run --separate-stderr nimba-smi --library ./none report --capture machine.tar.zst captured.html
    [ "$status" = 0 ]
    same "$stderr" ""
    [[ $output =~ ^captured\.html:\ 1\ adapter,\ 2\ samples,\ [0-9.]+\ KiB$ ]]
    stands_alone captured.html
    has captured.html 'captured in machine.tar.zst' 'over 2 samples</h3>' '<svg class="strip"' \
        'All 22 checks are ok.' '/usr/games/maze (4100003)'
    # shellcheck disable=SC2016 # for jq
    timeout 60 nimba-sim replay machine.tar.zst -- nimba-smi leaks --count 1 --json >leaks.json
    run jq -r '.groups[:3][] | "<th scope=\"row\">\(.width) x \(.height)</th>"' leaks.json
    [ "${#lines[@]}" = 3 ]
    same "$(sed -n '/id="leaks"/,/<\/section>/p' captured.html |
        grep -o '<th scope="row">[0-9]* x [0-9]*</th>' | head -n 3)" "$output"
}

@test "what an archive has of the commands is what they print" {
    # shellcheck disable=SC2016 # for the other shell
    NIMBA_SIM_DRIVERS=plain on steady-adapter bash -ec '
        nimba-smi capture machine.tar.zst >said
        mkdir said-by
        while read -r name command; do
            nimba-smi $command --json >"said-by/$name.json"
        done <<<"version version
dvfs dvfs get
alloc alloc --top 100
leaks leaks --count 1
pagetable pagetable --map
doctor doctor"'
    mkdir tree
    tar --zstd -xf machine.tar.zst -C tree
    same "$(jq -S . tree/documents/doctor.json)" \
        "$(jq -S '.checks |= map(select(.group != "user"))' said-by/doctor.json)"
    diff -r -x doctor.json tree/documents said-by
    same "$(jq -c '[.schema, (.adapters | length)]' tree/samples/0/overview.json)" \
        '["nimba-smi.overview.1",1]'
}

@test "an archive without what the commands said makes a page all the same" {
    on steady-adapter nimba-smi capture machine.tar.zst
    mkdir tree
    tar --zstd -xf machine.tar.zst -C tree
    rm -r tree/documents tree/samples/0/overview.json
    (cd tree && find . -type f ! -name manifest.json -printf '%P\n') >names
    tar -C tree --zstd -cf bare.tar.zst -T names manifest.json
    nimba-smi report --capture bare.tar.zst bare.html
    stands_alone bare.html
    has bare.html 'Gpu0:NimbaK5 (0000:01:00.0)' 'The doctor was not asked, or said nothing.'
    # A replay needs none of it.
    timeout 60 nimba-sim replay bare.tar.zst -- nimba-smi list >list
    has list 'Gpu0:NimbaK5'
    echo '{"schema": "nimba-smi.leaks.1"}' >tree/doctor.json
    tar -C tree --zstd --transform 's,^doctor,documents/doctor,' -cf lying.tar.zst -T names \
        doctor.json manifest.json
    run --separate-stderr nimba-smi report --capture lying.tar.zst lying.html
    [ "$status" = 1 ]
    same "$stderr" "nimba-smi: lying.tar.zst: documents/doctor.json is no such document"
    [ ! -e lying.html ]
}

@test "names from processes and drivers are texts" {
    cat >machine.toml <<'TOML'
description = "Names that would be markup"
[[process]]
pid = 4100001
name = "</td><script>alert('x')</script>"
[[adapter]]
chip = "nimba-k1"
bus_id = "0000:01:00.0"
card = 0
[adapter.debug]
"devices/1/info" = "pid = 4100001\nhandle = 10\n"
[adapter.info]
dvfs_level = "<img src=x>\u0007\"'"
TOML
    # The driver has no such level, and the page says so.
    on ./machine.toml nimba-smi report live.html 2>said || [ "$?" = 3 ]
    on ./machine.toml nimba-smi capture machine.tar.zst
    nimba-smi report --capture machine.tar.zst captured.html
    for page in live.html captured.html; do
        stands_alone "$page"
        has "$page" '&lt;script&gt;alert('
    done
}

@test "what could not be read is in the page, and in the status" {
    run --separate-stderr on closed-nodes nimba-smi report closed.html
    [ "$status" != 0 ]
    [ -n "$stderr" ]
    stands_alone closed.html
    python3 - "${stderr_lines[0]#nimba-smi: }" closed.html <<'PYTHON'
import html, sys
assert html.escape(sys.argv[1]).replace("&#x27;", "&apos;") in open(sys.argv[2]).read()
PYTHON
    run --separate-stderr on no-gpu nimba-smi report none.html
    [ "$status" = 3 ]
    stands_alone none.html
    has none.html 'There is no adapter of the product.'
    run --separate-stderr on no-gpu nimba-smi --library ./none report none.html
    [ "$status" = 4 ]
    stands_alone none.html
}

@test "a page that cannot be written is told in one line, and what was there stays" {
    run --separate-stderr on no-gpu nimba-smi report missing/report.html
    [ "$status" = 1 ]
    same "${stderr_lines[-1]}" "nimba-smi: cannot write missing/report.html: No such file or directory"
    # shellcheck disable=SC2016 # for the other shell
    run unshare -rm sh -c 'mkdir small; mount -t tmpfs -o size=8k none small || exit 77
        echo before >small/report.html
        nimba-sim run --machine steady-adapter -- nimba-smi report small/report.html
        echo "status $?"; ls -A small; cat small/report.html'
    [ "$status" != 77 ] || skip "nothing can be mounted here"
    same "$output" "nimba-smi: cannot write small/report.html: No space left on device
status 1
report.html
before"
    for archive in missing.tar.zst /dev/zero; do
        run --separate-stderr nimba-smi report --capture "$archive" none.html
        [ "$status" = 1 ]
        [[ $stderr == "nimba-smi: $archive: "* ]]
        [ "${#stderr_lines[@]}" = 1 ]
        [ ! -e none.html ]
    done
}

@test "the archive that a page is of is not replaced by it" {
    on steady-adapter nimba-smi capture machine.tar.zst
    cp machine.tar.zst before
    ln -s machine.tar.zst link
    for page in machine.tar.zst link; do
        run --separate-stderr nimba-smi report --capture ./machine.tar.zst "$page"
        [ "$status" = 1 ]
        same "$stderr" "nimba-smi: cannot write $page: it is the capture itself"
        cmp machine.tar.zst before
    done
}

@test "a signal ends a capture and a page while a command is asked, and leaves no file" {
    make_pid_directory
    for command in "capture machine.tar.zst" "report report.html"; do
        # shellcheck disable=SC2086 # words of a command
        NIMBA_STUB_FAULT=adapters/get_memleak_info/hang env --default-signal=HUP,INT,TERM \
            nimba-smi --library "$STUB" --timeout 600 $command >out 2>err 3>&- &
        tool=$!
        within_bounds pids_left 1
        kill -s TERM "$tool"
        status=0
        wait "$tool" || status=$?
        [ "$status" = 143 ] || { echo "$command: $status"; cat out err; return 1; }
        within_bounds all_gone
        rm "$NIMBA_STUB_PIDS"/*
        [ ! -e machine.tar.zst ] && [ ! -e report.html ]
    done
}

# browse ARGUMENT...: a browser, which says everything into the file "browser".
browse() {
    timeout 120 chromium --headless=new --no-sandbox --disable-gpu --hide-scrollbars \
        --user-data-dir="$PWD/profile" --disable-background-networking --disable-sync \
        --disable-component-update --no-first-run --log-net-log="$PWD/net.json" \
        --host-resolver-rules='MAP * ~NOTFOUND' --enable-logging=stderr --v=0 "$@" >browser 2>&1
}

# What the browser was asked for by the page, not by itself.
asked_for() {
    jq -r '.events[].params | select((.network_isolation_key? // "") | startswith("file:")) | .url' net.json |
        sort -u
}

@test "a browser shows and prints the page, and asks nobody for anything" {
    command -v chromium >/dev/null || skip "needs chromium"
    on showcase nimba-smi report --samples 3 --interval 0.2 report.html || [ "$?" = 3 ]
    for width in 1280 400; do
        browse --window-size="$width,3000" --screenshot="$PWD/$width.png" "file://$PWD/report.html"
        [ "$(head -c 8 "$width.png" | od -An -tx1 | tr -d ' ')" = 89504e470d0a1a0a ]
        # What is drawn is more than an empty window.
        [ "$(stat -c %s "$width.png")" -gt 50000 ]
        run grep -F CONSOLE browser
        same "$output" ""
        same "$(asked_for)" ""
    done
    browse --print-to-pdf="$PWD/report.pdf" --no-pdf-header-footer "file://$PWD/report.html"
    same "$(head -c 5 report.pdf)" "%PDF-"
    [ "$(grep -ac '/Type /Page$' report.pdf)" -ge 2 ]
    # A page that does ask is found out.
    echo '<img src="http://example.invalid/x.png"><script>console.error("here")</script>' >other.html
    browse --screenshot="$PWD/other.png" "file://$PWD/other.html"
    grep -qF CONSOLE browser
    [[ $(asked_for) == *"http://example.invalid/x.png"* ]]
}
