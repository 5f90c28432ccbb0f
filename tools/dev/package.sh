# shellcheck shell=bash
# The Debian packages, in build/packages: making them and, with --test, trying them in a fresh
# Debian 14.

PACKAGES=$PROJECT/build/packages
FRESH_ROOT=$CACHE/fresh-root         # of the test; gone when it ends,
CONTAINER_STORE=$FRESH_ROOT.containers # and so is this

parse_package_arguments() {
    PACKAGE_TEST=
    case "$*" in
    '') ;;
    --test) PACKAGE_TEST=yes ;;
    *) usage_error "package: takes --test or nothing" ;;
    esac
}

command_package() {
    make_packages
    if [[ -n $PACKAGE_TEST ]]; then
        start_servers
        test_packages
    fi
    ls -1 "$PACKAGES"/*.deb
}

# With the flags that Debian builds its own with.
make_packages() {
    local packager
    install_packages_if_missing dpkg-dev file # with which CPack finds out what the programs depend on
    packager="${DEBFULLNAME:-Kelvrostorage maintainers} <${DEBEMAIL:-maintainers@kelvrostorage.invalid}>"
    CXXFLAGS=$(debian_flags CPPFLAGS CXXFLAGS) LDFLAGS=$(debian_flags LDFLAGS) \
        build_preset package lenient
    rm -rf "$PACKAGES"
    step package "making the packages" \
        cpack --config build/package/CPackConfig.cmake -B "$PACKAGES" \
        -D "CPACK_DEBIAN_PACKAGE_MAINTAINER=$packager"
    rm -rf "$PACKAGES/_CPack_Packages"
}

debian_flags() {
    local name
    for name in "$@"; do
        DEB_BUILD_MAINT_OPTIONS=hardening=+all dpkg-buildflags --get "$name"
    done | paste -s -d ' '
}

# Wants the packages made and the servers started.
test_packages() {
    ((EUID == 0)) || die "package: --test needs the rights of root, to make a root folder"
    install_packages_if_missing lintian docker-compose buildah netavark mmdebstrap mount
    step lintian "checking the packages with lintian" \
        lintian --fail-on error --tag-display-limit 0 \
        --suppress-tags initial-upload-closes-no-bugs "$PACKAGES"/*.deb # it is for Debian's archive
    show_warnings "$LOGS/lintian.log"
    step compose "checking compose.yaml" \
        docker-compose --file packaging/compose.yaml config --quiet
    lock "$FRESH_ROOT.lock" exclusive
    EXIT_HOOKS+=(remove_fresh_root)
    remove_fresh_root
    step fresh-root "making a fresh Debian 14" make_fresh_root "$(mirror)"
    step container "building and trying a container of it" try_container
    step package-test "trying the packages there" \
        unshare --mount --propagation private -- \
        tools/dev/try-packages "$FRESH_ROOT" "$PROJECT" "$PACKAGES" "$(project_version)"
    remove_fresh_root
    unlock "$FRESH_ROOT.lock"
}

show_warnings() {
    ! grep -q '^W:' "$1" || say "lintian warns:"
    grep '^W:' "$1" | sed 's/^/    /' >&2 || true
}

make_fresh_root() {
    local settings=$FRESH_ROOT.apt
    apt-config dump | grep -E '^Acquire::(Check-|Allow|Max-|Retries|ForceIPv|(https?|ftp)::)' \
        >"$settings" || true
    mmdebstrap --mode=root --variant=apt --components=main --aptopt="$settings" \
        --dpkgopt=force-unsafe-io "$SUITE" "$FRESH_ROOT" "deb $1 $SUITE main"
}

# Does what the Containerfile says, on an image made of the fresh Debian: none is downloaded.
try_container() {
    local container most_files most_processes limits
    # Left as they are, for to raise them is not every root user's right.
    most_files=$(ulimit -Hn) most_processes=$(ulimit -Hu)
    limits=(--ulimit "nofile=${most_files/unlimited/-1}" --ulimit "nproc=${most_processes/unlimited/-1}")
    container=$(in_store from scratch)
    in_store add --quiet "$container" "$FRESH_ROOT" /
    in_store commit --quiet "$container" debian:forky-slim
    in_store build --isolation chroot --network host --pull=never "${limits[@]}" \
        --tag kelvrostorage --file packaging/Containerfile "$PACKAGES"
    container=$(in_store from --pull=never "${limits[@]}" kelvrostorage)
    in_container kelvro-host demo
    in_container kelvro-host demo --clear
}

in_store() {
    buildah --root "$CONTAINER_STORE" --runroot "$CONTAINER_STORE/run" --storage-driver vfs "$@"
}

in_container() {
    in_store run --isolation chroot --network host --env MONGODB_URL --env REDIS_URL \
        "$container" "$@"
}

remove_fresh_root() {
    rm -f "$FRESH_ROOT.apt"
    remove_folder "$CONTAINER_STORE"
    remove_folder "$FRESH_ROOT"
}
