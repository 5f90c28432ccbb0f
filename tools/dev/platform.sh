# shellcheck shell=bash
# The home platform, Debian 14. On such a machine its own packages are used, and missing ones are
# installed. On any other Debian a Debian 14 root folder is made once, under the cache folder, and
# ./dev runs itself again inside it: by chroot, in a mount namespace that ends with the run.

SUITE=forky
ROOT_FOLDERS=$CACHE/debian-$SUITE # with a hash of their recipe after it
MACHINE_CERTIFICATES=/etc/ssl/machine-certificates.pem # inside the root folder
# The environment that goes into the root folder; everything else stays outside.
FORWARDED='^(CI|TERM|COLORTERM|NO_COLOR|MONGODB_URL|REDIS_URL|XDG_CACHE_HOME|KELVRO_.*|GTEST_.*|CTEST_.*|[A-Z]+SAN_OPTIONS|GO(PROXY|SUMDB|FLAGS|NOSUMDB|NOPROXY|PRIVATE|INSECURE)|(https?|no|all)_proxy|(HTTPS?|NO|ALL)_PROXY)$'

package_list() {
    grep -v -e '^#' -e '^$' "$PROJECT/tools/packages.txt"
}

os_release() {
    sed -n "s/^$1=\"\?\([^\"]*\)\"\?$/\1/p" /etc/os-release
}

reach_home_platform() {
    [[ -w $PROJECT ]] || die "needs the right to write to $PROJECT, which $(id -un) lacks"
    [[ ! -d $PROJECT/build || -w $PROJECT/build ]] ||
        die "needs the right to write to $PROJECT/build, which $(id -un) lacks (made by another user?)"
    local folder=$CACHE
    until [[ -e $folder ]]; do folder=$(dirname "$folder"); done
    [[ -w $folder ]] || die "needs the right to write to $folder (for the cache), which $(id -un) lacks"

    if [[ $(os_release VERSION_CODENAME) == "$SUITE" ]]; then
        [[ -n ${KELVRO_IN_ROOT_FOLDER-} ]] || install_missing_packages
        export LANG=C.UTF-8
    else
        enter_root_folder "$@"
    fi
}

# --- Debian 14 itself

install_missing_packages() {
    local missing
    missing=$(comm -23 <(package_list | sort) \
        <(dpkg-query --show --showformat '${Package} ${db:Status-Status}\n' |
            sed -n 's/ installed$//p' | sort -u))
    [[ -n $missing ]] || return 0
    # shellcheck disable=SC2086 # one word a package
    set -- $missing
    ((EUID == 0)) ||
        die "these packages are missing, and $(id -un) has no right to install them; as root run:" \
            "apt-get install --no-install-recommends $*"
    lock "$CACHE/packages.lock" exclusive
    step apt-update "updating the package lists" apt_get update
    # Installing a server must not start it, nor be taken for a wish to have it at every start.
    if [[ ! -e /usr/sbin/policy-rc.d ]]; then
        EXIT_HOOKS+=(remove_policy)
        printf '#!/bin/sh\nexit 101\n' >/usr/sbin/policy-rc.d
        chmod +x /usr/sbin/policy-rc.d
        step apt-install "installing $# packages" apt_get install --no-install-recommends "$@"
        remove_policy
    else
        step apt-install "installing $# packages" apt_get install --no-install-recommends "$@"
    fi
    unlock "$CACHE/packages.lock"
}

remove_policy() {
    rm -f /usr/sbin/policy-rc.d
}

apt_get() {
    DEBIAN_FRONTEND=noninteractive apt-get -y -o DPkg::Lock::Timeout=300 -o Acquire::Retries=3 "$@"
}

# --- a root folder elsewhere

enter_root_folder() {
    local recipe root
    check_rights
    recipe=$(hash_of "$PROJECT/tools/packages.txt" "$(declare -f make_root_folder)")
    root=$ROOT_FOLDERS-${recipe:0:12}
    lock "$root.lock" shared
    if ! stamp_is "$root/.stamp" "$recipe"; then
        unlock "$root.lock"
        lock "$root.lock" exclusive
        if ! stamp_is "$root/.stamp" "$recipe"; then
            prepare_mmdebstrap
            step root-folder "making a Debian 14 root folder (two to five minutes)" \
                make_root_folder "$root" "$(mirror)" "$recipe"
            remove_other_root_folders "$root"
        fi
        lock "$root.lock" shared
    fi

    mkdir -p "$CACHE/home"
    local machine_certificates=${SSL_CERT_FILE:-/etc/ssl/certs/ca-certificates.crt} mongod fd
    [[ -f $machine_certificates ]] || machine_certificates=
    export_go_settings
    # The machine's own mongod needs the machine's own libraries: see start_mongod.
    if [[ -z ${MONGODB_URL-} ]] && mongod=$(type -P mongod); then
        exec {fd}</proc/self/ns/mnt
        export KELVRO_MACHINE_MONGOD=$mongod KELVRO_MACHINE_MOUNTS=$fd
    fi
    local zone=${TZ-}
    [[ -n $zone ]] || zone=$(readlink /etc/localtime | sed -n 's,.*/zoneinfo/,,p')

    local name
    for name in $(compgen -e); do
        [[ $name =~ $FORWARDED ]] || unset "$name" 2>/dev/null || true # some are read-only
    done
    [[ -z $machine_certificates ]] || export SSL_CERT_FILE=$MACHINE_CERTIFICATES
    export KELVRO_IN_ROOT_FOLDER=1 XDG_CACHE_HOME=${CACHE%/kelvrostorage} HOME=$CACHE/home \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        USER=root LOGNAME=root SHELL=/bin/bash LANG=C.UTF-8 TZ="${zone:-UTC}"
    exec unshare --mount --propagation private -- \
        "$PROJECT/tools/dev/enter-root-folder" "$root" "$CACHE" "$machine_certificates" \
        "$PROJECT/dev" "$@"
}

check_rights() {
    local here
    here="this is $(os_release PRETTY_NAME), where ./dev works inside a Debian 14 root folder"
    ((EUID == 0)) ||
        die "$here; making and entering it needs the rights of root (to install mmdebstrap, mount" \
            "and chroot), which $(id -un) lacks: run ./dev as root, or on Debian 14"
    type -P apt-get >/dev/null || die "$here; making it needs apt-get, which is not here"
    unshare --mount --propagation private -- mount --bind /proc /proc 2>/dev/null ||
        die "$here; that needs the right to mount (CAP_SYS_ADMIN), which this root user lacks;" \
            "a container must be started with it"
}

prepare_mmdebstrap() {
    if [[ -z $(type -P mmdebstrap) || -z $(mirror) ]]; then
        step apt-update "updating the package lists" apt_get update
        step apt-mmdebstrap "installing mmdebstrap" \
            apt_get install --no-install-recommends mmdebstrap
    fi
    [[ -n $(mirror) ]] || die "the machine's apt configuration names no Debian package mirror"
}

# The mirror that the machine itself takes Debian's main archive from.
mirror() {
    # shellcheck disable=SC2016 # apt-get itself fills these in
    apt-get indextargets --format '$(ORIGIN)/$(LABEL)/$(COMPONENT)/$(CREATED_BY) $(RELEASE) $(REPO_URI)' |
        awk '$1 == "Debian/Debian/main/Packages" && $2 !~ /-/ && !seen++ { print $3 }'
}

make_root_folder() {
    local root=$1 mirror=$2 stamp=$3 new=$1.new option options=()
    remove_folder "$new"
    remove_folder "$root"
    while read -r option; do
        options+=(--aptopt="$option")
    done < <(apt-config dump |
        grep -E '^Acquire::(Check-|Allow|Max-|Retries|ForceIPv|(https?|ftp)::)')
    # A namespace for the mounts that it makes, lest an interruption leaves any.
    unshare --mount --propagation private -- \
        mmdebstrap --verbose --mode=root --variant=apt --components=main \
        --aptopt='Acquire::Retries "3"' "${options[@]}" --include="$(package_list | paste -s -d ,)" \
        "$SUITE" "$new" "deb $mirror $SUITE main"
    # The machine's own are mounted over these.
    rm -f "$new/etc/resolv.conf" "$new/etc/hosts"
    touch "$new/etc/resolv.conf" "$new/etc/hosts" "$new$MACHINE_CERTIFICATES"
    printf '#!/bin/sh\nexit 101\n' >"$new/usr/sbin/policy-rc.d"
    chmod +x "$new/usr/sbin/policy-rc.d"
    echo kelvrostorage >"$new/etc/debian_chroot"
    echo "$stamp" >"$new/.stamp"
    mv "$new" "$root"
}

# Those of earlier recipes, unless a ./dev is inside.
remove_other_root_folders() {
    local other
    for other in "$ROOT_FOLDERS"*; do
        [[ -d $other && $other != "$1" ]] || continue
        ! try_lock "${other%.new}.lock" exclusive || remove_folder "$other"
        unlock "${other%.new}.lock"
    done
}

# The settings of the machine's Go, but for those of its toolchain.
export_go_settings() {
    local name value
    [[ -n $(type -P go) ]] || return 0
    for name in GOPROXY GOSUMDB GOFLAGS GONOSUMDB GONOPROXY GOPRIVATE GOINSECURE; do
        value=${!name-}
        [[ -n $value ]] || value=$(go env "$name" 2>/dev/null || true)
        [[ -z $value ]] || export "$name=$value"
    done
}
