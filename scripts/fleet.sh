# A fleet of simulated machines beside the one with the display, and the place of their records. Sourced by ./run, after
# stage.sh.

place=(--this-computer) # of the records, as velmoractl takes it

# What each machine is called, what laptop it is, and how full it is at the beginning.
machine_names=(Study Kitchen Loft Office Van Workshop Cabin Attic)
machine_kinds=(thresholds end-only two-batteries conservation-mode long-life)
machine_levels=(70 42 88 23 97 55 12 64)

# machine_name NUMBER : from 1, which is the one with the display.
machine_name() { echo "${machine_names[$1 - 1]}"; }

# name_machine NUMBER : as /etc/machine-info would.
name_machine() { echo "PRETTY_HOSTNAME=\"$(machine_name "$1")\"" >"$VELMORA_MACHINE_INFO"; }

# on_machine NUMBER COMMAND... : does it there: in the folder, on the buses and over the laptop of that machine.
on_machine() {
    local number=$1
    shift
    [ "$number" -gt 1 ] || { "$@"; return; }
    local scene=$scene/machine$number
    local -x DBUS_SYSTEM_BUS_ADDRESS=unix:path=$scene/system DBUS_SESSION_BUS_ADDRESS=unix:path=$scene/session
    local -x STATE_DIRECTORY=$scene/state XDG_DATA_HOME=$scene/data XDG_CONFIG_HOME=$scene/config XDG_RUNTIME_DIR=$scene
    local -x VELMORA_SYSFS=$scene/sys VELMORA_MACHINE_INFO=$scene/machine-info DISPLAY='' WAYLAND_DISPLAY=''
    "$@"
}

# start_machine NUMBER : there, a laptop with a daemon, and the application of a user without a screen.
start_machine() {
    local name
    name=$(machine_name "$1")
    mkdir -p "$scene/state"
    chmod 700 "$scene"
    name_machine "$1"
    start_bus system
    start_bus session
    start keyring
    start build/bin/velmora-laptop --into "$scene/sys" --laptop "${machine_kinds[($1 - 1) % ${#machine_kinds[@]}]}" \
        --level "${machine_levels[$1 - 1]}" --speed "$speed" </dev/null > >(sed -un 's/^ready.*$//p' >&5)
    await "The laptop $name"
    start build/bin/velmora-servicemanager --enabled build/bin/velmorad > >(sed -un 's/^ready$//p' >&5) 2> >(logged "$name")
    await "The service manager of $name"
    start build/bin/velmora --background 2> >(logged "$name")
}

# secret FILE : a new password in a file that nobody else may use.
secret() { (umask 077 && head -c 18 /dev/urandom | base64 >"$1"); }

# start_server : PostgreSQL with a certificate of its own, set up as an administrator does it, with one person.
start_server() {
    local home=$scene.server programs port user=()
    programs=$(printf '%s\n' /usr/lib/postgresql/*/bin | sort -V | tail -1)
    port=$(shuf -i 20000-59999 -n 1)
    mkdir -m 700 "$home"
    secret "$scene/admin-password"
    secret "$scene/password"
    cp "$scene/admin-password" "$home/password"
    openssl req -x509 -newkey rsa:2048 -nodes -days 2 -subj /CN=localhost \
        -keyout "$home/key" -out "$home/certificate" 2>"$scene/complaints"
    if [ "$(id -u)" -eq 0 ]; then # it refuses to run as root
        chown -R nobody "$home"
        user=(setpriv --reuid=nobody --regid=nogroup --clear-groups)
    fi
    user+=(env -i "PATH=$PATH" LC_ALL=C.UTF-8)
    "${user[@]}" "$programs/initdb" -D "$home/data" -U admin --pwfile="$home/password" -A scram-sha-256 -E UTF8 \
        --no-locale -N >"$scene/complaints" 2>&1 || { cat "$scene/complaints" >&2; finish 1; }
    start "${user[@]}" "$programs/postgres" -D "$home/data" -p "$port" -c listen_addresses=127.0.0.1 \
        -c unix_socket_directories= -c ssl=on -c ssl_key_file="$home/key" -c ssl_cert_file="$home/certificate" \
        >"$scene/server.log" 2>&1
    local there=(--host 127.0.0.1 --port "$port" --admin admin --admin-password-file "$scene/admin-password")
    if ! within 20 build/bin/velmora-fleet-server setup "${there[@]}" ||
        ! build/bin/velmora-fleet-server add ada "${there[@]}" --password-file "$scene/password"; then
        build/bin/velmora-fleet-server check "${there[@]}" >&2 || true
        echo "The PostgreSQL server could not be set up." >&2
        finish 1
    fi
    place=(--server 127.0.0.1 --port "$port" --user ada --password-file "$scene/password")
    echo "A PostgreSQL server for the fleet's records: 127.0.0.1, port $port."
}

# In the fleet, this machine's velmora has heard of its battery.
takes_part() { build/bin/velmoractl fleet on "${place[@]}" && build/bin/velmoractl status; }

# are_known COUNT : so many machines have told what is in force on them.
are_known() { [ "$(build/bin/velmoractl fleet devices --json | grep -o '"limitInForce"' | wc -l)" -eq "$1" ]; }

# start_fleet COUNT : the machines from the second one on, and all of them in one fleet.
start_fleet() {
    local number
    for ((number = 2; number <= $1; number++)); do on_machine "$number" start_machine "$number"; done
    for ((number = 1; number <= $1; number++)); do
        on_machine "$number" within 30 takes_part || {
            on_machine "$number" takes_part >&2 || true
            echo "$(machine_name "$number") could not join the fleet." >&2
            finish 1
        }
    done
    within 75 are_known "$1" || echo "Not all machines of the fleet have told of themselves." >&2
    echo "A fleet of $1, as $(machine_name 1) sees it:"
    build/bin/velmoractl fleet devices
}

# command_machine NUMBER PERCENT : from the first one.
command_machine() {
    echo "$(machine_name 1): velmoractl fleet limit $(machine_name "$1") $2"
    build/bin/velmoractl fleet limit "$(machine_name "$1")" "$2"
}
is_commanded() { build/bin/velmoractl fleet devices --json | grep -qE "\"remoteChargeLimit\": ?$1[.,}]"; }

# await_command NUMBER PERCENT : until that machine's daemon holds it, a minute at most; shows what it says then.
await_command() {
    local commanded=$SECONDS
    on_machine "$1" within 70 holds_limit "$2" || { echo "The command has not reached $(machine_name "$1")." >&2; return 0; }
    echo "$(machine_name "$1"), $((SECONDS - commanded)) seconds later: velmoractl"
    on_machine "$1" build/bin/velmoractl
}
holds_limit() { build/bin/velmoractl status --json | grep -qE "\"customChargeLimit\": ?$1[.,}]"; }
