# Debian's packages: which ones, and how they get here. Sourced, not run.
# shellcheck shell=bash disable=SC2034

# For ./run, and for whatever builds.
PACKAGES=(
    cmake g++ gettext ninja-build pkg-config
    libcli11-dev libespeak-ng-dev libjsoncpp-dev libtomlplusplus-dev
)
# What ./run window needs beside them: the toolkit, and the fonts of the page.
WINDOW_PACKAGES=(fonts-dejavu-core fonts-wqy-microhei libefl-all-dev libpng-dev)
# For the tests of every room. Those of the provider alone need googletest.
TEST_PACKAGES="googletest libvalijson-dev mount python3 zsh"

# For the packages of a release.
DEB_PACKAGES="debhelper fakeroot lintian ${WINDOW_PACKAGES[*]}"

APT_LOG=
LISTS_ARE_FRESH=false

# Installs what is missing of the named packages. Fails, after three tries, when some still are.
# Nothing is fetched, and no network is needed, when nothing is missing.
install_packages() {
    local tries=${INSTALL_TRIES:-3} try missing
    for ((try = 1; try <= tries; ++try)); do
        mapfile -t missing < <(missing_packages "$@")
        ((${#missing[@]} > 0)) || return 0
        ((EUID == 0)) || command -v sudo >/dev/null ||
            die "packages are missing and there is no sudo; as root: apt-get install ${missing[*]}"
        if ((try > 1)); then
            say "Trying again ($try of $tries): $(apt_failure)"
            sleep $((try * 3))
            LISTS_ARE_FRESH=false
        fi
        say "Installing from Debian: ${missing[*]}"
        apt_install "${missing[@]}" || true
    done
    [[ -z $(missing_packages "$@") ]]
}

missing_packages() {
    command -v dpkg-query >/dev/null || die "this needs Debian 12 with the packages: $*"
    local native package architecture
    native=$(dpkg --print-architecture)
    for package in "$@"; do
        architecture=$native
        [[ $package != *:* ]] || architecture=${package#*:}
        dpkg-query -W -f '${Architecture} ${db:Status-Status}\n' "${package%:*}" 2>/dev/null |
            grep -xE "($architecture|all) installed" >/dev/null || printf '%s\n' "$package"
    done
}

apt_install() {
    [[ -n $APT_LOG ]] || APT_LOG=$(mktemp --tmpdir si-ready-packages.XXXXXX)
    {
        add_architectures "$@"
        # An index of one suite that cannot be fetched today need not matter to these packages.
        $LISTS_ARE_FRESH || apt update || say "apt-get update reported errors; going on"
        LISTS_ARE_FRESH=true
        apt install --no-install-recommends "$@"
    } >"$APT_LOG" 2>&1
}

add_architectures() {
    local package architecture
    for package in "$@"; do
        architecture=${package#*:}
        if [[ $architecture != "$package" ]] &&
            ! dpkg --print-foreign-architectures | grep -x "$architecture" >/dev/null; then
            as_root dpkg --add-architecture "$architecture"
            LISTS_ARE_FRESH=false
        fi
    done
}

apt() {
    as_root env DEBIAN_FRONTEND=noninteractive apt-get -y -q -o DPkg::Lock::Timeout=300 "$@"
}

# Whether Debian's registry answered, and lacks today what is missing: not there, or not to be had with what else is
# installed. A registry that cannot be reached may have everything.
registry_lacks() {
    [[ -n $(missing_packages "$@") && -n $APT_LOG ]] &&
        grep -qE "$LACKING" "$APT_LOG" && ! grep -qE "$UNREACHABLE" "$APT_LOG"
}
LACKING='Unable to locate package|no installation candidate|unmet dependencies|held broken packages| 40[34] '
UNREACHABLE='Could not resolve|[Cc]ould not connect|Unable to connect|Connection (failed|refused|timed out)|Temporary failure'

# Why the named packages are not here, in one line.
not_installed() {
    local missing
    mapfile -t missing < <(missing_packages "$@")
    say "cannot install ${missing[*]} ($(apt_failure)); by hand: apt-get install ${missing[*]}"
}

apt_failure() {
    grep -E '^E: |^sudo: |not found' "$APT_LOG" 2>/dev/null | tail -n 1 | sed 's/^E: //' | grep . ||
        say "apt-get said nothing; see $APT_LOG"
}
