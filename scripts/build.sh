# Configuring and building one preset. Sourced, not run; expects the repository as the working folder.

# A ccache that belongs to this checkout's user; CI machines start with an empty one.
export CCACHE_MAXSIZE="${CCACHE_MAXSIZE:-2G}"

# build_preset PRESET [TARGET...]: quiet when all is well, the compiler's words when it is not.
build_preset() {
    local preset=$1
    shift
    local log="build/$preset.log"
    mkdir -p build
    echo "Building $preset (the words of cmake and the compiler are in $log)"
    if ! cmake --preset "$preset" >"$log" 2>&1; then
        tail -n 40 "$log" >&2
        return 1
    fi
    local targets=()
    [ $# -gt 0 ] && targets=(--target "$@")
    if ! cmake --build --preset "$preset" "${targets[@]}" >>"$log" 2>&1; then
        grep -E -A 12 'error|FAILED|undefined reference' "$log" | head -n 80 >&2
        echo "The build failed; all of it is in $log." >&2
        return 1
    fi
}
