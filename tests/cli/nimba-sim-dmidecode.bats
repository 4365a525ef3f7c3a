#!/usr/bin/env bats
# SPDX-License-Identifier: MIT
# The real dmidecode on simulated machines: what it tells of their memory.

load ordinary_user.bash
load nimba-sim.bash

teardown_file() {
    drop_ordinary_user_copy
}

# modules KEY...: makes mine.toml, a machine with one module for each argument, the keys of one.
modules() {
    local keys
    echo 'description = "Modules"' >mine.toml
    for keys; do
        printf '[[memory_module]]\n%s\n' "$keys" >>mine.toml
    done
}

# lines_of_memory PATTERN COMMAND...: the lines of these keys that the command prints, in their order.
lines_of_memory() {
    local pattern=$1
    shift
    "$@" | sed -nE "s/^\t($pattern): /\1: /p"
}

@test "a machine that says nothing has two modules of 64 bits on two channels" {
    run --separate-stderr lines_of_memory \
        "Total Width|Data Width|Size|Locator|Bank Locator|Type|Speed" \
        nimba-sim run -- dmidecode -t memory
    [ "$output" = "Total Width: 64 bits
Data Width: 64 bits
Size: 8 GB
Locator: DIMM 0
Bank Locator: BANK 0 CHANNEL A
Type: DDR4
Speed: 3200 MT/s
Total Width: 64 bits
Data Width: 64 bits
Size: 8 GB
Locator: DIMM 1
Bank Locator: BANK 0 CHANNEL B
Type: DDR4
Speed: 3200 MT/s" ]
    [ "$stderr" = "" ]
}

@test "the whole of a machine with one module" {
    modules 'type = "LPDDR5"
total_width = 72
speed = 6400
size_mib = 65536
channel = "C"'
    run --separate-stderr nimba-sim run -m mine.toml -- dmidecode --quiet
    [ "$output" = "Physical Memory Array
	Location: System Board Or Motherboard
	Use: System Memory
	Error Correction Type: None
	Maximum Capacity: 64 GB
	Number Of Devices: 1

Memory Device
	Total Width: 72 bits
	Data Width: 64 bits
	Size: 64 GB
	Form Factor: DIMM
	Set: None
	Locator: DIMM 0
	Bank Locator: BANK 0 CHANNEL C
	Type: LPDDR5
	Type Detail: Synchronous
	Speed: 6400 MT/s
	Manufacturer: Simulated
	Serial Number: Not Specified
	Asset Tag: Not Specified
	Part Number: Not Specified
	Rank: Unknown
	Configured Memory Speed: 6400 MT/s
	Minimum Voltage: Unknown
	Maximum Voltage: Unknown
	Configured Voltage: Unknown" ]
    [ "$stderr" = "" ]
}

@test "dmidecode finds nothing wrong in the tables" {
    modules 'channel = "A"' 'bank_locator = ""' 'size_mib = 0'
    nimba-sim run -m mine.toml -- dmidecode >output 2>errors
    grep -Fx "Getting SMBIOS data from sysfs." output
    grep -Fx "SMBIOS 3.0.0 present." output
    [ ! -s errors ]
    ! grep -iE "wrong|broken|truncated|bad|invalid" output
}

@test "what is not known is said not to be" {
    modules 'type = "unknown"
total_width = 0
data_width = 0
speed = 0
bank_locator = ""'
    run --separate-stderr lines_of_memory "Total Width|Data Width|Bank Locator|Type|Speed" \
        nimba-sim run -m mine.toml -- dmidecode -t memory
    [ "$output" = "Total Width: Unknown
Data Width: Unknown
Bank Locator: Not Specified
Type: Unknown
Speed: Unknown" ]
}

@test "a place may be empty, and there may be none" {
    modules 'size_mib = 0'
    run --separate-stderr lines_of_memory "Number Of Devices|Size" \
        nimba-sim run -m mine.toml -- dmidecode -t memory
    [ "$output" = "Number Of Devices: 1
Size: No Module Installed" ]
    printf 'description = "None"\nmemory_module = []\n' >mine.toml
    run --separate-stderr lines_of_memory "Number Of Devices|Size" \
        nimba-sim run -m mine.toml -- dmidecode -t memory
    [ "$output" = "Number Of Devices: 0" ]
}

@test "every type of memory is the one that dmidecode knows" {
    types=(SDRAM DDR DDR2 DDR3 DDR4 DDR5 LPDDR LPDDR2 LPDDR3 LPDDR4 LPDDR5)
    modules "${types[@]/#/type = \"}"
    sed -i '/^type/s/$/"/' mine.toml
    run --separate-stderr lines_of_memory Type nimba-sim run -m mine.toml -- dmidecode -t memory
    [ "$output" = "$(printf 'Type: %s\n' "${types[@]}")" ]
}

@test "an ordinary user's commands find it and may read what it reads" {
    run --separate-stderr as_ordinary_user bash -c '
        PATH=${PATH%%:*}:/usr/bin:/bin
        if type -P dmidecode; then exit 1; fi
        nimba-sim run -- sh -c "dmidecode -t memory | grep -c \"Total Width: 64 bits\""'
    [ "$output" = 2 ]
    [ "$stderr" = "" ]
}
