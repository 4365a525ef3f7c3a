#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The Debian packages, and a machine on which they are installed. NIMBA_BINARY_DIR is the build tree
# that they are made from, NIMBA_SOURCE_DIR that of its sources.

bats_require_minimum_version 1.5.0

setup_file() {
    export packages=$BATS_FILE_TMPDIR/packages log=$BATS_FILE_TMPDIR/log
    cpack --config "$NIMBA_BINARY_DIR/CPackConfig.cmake" -B "$packages" >"$log"
    rm -rf "$packages/_CPack_Packages"
    enter_clean_root
}

teardown_file() {
    leave_clean_root
}

# Starts a machine with the packages, in namespaces of the process clean_root.
enter_clean_root() {
    local -a user=()
    [ "$(id -u)" = 0 ] || user=(--user --map-root-user)
    export clean_root=
    # Where no file system can be mounted for oneself, as behind chroot, that is the machine's fault.
    unshare "${user[@]}" --mount --propagation private mount -t tmpfs probe /mnt 2>>"$log" || return 0
    mkfifo "$BATS_FILE_TMPDIR/ready"
    unshare "${user[@]}" --mount --propagation private "$BATS_TEST_DIRNAME/clean-root" \
        "$packages" "$BATS_FILE_TMPDIR/ready" "$NIMBA_SOURCE_DIR" "$NIMBA_BINARY_DIR" \
        >>"$log" 2>&1 3>&- &
    clean_root=$!
    if [ "$(timeout 100 cat "$BATS_FILE_TMPDIR/ready")" != ready ]; then
        cat "$log" >&2
        leave_clean_root
        return 1
    fi
}

leave_clean_root() {
    if [ -n "$clean_root" ]; then
        kill "$clean_root" || true
        wait "$clean_root" || true
        clean_root=
    fi
}

needs_clean_root() {
    [ -n "$clean_root" ] || skip "NOT TESTED: no file system can be mounted for oneself here"
}

# installed COMMAND...: the command on that machine, without anything of this environment.
installed() {
    local -a user=()
    [ "$(id -u)" = 0 ] || user=(--user --preserve-credentials)
    timeout 60 nsenter "${user[@]}" --mount --target "$clean_root" \
        env -i HOME=/root LANG=C.UTF-8 PATH=/usr/sbin:/usr/bin:/sbin:/bin "$@"
}

# field PACKAGE NAME
field() {
    dpkg-deb --field "$packages/$1"_*.deb "$2"
}

# What the package has, without directories and documentation; CONFIG is how it was built.
contents() {
    dpkg-deb --contents "$packages/$1"_*.deb | awk '$6 !~ /\/$/ && $6 !~ /share\/doc/ { print $6 }' |
        sed 's/-targets-[a-z]*[.]cmake/-targets-CONFIG.cmake/' | LC_ALL=C sort
}

@test "each package is named after what it has, its version and the machine" {
    run ls "$packages"
    [[ "$output" == *"libnimba-mgmt-interface-dev_0.1.0-1_amd64.deb"* ]]
    [[ "$output" == *"libnimba-mgmt-interface0_0.1.0-1_amd64.deb"* ]]
    [[ "$output" == *"nimba-tools_0.1.0-1_amd64.deb"* ]]
    [[ "$output" == *"python3-nimba-mgmt_0.1.0-1_all.deb"* ]]
}

@test "the library's package has the library alone, where Debian's loader looks" {
    [ "$(contents libnimba-mgmt-interface0)" = \
        "./usr/lib/x86_64-linux-gnu/libnimba_mgmt_interface.so.0
./usr/lib/x86_64-linux-gnu/libnimba_mgmt_interface.so.0.1.0" ]
}

@test "the development package has header, link, pkg-config file and CMake package" {
    [ "$(contents libnimba-mgmt-interface-dev)" = "./usr/include/nimba_mgmt_interface.h
./usr/lib/x86_64-linux-gnu/cmake/nimba_mgmt_interface/nimba_mgmt_interface-config-version.cmake
./usr/lib/x86_64-linux-gnu/cmake/nimba_mgmt_interface/nimba_mgmt_interface-config.cmake
./usr/lib/x86_64-linux-gnu/cmake/nimba_mgmt_interface/nimba_mgmt_interface-targets-CONFIG.cmake
./usr/lib/x86_64-linux-gnu/cmake/nimba_mgmt_interface/nimba_mgmt_interface-targets.cmake
./usr/lib/x86_64-linux-gnu/libnimba_mgmt_interface.so
./usr/lib/x86_64-linux-gnu/pkgconfig/nimba_mgmt_interface.pc" ]
}

@test "the tools' package has programs, what they need, manual pages and completions" {
    # Machines are known by one of them.
    [ "$(contents nimba-tools | grep -v '/machines/' | sed 's|^[.]/usr/||')" = "bin/nimba-sim
bin/nimba-smi
lib/systemd/system/nimba-exporter.service
libexec/nimba-sim/bin/ps
libexec/nimba-sim/kernel_interface.so
share/bash-completion/completions/nimba-sim
share/bash-completion/completions/nimba-smi
share/fish/vendor_completions.d/nimba-sim.fish
share/fish/vendor_completions.d/nimba-smi.fish
share/man/man1/nimba-sim.1.gz
share/man/man1/nimba-smi-alloc.1.gz
share/man/man1/nimba-smi-capture.1.gz
share/man/man1/nimba-smi-clocks.1.gz
share/man/man1/nimba-smi-completion.1.gz
share/man/man1/nimba-smi-doctor.1.gz
share/man/man1/nimba-smi-dvfs.1.gz
share/man/man1/nimba-smi-export.1.gz
share/man/man1/nimba-smi-flag.1.gz
share/man/man1/nimba-smi-info.1.gz
share/man/man1/nimba-smi-leaks.1.gz
share/man/man1/nimba-smi-list.1.gz
share/man/man1/nimba-smi-mem.1.gz
share/man/man1/nimba-smi-pagetable.1.gz
share/man/man1/nimba-smi-prefer.1.gz
share/man/man1/nimba-smi-ps.1.gz
share/man/man1/nimba-smi-report.1.gz
share/man/man1/nimba-smi-sensors.1.gz
share/man/man1/nimba-smi-top.1.gz
share/man/man1/nimba-smi-usage.1.gz
share/man/man1/nimba-smi-version.1.gz
share/man/man1/nimba-smi.1.gz
share/man/man5/nimba-sim-machine.5.gz
share/nimba-smi/nimba-smi.schema.json
share/nimba-smi/prometheus/nimba-dashboard.json
share/nimba-smi/prometheus/nimba.rules.test.yml
share/nimba-smi/prometheus/nimba.rules.yml
share/nimba-smi/prometheus/prometheus.yml
share/zsh/vendor-completions/_nimba-sim
share/zsh/vendor-completions/_nimba-smi" ]
    [[ $(contents nimba-tools) == *./usr/share/nimba-sim/machines/default.toml* ]]
}

@test "the Python package has modules that are typed, for every machine" {
    run contents python3-nimba-mgmt
    [[ "$output" == *./usr/lib/python3/dist-packages/nimba_mgmt/__init__.py* ]]
    [[ "$output" == *./usr/lib/python3/dist-packages/nimba_mgmt/py.typed* ]]
    [ "$(field python3-nimba-mgmt Architecture)" = all ]
    [ "$(field python3-nimba-mgmt Depends)" = "libnimba-mgmt-interface0 (>= 0.1.0), python3:any (>= 3.11)" ]
}

@test "a package depends on what is loaded and run when it is used" {
    [[ "$(field libnimba-mgmt-interface0 Depends)" == "libdrm2, procps, "*"libc6 (>= "* ]]
    [ "$(field libnimba-mgmt-interface0 Recommends)" = dmidecode ]
    [ "$(field libnimba-mgmt-interface-dev Depends)" = "libnimba-mgmt-interface0 (= 0.1.0-1)" ]
    [[ "$(field nimba-tools Depends)" == \
        "libnimba-mgmt-interface0 (= 0.1.0-1), fuse3, libdrm2, umockdev, "*"libumockdev0"* ]]
}

@test "a package's description begins with what it is" {
    [ "$(field nimba-tools Description | head -n 1)" = \
        "command-line tools for adapters of the Nimba and QV chips" ]
}

@test "programs that are linked to the library get a dependency on its package" {
    [ "$(dpkg-deb --info "$packages"/libnimba-mgmt-interface0_*.deb shlibs)" = \
        "libnimba_mgmt_interface 0 libnimba-mgmt-interface0 (>= 0.1.0)" ]
    [ "$(dpkg-deb --info "$packages"/libnimba-mgmt-interface0_*.deb triggers)" = \
        "activate-noawait ldconfig" ]
}

@test "lintian finds no error" {
    command -v lintian >/dev/null || skip "NOT TESTED: lintian is not installed"
    run lintian --fail-on error --allow-root "$packages"/*.deb
    [ "$status" -eq 0 ]
}

@test "the installed machine does not see the source and build trees" {
    needs_clean_root
    # shellcheck disable=SC2016 # expanded over there
    run installed sh -c 'for tree; do [ ! -e "$tree" ] || find "$tree" -mindepth 1 -print -quit; done' \
        - "$NIMBA_SOURCE_DIR" "$NIMBA_BINARY_DIR"
    [ "$status" -eq 0 ]
    [ -z "$output" ]
}

@test "the tools are found and work together once the packages are installed" {
    needs_clean_root
    run installed nimba-sim run -- nimba-smi list --json
    [ "$status" -eq 0 ]
    [ "$(jq -c '.adapters[] | [.name, .bus_id]' <<<"$output")" = '["Gpu0:Nimba-K1","0000:01:00.0"]' ]
}

@test "nimba-smi does not need the development package" {
    needs_clean_root
    installed dpkg --remove libnimba-mgmt-interface-dev
    run installed nimba-smi version --json
    installed dpkg --install "/media/$(basename "$packages"/libnimba-mgmt-interface-dev_*.deb)"
    [ "$status" -eq 0 ]
    [[ "$(jq -r '.. | strings' <<<"$output")" == \
        *"/usr/lib/x86_64-linux-gnu/libnimba_mgmt_interface.so.0.1.0"* ]]
}

@test "the Python package is found, and finds the library without its development package" {
    needs_clean_root
    installed dpkg --remove libnimba-mgmt-interface-dev
    run installed nimba-sim run -- python3 -c \
        'import nimba_mgmt; print([adapter.bus_id for adapter in nimba_mgmt.adapters()])'
    installed dpkg --install "/media/$(basename "$packages"/libnimba-mgmt-interface-dev_*.deb)"
    [ "$status" -eq 0 ]
    [[ "$output" == *"'0000:01:00.0'"* ]]
}

@test "a C program finds header and library where the compiler looks" {
    needs_clean_root
    installed tee /root/host.c <"$BATS_TEST_DIRNAME/host.c" >/dev/null
    # shellcheck disable=SC2016 # expanded over there
    installed sh -c 'cc -o /root/host /root/host.c $(pkg-config --cflags --libs nimba_mgmt_interface)'
    run installed nimba-sim run -- /root/host
    [ "$status" -eq 0 ]
    [ "${lines[2]}" = "Gpu0:Nimba-K1 0000:01:00.0" ]
}

@test "the manual pages are found" {
    needs_clean_root
    command -v man >/dev/null || skip "NOT TESTED: man is not installed"
    [[ "$(installed man --where nimba-smi)" == /usr/share/man/man1/nimba-smi.1.gz* ]]
}

@test "removing the packages leaves nothing of them" {
    needs_clean_root
    run installed dpkg --purge libnimba-mgmt-interface-dev nimba-tools python3-nimba-mgmt \
        libnimba-mgmt-interface0
    [ "$status" -eq 0 ]
    run installed find /usr /etc /var/lib /opt -iname '*nimba*' -not -path '/var/lib/dpkg/*'
    [ "$status" -eq 0 ]
    [ -z "$output" ]
}
