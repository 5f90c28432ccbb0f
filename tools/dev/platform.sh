# shellcheck shell=bash
# The home platform, Debian 14. On such a machine its own packages are used, and missing ones are
# installed. On any other Debian, and on what is made of its packages, a Debian 14 root folder is
# made once, under the cache folder, and ./dev runs itself again inside it: by chroot, in a mount
# namespace that ends with the run.

SUITE=forky
ROOT_FOLDER_SPACE=4000 # MiB that making one and FerretDB takes at its fullest
ROOT_FOLDER_DAYS=14    # that one is kept unused
ROOT_FOLDERS=$CACHE/debian-$SUITE # with a hash of their recipe after it
PACKAGES_LOCK=$CACHE/packages.lock
POLICY=/usr/sbin/policy-rc.d
SYSTEMD_PRESET=/run/systemd/system-preset/00-kelvrostorage.preset
MACHINE_CERTIFICATES=/etc/ssl/machine-certificates.pem # inside the root folder
# The environment that goes into the root folder; everything else stays outside.
FORWARDED='^(CI|TERM|COLORTERM|NO_COLOR|MONGODB_URL|REDIS_URL|DEBFULLNAME|DEBEMAIL|XDG_CACHE_HOME|KELVRO_.*|GTEST_.*|CTEST_.*|[A-Z]+SAN_OPTIONS|GO(PROXY|SUMDB|FLAGS|NOSUMDB|NOPROXY|PRIVATE|INSECURE)|(https?|no|all)_proxy|(HTTPS?|NO|ALL)_PROXY)$'

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
        warn_of_other_versions
        export LANG=C.UTF-8
    else
        enter_root_folder "$@"
    fi
}

# Debian 14 may move on: what differs from tools/last-seen.txt is the first suspect of a failure.
warn_of_other_versions() {
    local seen=$PROJECT/tools/last-seen.txt before now
    before=$(comm -23 <(grep -v '^#' "$seen" | sort) <(versions) | paste -s -d ,)
    now=$(comm -13 <(grep -v '^#' "$seen" | sort) <(versions) | paste -s -d ,)
    [[ -z $before$now ]] ||
        say "last seen to work with ${before//,/, }; here: ${now//,/, }"
}

# The upstream versions of what matters most.
versions() {
    dpkg-query --show --showformat '${db:Status-Abbrev}${Package} ${Version}\n' g++ golang-go \
        libbson-dev libmongocxx-dev 'postgresql-client-[0-9]*' 'postgresql-*-documentdb' \
        qtbase5-dev redis-server 2>/dev/null |
        sed -n 's/^ii \([^ ]*\) \([0-9]*:\)\?/\1 /; s/\( .*\)-[^-]*$/\1/; /^[a-z]/p' | sort
}

# --- Debian 14 itself

install_missing_packages() {
    local packages
    mapfile -t packages < <(package_list)
    install_packages_if_missing "${packages[@]}"
}

# install_packages_if_missing PACKAGE…: a * in a name stands for any version. Also inside the root
# folder, for what few commands need.
install_packages_if_missing() {
    local missing=() installed package
    installed=$(dpkg-query --show --showformat '${Package} ${db:Status-Status}\n' |
        sed -n 's/ installed$//p')
    for package in "$@"; do
        grep -qx "${package//\*/.*}" <<<"$installed" || missing+=("$package")
    done
    ((${#missing[@]} > 0)) || return 0
    ((EUID == 0)) ||
        die "these packages are missing, and $(id -un) has no right to install them; as root run:" \
            "apt-get install --no-install-recommends ${missing[*]@Q}"
    lock "$PACKAGES_LOCK" exclusive
    step apt-update "updating the package lists" apt_get update
    EXIT_HOOKS+=(let_servers_start)
    keep_servers_from_starting
    step apt-install "installing ${#missing[@]} packages" \
        apt_get install --no-install-recommends "${missing[@]}"
    let_servers_start
    unlock "$PACKAGES_LOCK"
}

# Installing a server must not start it, nor be taken for a wish to have it at every start of the
# machine. Should this ./dev be killed, the policy removes itself when it is next asked, and the
# preset ends with the machine's run.
keep_servers_from_starting() {
    mkdir -p "$(dirname "$SYSTEMD_PRESET")"
    printf 'disable %s\n' redis-server.service postgresql.service stunnel4.service \
        wmbusmeters.service haproxy.service >"$SYSTEMD_PRESET"
    [[ ! -e $POLICY ]] || return 0
    cat >"$POLICY.new" <<POLICY
#!/bin/sh
# Of Kelvrostorage's ./dev, for as long as it installs packages and holds this lock.
lock=${PACKAGES_LOCK@Q}
[ -e "\$lock" ] && ! flock --nonblock "\$lock" true && exit 101
rm -f "\$0"
POLICY
    chmod +x "$POLICY.new"
    mv "$POLICY.new" "$POLICY"
}

let_servers_start() {
    rm -f "$SYSTEMD_PRESET"
    ! grep -qs "Kelvrostorage's ./dev" "$POLICY" || rm -f "$POLICY"
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
            remove_unused_root_folders "$root"
            HALF_MADE_FOLDER=$root.new
            EXIT_HOOKS+=(remove_half_made_folder)
            remove_half_made_folder
            check_space
            prepare_mmdebstrap
            step root-folder "making a Debian 14 root folder (two to five minutes)" \
                make_root_folder "$root" "$(mirror)" "$recipe"
        fi
        lock "$root.lock" shared
    fi
    touch "$root.lock" # tells when it was last used

    mkdir -p "$CACHE/home"
    local machine_certificates=${SSL_CERT_FILE:-/etc/ssl/certs/ca-certificates.crt} mongod fd
    [[ -f $machine_certificates ]] || machine_certificates=
    export_go_settings
    # The machine's own mongod needs the machine's own libraries: see start_mongod.
    if [[ -z ${MONGODB_URL-} ]] && mongod=$(type -P mongod); then
        exec {fd}</proc/self/ns/mnt
        export KELVRO_MACHINE_MONGOD=$mongod KELVRO_MACHINE_MOUNTS=$fd
    fi
    local name zone
    zone=$(time_zone)
    for name in $(compgen -e); do
        [[ $name =~ $FORWARDED ]] || unset "$name" 2>/dev/null || true # some are read-only
    done
    [[ -z $machine_certificates ]] || export SSL_CERT_FILE=$MACHINE_CERTIFICATES
    export KELVRO_IN_ROOT_FOLDER=1 XDG_CACHE_HOME=${CACHE%/kelvrostorage} HOME=$CACHE/home \
        PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin \
        USER=root LOGNAME=root SHELL=/bin/bash LANG=C.UTF-8 TZ="$zone"
    exec unshare --mount --propagation private -- \
        "$PROJECT/tools/dev/enter-root-folder" "$root" "$CACHE" "$machine_certificates" \
        "$PROJECT/dev" "$@"
}

# The name of the machine's time zone; UTC where nothing names it.
time_zone() {
    local zone=${TZ-}
    [[ -n $zone ]] || zone=$(readlink -f /etc/localtime | sed -n 's,.*/zoneinfo/,,p') || true
    [[ -n $zone ]] || zone=$(head -n 1 /etc/timezone 2>/dev/null) || true
    echo "${zone:-UTC}"
}

check_rights() {
    local here
    here="this is $(os_release PRETTY_NAME), where ./dev works inside a Debian 14 root folder"
    type -P apt-get >/dev/null ||
        die "this is $(os_release PRETTY_NAME); ./dev works on Debian and its derivatives only," \
            "for it makes a Debian 14 root folder by apt-get, which is not here"
    ((EUID == 0)) ||
        die "$here; making and entering it needs the rights of root (to install mmdebstrap, mount" \
            "and chroot), which $(id -un) lacks: run ./dev as root, or on Debian 14"
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
    [[ -n $(mirror) ]] ||
        die "this machine's apt takes nothing from Debian itself: its sources name no mirror of Debian's" \
            "main archive, which the root folder is made from"
}

# The mirror that the machine itself takes Debian's main archive from.
mirror() {
    # shellcheck disable=SC2016 # apt-get itself fills these in
    apt-get indextargets --format '$(ORIGIN)/$(LABEL)/$(COMPONENT)/$(CREATED_BY) $(RELEASE) $(REPO_URI)' |
        awk '$1 == "Debian/Debian/main/Packages" && $2 !~ /-/ && !seen++ { print $3 }'
}

make_root_folder() {
    local root=$1 mirror=$2 stamp=$3 new=$1.new option options=()
    remove_folder "$root"
    while read -r option; do
        options+=(--aptopt="$option")
    done < <(apt-config dump |
        grep -E '^Acquire::(Check-|Allow|Max-|Retries|ForceIPv|(https?|ftp)::)')
    # A namespace for the mounts that it makes, lest an interruption leaves any.
    unshare --mount --propagation private -- \
        mmdebstrap --verbose --mode=root --variant=apt --components=main \
        --aptopt='Acquire::Retries "3"' "${options[@]}" --dpkgopt=force-unsafe-io --include="$(package_list | paste -s -d ,)" \
        "$SUITE" "$new" "deb $mirror $SUITE main"
    # The machine's own are mounted over these.
    rm -f "$new/etc/resolv.conf" "$new/etc/hosts"
    touch "$new/etc/resolv.conf" "$new/etc/hosts" "$new$MACHINE_CERTIFICATES"
    printf '#!/bin/sh\nexit 101\n' >"$new/usr/sbin/policy-rc.d"
    chmod +x "$new/usr/sbin/policy-rc.d"
    echo kelvrostorage >"$new/etc/debian_chroot"
    echo "$stamp" >"$new/.stamp"
    sync --file-system "$new" # once, where dpkg would do so for each package
    mv "$new" "$root"
}

check_space() {
    local free
    free=$(df --output=avail --block-size=1M "$CACHE" | tail -n 1)
    ((free >= ROOT_FOLDER_SPACE)) ||
        die "the set-up takes $ROOT_FOLDER_SPACE MiB in $CACHE, where ${free// /} MiB are free"
}

remove_half_made_folder() {
    remove_folder "$HALF_MADE_FOLDER"
}

# Those of other recipes, unless a ./dev is inside: half-made ones, and those not used for long.
remove_unused_root_folders() {
    local other file
    for other in "$ROOT_FOLDERS"-*; do
        [[ -d $other && ${other%.new} != "$1" ]] || continue
        file=${other%.new}.lock
        [[ $other == *.new || -z $(find "$file" -mtime "-$ROOT_FOLDER_DAYS" 2>/dev/null) ]] || continue
        ! try_lock "$file" exclusive || remove_folder "$other"
        unlock "$file"
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
