# A Debian 12 of its own in a folder: made, used and removed. Sourced, not run.
# shellcheck shell=bash disable=SC2016 # text for other programs is not expanded
#
# Whoever sources it sets MACHINE, the folder, and starts itself again inside with on_a_machine; what is mounted
# there, and what runs there, goes with the first process inside.

USER_NAME=

# on_a_machine ARGUMENTS...: runs this program again, as "--inside ARGUMENTS...", where it may mount. Ends with 77 and a
# line "skip: WHY" where no machine can be made.
on_a_machine() {
    local why
    why=$(cannot_make_machine)
    if [[ -n $why ]]; then
        say "skip: $why"
        exit "$CANNOT_RUN"
    fi
    [[ -z $(git status --porcelain --untracked-files=no) ]] || say "What is not committed is not tried: HEAD is cloned."
    mkdir -p build
    exec 9>"$MACHINE.lock"
    flock -n 9 || die "it runs already in this checkout"
    trap leave_machine EXIT
    trap 'exit 130' INT
    trap 'exit 143' TERM HUP
    remove_machine
    # Mounts and processes are the machine's own: all go when its first process does, whatever ends this one.
    setpriv --pdeathsig KILL unshare --mount --pid --fork --kill-child --mount-proc -- "$0" --inside "$@" &
    inside=$!
    wait "$inside"
}

cannot_make_machine() {
    if ((EUID != 0)); then
        say "making a machine needs root"
    elif ! command -v mmdebstrap >/dev/null; then
        say "making a machine needs mmdebstrap: apt-get install mmdebstrap"
    elif [[ ! -e .git ]]; then
        say "these sources are no git clone"
    elif ! unshare --mount --pid --fork --mount-proc chroot / true 2>/dev/null; then
        say "this machine lets nobody mount or change the root folder"
    fi
}

leave_machine() {
    [[ -z ${inside:-} ]] || kill -KILL "$inside" 2>/dev/null || true
    wait
    remove_machine
}

# What runs there may need a moment to end.
remove_machine() {
    local try
    for try in 1 2 3 4 5; do
        rm -rf --one-file-system "$MACHINE" 2>/dev/null && return
        sleep "$try"
    done
    rm -rf --one-file-system "$MACHINE"
}

# --- Inside --------------------------------------------------------------------------------------

# make_machine PACKAGE,...: with apt and these alone.
make_machine() {
    local sources=() file
    for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.{list,sources}; do
        [[ ! -s $file ]] || sources+=("$file")
    done
    say "Making a Debian 12 with apt and $1 alone"
    # The machine reaches the registry as this one does: by the same sources, proxies and certificates.
    mmdebstrap --quiet --variant=apt --include="$1" \
        --setup-hook='for name in apt.conf apt.conf.d auth.conf auth.conf.d; do
            [ ! -e /etc/apt/$name ] || { mkdir -p "$1/etc/apt" && cp -a /etc/apt/$name "$1/etc/apt/"; }; done' \
        bookworm "$MACHINE" "${sources[@]}"
    cp /etc/resolv.conf /etc/hosts "$MACHINE/etc/"
    if [[ -d /usr/local/share/ca-certificates ]]; then
        cp -a /usr/local/share/ca-certificates/. "$MACHINE/usr/local/share/ca-certificates/"
        chroot "$MACHINE" update-ca-certificates >/dev/null 2>&1
    fi
    mount -t proc proc "$MACHINE/proc"
    mount --rbind /dev "$MACHINE/dev"
}

# there FOLDER COMMAND...: without a display, a terminal, or anything else of this machine's environment; as USER_NAME,
# or as root where that is empty.
there() {
    local folder=$1 as=() home=/root name environment=()
    shift
    if [[ -n $USER_NAME ]]; then
        as=(setpriv "--reuid=$USER_NAME" "--regid=$USER_NAME" --init-groups)
        home=/home/$USER_NAME
    fi
    for name in http_proxy https_proxy no_proxy; do
        [[ -z ${!name:-} ]] || environment+=("$name=${!name}")
    done
    say "\$ $*"
    chroot "$MACHINE" env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME="$home" LANG=C.UTF-8 \
        TERM=dumb "${environment[@]}" "${as[@]}" bash -c 'cd "$0" && exec "$@"' "$folder" "$@" </dev/null
}
