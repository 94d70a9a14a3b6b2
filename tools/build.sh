# Shared by ./run and ./test: what to install, how to build, how to speak. Sourced, never run.
# shellcheck shell=bash

say() { printf '== %s\n' "$*"; }
stop() {
    printf '!! %s\n' "$*" >&2
    exit 1
}

# Installs what packages.txt names and this machine lacks. Touches nothing when all is there, so
# that both commands work offline from the second time on.
install_packages() {
    command -v dpkg-query >/dev/null || stop "this is not a Debian machine; install what packages.txt names by hand, then build with cmake --preset release"
    local wanted missing=() name
    mapfile -t wanted < <(sed -e 's/#.*//' -e '/^[[:space:]]*$/d' packages.txt)
    for name in "${wanted[@]}"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$name" 2>/dev/null)" = installed ] || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return
    say "installing ${#missing[@]} packages: ${missing[*]}"
    local script='export DEBIAN_FRONTEND=noninteractive
        apt-get update -q && apt-get install -q -y --no-install-recommends "$@"'
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
    if [ ! -f "build/$preset/build.ninja" ]; then
        say "configuring build/$preset"
        cmake --preset "$preset" >"build-$preset.log" 2>&1 || {
            cat "build-$preset.log" >&2
            rm -f "build-$preset.log"
            stop "cmake --preset $preset failed"
        }
        rm -f "build-$preset.log"
    fi
    local out
    if out=$(cmake --build --preset "$preset" --target "$@" -- -n 2>/dev/null) &&
        [[ $out == *"no work to do"* ]]; then
        return
    fi
    say "building $* (build/$preset)"
    cmake --build --preset "$preset" --target "$@" || stop "the build failed; the first error stands above"
}

# Qt wants a private runtime folder; a bare machine or a container may have none.
ensure_runtime_folder() {
    if [ -z "${XDG_RUNTIME_DIR:-}" ] || [ ! -d "$XDG_RUNTIME_DIR" ]; then
        XDG_RUNTIME_DIR=$(mktemp -d "${TMPDIR:-/tmp}/zv-runtime-XXXXXX") || stop "no temporary folder can be made"
        export XDG_RUNTIME_DIR
    fi
}
