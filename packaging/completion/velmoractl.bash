# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of velmoractl for bash.

_velmoractl() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command= each
    for each in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ $each == [a-z]* ]] && command=$each && break
    done
    COMPREPLY=()
    local choices="--json --timeout --help --version"
    case $before in
        --password-file | --secret-file)
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
            return
            ;;
        --timeout | --server | --port | --database | --user | --parameters) return ;;
        --trust) choices="channel-binding certificate" ;;
        fleet) choices="status devices on off test accept limit auto-protect storage remove" ;;
        account) choices="status provider sign-in cancel sign-out check" ;;
        --resume-below) choices="75 70 60" ;;
        limit | auto-protect | storage)
            if [[ $command == fleet ]]; then return; fi # a machine's name
            choices="60 70 80 90 100"
            if [[ $before != limit ]]; then choices="on off"; fi
            ;;
        *)
            case $command in
                "") choices+=" status limit auto-protect storage full pause resume history watch diagnose fleet account help" ;;
                limit) choices+=" --resume-below" ;;
                fleet)
                    case " ${COMP_WORDS[*]} " in
                        *" on "* | *" test "*)
                            choices+=" --this-computer --server --port --database --user --trust --password-file"
                            ;;
                        *" accept "* | *" auto-protect "* | *" storage "*) choices="on off" ;;
                    esac
                    ;;
                account)
                    if [[ " ${COMP_WORDS[*]} " == *" provider "* ]]; then
                        choices+=" --none --parameters --secret --secret-file"
                    fi
                    ;;
                full) choices+=" --cancel" ;;
                history) choices+=" --csv" ;;
            esac
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}
complete -F _velmoractl velmoractl
