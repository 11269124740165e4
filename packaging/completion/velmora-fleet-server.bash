# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of velmora-fleet-server for bash.

_velmora_fleet_server() {
    local word=${COMP_WORDS[COMP_CWORD]} choices="setup add remove check"
    case ${COMP_WORDS[COMP_CWORD - 1]} in
    --trust) choices="channel-binding certificate" ;;
    --admin-password-file | --password-file)
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    --host | --port | --database | --admin | add | remove) choices="" ;;
    *) if [[ $COMP_CWORD -gt 1 ]]; then
        choices="--host --port --database --admin --trust --admin-password-file --password-file"
    elif [[ $word == -* ]]; then
        choices="--help --version"
    fi ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}
complete -F _velmora_fleet_server velmora-fleet-server
