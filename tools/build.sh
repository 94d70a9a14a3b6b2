# Shared by ./run and ./test: what to install, how to build, how to speak. Sourced, never run.
# shellcheck shell=bash

say() { printf '== %s\n' "$*"; }

# stop SENTENCE [CODE]
stop() {
    printf '!! %s\n' "$1" >&2
    exit "${2:-1}"
}

# install_packages LIST...: installs what the lists name and this machine lacks. Touches nothing when
# all is there, so that both commands work offline from the second time on.
install_packages() {
    command -v dpkg-query >/dev/null || stop "this is not a Debian machine; install what $* name by hand, then build with cmake --preset release"
    local wanted missing=() present name
    mapfile -t wanted < <(sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' "$@")
    # It fails as soon as one package is unknown to it, and still tells of all the others.
    present=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null) || true
    for name in "${wanted[@]}"; do
        [[ $'\n'$present$'\n' == *$'\n'"$name installed"$'\n'* ]] || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "installing ${#missing[@]} packages: ${missing[*]}"
    # An index that cannot be renewed may still be good enough; if not, the second line says so.
    local script='export DEBIAN_FRONTEND=noninteractive
        apt-get update -q || echo "!! the package lists could not be renewed" >&2
        exec apt-get install -q -y --no-install-recommends "$@"'
    if [ "$(id -u)" -eq 0 ]; then
        sh -c "$script" sh "${missing[@]}" || stop "apt-get could not install: ${missing[*]}"
    elif command -v sudo >/dev/null; then
        sudo sh -c "$script" sh "${missing[@]}" || stop "apt-get could not install: ${missing[*]}"
    else
        stop "these packages are missing, and there is neither root nor sudo to install them: ${missing[*]}"
    fi
}

# build PRESET TARGET...: configures once and builds only what changed.
build() {
    local preset=$1
    shift
    # A folder that was moved or copied along with its build cannot go on with it.
    if [ -f "build/$preset/CMakeCache.txt" ] &&
        ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$PWD" "build/$preset/CMakeCache.txt"; then
        say "this folder has moved: building anew"
        rm -rf "build/$preset"
    fi
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "configuring build/$preset"
        mkdir -p build
        cmake --preset "$preset" >"build/$preset.log" 2>&1 || {
            cat "build/$preset.log" >&2
            stop "cmake --preset $preset failed"
        }
    fi
    say "building $* in build/$preset"
    cmake --build --preset "$preset" --target "$@" || stop "the build failed; its first error stands above"
}

# Qt wants a private runtime folder; a bare machine or a container may have none.
ensure_runtime_folder() {
    [ -n "${XDG_RUNTIME_DIR:-}" ] && [ -d "$XDG_RUNTIME_DIR" ] && return
    XDG_RUNTIME_DIR="${TMPDIR:-/tmp}/zv-runtime-$(id -u)"
    mkdir -m 0700 "$XDG_RUNTIME_DIR" 2>/dev/null || true
    # Somebody else may have taken the name.
    if [ -L "$XDG_RUNTIME_DIR" ] || [ ! -d "$XDG_RUNTIME_DIR" ] || [ ! -O "$XDG_RUNTIME_DIR" ]; then
        XDG_RUNTIME_DIR=$(mktemp -d "${TMPDIR:-/tmp}/zv-runtime-XXXXXX") || stop "no temporary folder can be made"
    fi
    export XDG_RUNTIME_DIR
}

# Shared by all tests, so that none depends on the machine's own folders.
use_test_home() {
    export HOME="$PWD/build/asan/home" XDG_DATA_HOME="$PWD/build/asan/home/data"
    mkdir -p "$HOME" "$XDG_DATA_HOME"
}
