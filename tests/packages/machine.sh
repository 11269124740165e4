# A fresh Debian with a systemd of its own, in namespaces, over a simulated laptop and before a virtual display. Sourced, with
# $release (bookworm or trixie). Needs root, the network, mmdebstrap, systemd-container, xvfb, xauth, and velmora-laptop of the
# release build. What is unpacked stays in build/trees, what a machine writes goes with it.

tree=$PWD/build/trees/$release
work=$(mktemp -d "$PWD/build/life.XXXXXX")
container=(systemd-nspawn -q --register=no --keep-unit --resolv-conf=copy-host --machine="velmora-$$")
machine='' failed=0 started=()

finish() {
    trap - EXIT INT TERM
    [ -z "$machine" ] || kill -9 "$machine" 2>/dev/null || true
    [ ${#started[@]} -eq 0 ] || kill "${started[@]}" 2>/dev/null || true
    wait || true
    local mounted
    for mounted in "$work"/*/root "$work/laptop"; do
        ! mountpoint -q "$mounted" || umount -l "$mounted"
    done
    rmdir "/run/systemd/nspawn/propagate/velmora-$$" 2>/dev/null || true
    if [ $failed -eq 0 ]; then rm -rf "$work"; else echo "What was said is in $work." >&2; fi
    exit $failed
}
trap 'failed=1; finish' INT TERM
trap '[ $? -eq 0 ] || failed=1; finish' EXIT

step() { printf -- '-- %s\n' "$*"; }
check() { # WHAT IS WANTED
    if [ "$2" = "$3" ]; then echo "ok: $1"; return; fi
    printf 'NOT %s:\n  is     %s\n  wanted %s\n' "$1" "$2" "$3" >&2
    failed=1
}
await() { # until the rest holds
    local tries=0
    until "$@" >/dev/null 2>&1; do
        [ $((tries += 1)) -lt 600 ] || { echo "no: $*" >&2; failed=1; exit 1; }
        sleep 0.1
    done
}

# fresh NAME : the fresh Debian, to be changed at will, at $work/NAME/root.
fresh() {
    if [ ! -d "$tree" ]; then
        step "a fresh $release"
        mkdir -p "${tree%/*}"
        mmdebstrap --mode=root --variant=minbase --include=systemd,systemd-sysv,dbus,polkitd,libpam-systemd \
            "$release" "$tree.new" >"$work/tree.log" 2>&1
        mv "$tree.new" "$tree"
    fi
    mkdir -p "$work/$1"/{root,changes,overlay}
    mount -t overlay overlay -o "lowerdir=$tree,upperdir=$work/$1/changes,workdir=$work/$1/overlay" "$work/$1/root"
}
# in_tree NAME COMMAND... : in one that is not started; with the network.
in_tree() { "${container[@]}" --pipe -D "$work/$1/root" "${@:2}"; }

# A display, for programs on any host that have the cookie. It would begin anew, and drop who comes then, with its last client.
start_display() {
    local cookie
    cookie=$(mcookie)
    touch "$work/given" "$work/cookie"
    xauth -q -f "$work/cookie" add :0 . "$cookie" # the server asks for the cookie alone, whatever the display's number
    Xvfb -displayfd 6 -screen 0 1280x860x24 -noreset -nolisten tcp -auth "$work/cookie" \
        6>"$work/number" 2>"$work/display.log" &
    started+=($!)
    await test -s "$work/number"
    export DISPLAY=:$(cat "$work/number") XAUTHORITY=$work/cookie
    xauth -q -f "$work/given" add "$DISPLAY" . "$cookie"
    xauth -q -f "$work/given" nlist "$DISPLAY" | sed 's/^..../ffff/' | xauth -q nmerge -
}
start_laptop() {
    mkdir "$work/laptop"
    mkfifo "$work/orders"
    exec 4<>"$work/orders" # its input never ends
    build/bin/velmora-laptop --into "$work/laptop" --speed 1 <"$work/orders" >"$work/laptop.log" 2>&1 &
    started+=($!)
    await mountpoint "$work/laptop"
    charger=$work/laptop/class/power_supply/BAT0
}
# start_machine NAME : without a network. The unit finds the laptop where the kernel has it: supplies are links to devices, and
# devices alone may be written to.
start_machine() {
    start_display
    start_laptop
    "${container[@]}" --private-network --bind="$work/laptop:/laptop" --bind=/tmp/.X11-unix:/screen -D "$work/$1/root" -b \
        </dev/null >"$work/boot.log" 2>&1 &
    boot=$!
    started+=($boot)
    await is_up
    inside sh -c 'mount -t tmpfs tmpfs /sys/devices && mkdir /sys/devices/laptop
        mount --rbind /laptop/class/power_supply /sys/devices/laptop
        mount -t tmpfs tmpfs /sys/class/power_supply && ln -s /sys/devices/laptop/* /sys/class/power_supply
        mkdir -p /tmp/.X11-unix && mount --bind /screen /tmp/.X11-unix'
    install -m 644 "$work/cookie" "$work/$1/root/home/cookie"
}
is_up() { # its first process is not the first child of the program that starts it
    machine=$(cut -d ' ' -f 1 "/proc/$boot/task/$boot/children") && inside systemctl is-active multi-user.target
}
inside() { nsenter -t "$machine" -m -u -i -n -p -C env -i PATH=/usr/sbin:/usr/bin DEBIAN_FRONTEND=noninteractive "$@"; }
session() { # USER COMMAND... : in front of the machine
    inside systemd-run --wait --pipe -q -p User="$1" -p PAMName=login -E XDG_SEAT=seat0 -E XDG_SESSION_TYPE=x11 \
        -E XDG_SESSION_CLASS=user -E DISPLAY="$DISPLAY" -E XAUTHORITY=/home/cookie "${@:2}" 2>&1
}
from_afar() { inside setpriv --reuid="$1" --regid="$1" --init-groups env HOME="/home/$1" "${@:2}" 2>&1; } # USER COMMAND...

thresholds() { echo "$(cat "$charger/charge_control_start_threshold") to $(cat "$charger/charge_control_end_threshold")"; }
holds() { [ "$(thresholds)" = "$1" ]; }
hold() { echo "$1" >"$charger/charge_control_start_threshold"; echo "$2" >"$charger/charge_control_end_threshold"; }
