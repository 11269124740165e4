# SPDX-FileCopyrightText: 2026 The Velmora developers
# SPDX-License-Identifier: GPL-3.0-or-later
# Completion of velmora for bash.

_velmora() {
    local word=${COMP_WORDS[COMP_CWORD]} choices=""
    if [[ $COMP_CWORD -eq 1 ]]; then
        choices="--background --panel --dashboard --widget --quit --help --version"
    elif [[ ${COMP_WORDS[COMP_CWORD - 1]} == --widget ]]; then
        choices="small medium"
    fi
    mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}
complete -F _velmora velmora
