# Completion of vtv for bash: source this file, or install it as
# /usr/share/bash-completion/completions/vtv. The words come from vtv itself.
_vtv() {
    local candidates
    mapfile -t candidates < <("${COMP_WORDS[0]}" __complete "${COMP_WORDS[@]:1:COMP_CWORD}" 2>/dev/null)
    COMPREPLY=("${candidates[@]}")
    if [[ ${#COMPREPLY[@]} -eq 0 ]]; then
        compopt -o default
    fi
}
complete -F _vtv vtv
