# The Debian packages that Velmora is built, run and tested with, and how it is built. Sourced by ./run, ./test,
# ./package and ./bench/run.

build_packages=(g++ cmake ninja-build pkg-config libsystemd-dev nlohmann-json3-dev libfuse3-dev libxcb1-dev
    libical-dev libsqlite3-dev libpq-dev libcurl4-openssl-dev libcjose-dev libjansson-dev libssl-dev
    qt6-base-dev qt6-declarative-dev qt6-declarative-dev-tools qt6-svg-dev)
run_packages=(dbus systemd fuse3 qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript
    qml6-module-qtquick qml6-module-qtquick-layouts qml6-module-qtquick-templates)
screen_packages=(xvfb xauth dunst gnome-keyring libsecret-tools) # where there is no display
picture_packages=(imagemagick xdotool) # for a picture of it with the panel that a click opens
server_packages=(postgresql openssl) # for a fleet whose records a server keeps
account_packages=(curl libsecret-tools xdg-utils) # for a sign-in with an identity provider of ours, which npm installs
tray_programs=(cbatticon fdpowermon lxqt-powermanagement xfce4-power-manager) # what Velmora is measured beside
test_packages=(libgtest-dev libgmock-dev python3 xvfb xauth xdotool at-spi2-core gir1.2-atspi-2.0 python3-gi
    openbox tint2 dunst gnome-keyring libsecret-tools systemd polkitd appstream desktop-file-utils postgresql)
machine_packages=(mmdebstrap systemd-container) # for a fresh Debian with a systemd of its own
case $(. /etc/os-release && echo "${VERSION_ID-}") in
    12) clang=14 test_packages+=(clang-format-14) ;; # the one version that the format is checked with
    *) clang=19 build_packages+=(liblayershellqtinterface-dev libwayland-dev) run_packages+=(layer-shell-qt) ;; # before, it was Qt 5's
esac
clang_packages=(clang "libclang-rt-$clang-dev")
all_packages=("${clang_packages[@]}" clang-tidy libecal2.0-dev evolution-data-server)

# as_root WHAT COMMAND... : as root; where that cannot be, ends and says that WHAT is missing.
as_root() {
    local what=$1
    shift
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        echo "These packages are missing, and only root can install them: $what" >&2
        exit 1
    fi
}

# need PACKAGE... : installs those that are missing, and calls apt only if there are any.
need() {
    local missing=() package
    for package in "$@"; do
        dpkg-query --show --showformat='${db:Status-Status}\n' "$package" 2>/dev/null | grep -qx installed ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] || apt_get "${missing[*]}" install "${missing[@]}"
}

# Many people have another one than Debian's, with which that does not go together.
need_npm() { command -v npm >/dev/null || need npm; }

# Installs what debian/control says that the packages are built with.
need_to_build_packages() {
    local missing
    missing=$(dpkg-checkbuilddeps 2>&1) || apt_get "${missing##*: }" build-dep ./
}

# apt_get WHAT COMMAND... : that command of apt-get, which installs WHAT.
apt_get() {
    echo "Installing: $1"
    as_root "$1" apt-get update -qq
    as_root "$1" env DEBIAN_FRONTEND=noninteractive apt-get "$2" -y -qq --no-install-recommends "${@:3}" >/dev/null
}

# [target=TARGET] build PRESET [CMAKE-OPTION...] : configures and builds the target, all without one; what the tools say
# is shown only where it fails.
build() {
    local preset=$1 log
    shift
    log=$(mktemp)
    echo "Building ($preset) ..."
    if ! { cmake --preset "$preset" "$@" && cmake --build --preset "$preset" ${target:+--target "$target"}; } >"$log" 2>&1; then
        cat "$log" >&2
        rm -f "$log"
        echo "The build failed; see above." >&2
        exit 1
    fi
    rm -f "$log"
}
