# The Debian packages that Velmora is built, run and tested with, and how it is built. Sourced by ./run, ./test and
# ./bench/run.

build_packages=(g++ cmake ninja-build pkg-config libsystemd-dev nlohmann-json3-dev libfuse3-dev)
run_packages=(dbus fuse3)
test_packages=(libgtest-dev libgmock-dev clang-format)
all_packages=(clang clang-tidy libclang-rt-14-dev)

# need PACKAGE... : installs those that are missing, and calls apt only if there are any.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    echo "Installing: ${missing[*]}"
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "These packages are missing, and only root can install them: ${missing[*]}" >&2
            exit 1
        }
        as_root=(sudo)
    fi
    "${as_root[@]}" apt-get update -qq
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
}

# build PRESET [CMAKE-OPTION...] : configures and builds all; what the tools say is shown only where it fails.
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    echo "Building ($preset) ..."
    if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        echo "The build failed; see above." >&2
        exit 1
    fi
    rm -f "$log"
}
