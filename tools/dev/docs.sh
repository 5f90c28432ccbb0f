# shellcheck shell=bash
# The site in build/docs: the pages of this project and the reference of the contract's headers.

command_docs() {
    local pages
    install_packages_if_missing doxygen linkchecker
    mkdir -p build
    rm -rf build/docs
    KELVRO_VERSION=$(project_version) step doxygen "making the site" doxygen docs/Doxyfile
    # Doxygen looks for what a link names within its page, but not whether the page is there.
    mapfile -t pages < <(find ./*.md docs -name '*.md')
    step linkchecker "checking links" \
        check_links --config docs/linkcheckerrc --no-status "${pages[@]}" build/docs/index.html
    say "the site is build/docs/index.html"
}

# linkchecker refuses to be root, and as nobody it may not get to where this project is.
check_links() {
    local as_nobody=()
    ((EUID != 0)) || as_nobody=(setpriv --reuid=nobody --clear-groups
        --inh-caps=+dac_read_search --ambient-caps=+dac_read_search --)
    "${as_nobody[@]}" linkchecker "$@"
}
