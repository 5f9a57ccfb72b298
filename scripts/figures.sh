# How long each leg takes: measured by ./test, kept in docs/testing.md. Sourced, not run.
# shellcheck shell=bash disable=SC2016

FIGURES=build/logs/figures
FIGURES_PAGE=docs/testing.md
FIGURES_HEADING='## The last deep run'

# minutes_of LEG all|deep: what the page says.
minutes_of() {
    local column=3
    [[ $2 == all ]] || column=4
    figures_cell "$1" "$column"
}

# figures_cell LEG COLUMN: counted from 1, the leg's name being the second.
figures_cell() {
    sed -n "/^$FIGURES_HEADING\$/,/^## /p" "$FIGURES_PAGE" |
        awk -F ' *[|] *' -v leg="$1" -v column="$2" '$2 == leg { print $column }'
}

# keep_figures LEG SECONDS WORD TEXT: for scripts/figures.
keep_figures() {
    local kind kinds=(all) commit
    ! deep || kinds=(deep)
    [[ -n ${LEG_SAMPLE[$1]:-} ]] || kinds=(all deep) # it does the same in both
    commit=$(git rev-parse --short HEAD 2>/dev/null || say unknown)
    for kind in "${kinds[@]}"; do
        mkdir -p "$FIGURES/$kind"
        printf '%s\t%s %s\t`%s` %(%F)T\n' "$2" "$3" "$4" "$commit" -1 >"$FIGURES/$kind/$1"
    done
}
