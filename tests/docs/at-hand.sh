# What the pages take for granted that their reader has. Sourced where the sources lie, before each page.
# shellcheck shell=bash

# Two builds of the provider, one of them as for a TV, and two policies.
cp build/release/lib/libsi-ready.so old.so
cp build/release/lib/libsi-ready.so new.so
mkdir -p build/my-tv/lib && cp old.so build/my-tv/lib/libsi-ready.so
vtv policy show --json >old.json 2>/dev/null
cp old.json new.json
rm -rf "$HOME/.local" # the page starts without a TV

# A model of one's own.
cp virtual-tv/tvs/single-assistant-gb.toml my-model.toml

# What vtv explore tries, with a few policies: each proof of the pages is made whole by a test of its own.
export VTV_EXPLORER_DATA=$HOME/few-policies
mkdir "$VTV_EXPLORER_DATA"
awk '/^\[\[policy\]\]/ && ++policies > 4 { exit } 1' explorer/inputs.toml >"$VTV_EXPLORER_DATA/inputs.toml"
