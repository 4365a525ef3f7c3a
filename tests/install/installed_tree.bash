# SPDX-License-Identifier: MIT
# For bats files that look at an installed tree. The environment names the build tree that is
# installed (NIMBA_BINARY_DIR), its library directory (NIMBA_LIBDIR, such as "lib") and the options
# that the tree's C programs are compiled with (CFLAGS).

# Installs the build tree into a scratch prefix of the bats file.
install_tree() {
    export prefix="$BATS_FILE_TMPDIR/prefix"
    cmake --install "$NIMBA_BINARY_DIR" --prefix "$prefix" > "$BATS_FILE_TMPDIR/install.log"
    export libdir="$prefix/$NIMBA_LIBDIR"
    export PKG_CONFIG_PATH="$libdir/pkgconfig"
    export LD_LIBRARY_PATH="$libdir${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}"
}

# Compiles host.c to $1 as a user would, with the installed pkg-config file.
compile_host() {
    # shellcheck disable=SC2046,SC2086 # lists of options
    ${CC:-cc} -std=c11 -Wall -Wextra -Wpedantic -Werror ${CFLAGS:-} -o "$1" \
        "$BATS_TEST_DIRNAME/host.c" $(pkg-config --cflags --libs nimba_mgmt_interface)
}
