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
        --timeout) return ;;
        --resume-below) choices="75 70 60" ;;
        limit) choices="60 70 80 90 100" ;;
        auto-protect | storage) choices="on off" ;;
        *)
            case $command in
                "") choices+=" status limit auto-protect storage full pause resume history watch diagnose help" ;;
                limit) choices+=" --resume-below" ;;
                full) choices+=" --cancel" ;;
                history) choices+=" --csv" ;;
            esac
            ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}
complete -F _velmoractl velmoractl
