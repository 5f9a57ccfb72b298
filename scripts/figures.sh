# How long each leg takes: measured by ./test, kept in docs/testing.md. Sourced, not run.
# shellcheck shell=bash

FIGURES=build/logs/figures
FIGURES_PAGE=docs/testing.md
FIGURES_HEADING='## The last deep run'

# minutes_of LEG all|deep: what the page says.
minutes_of() {
    local column=3
    [[ $2 == all ]] || column=4
    figures_section | awk -F ' *[|] *' -v leg="$1" -v column=$column '$2 == leg { print $column }'
}

figures_section() { sed -n "/^$FIGURES_HEADING\$/,/^## /p" "$FIGURES_PAGE"; }

# keep_figures LEG SECONDS WORD TEXT: for scripts/figures.
keep_figures() {
    local folder=$FIGURES/all
    ! deep || folder=$FIGURES/deep
    mkdir -p "$folder"
    printf '%s\t%s %s\n' "$2" "$3" "$4" >"$folder/$1"
    git rev-parse --short HEAD >"$folder.commit" 2>/dev/null || true
}
