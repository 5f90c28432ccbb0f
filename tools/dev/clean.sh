# shellcheck shell=bash
# Deleting what ./dev has made: the build folder of this clone and, on request, the cache folder,
# which other clones share.

command_clean() {
    case "${1-}" in
    '' | --all) ;;
    *) usage_error "clean: unknown argument '$1'" ;;
    esac
    rm -rf --one-file-system "$PROJECT/build"
    if [[ ${1-} == --all && -d $CACHE ]]; then
        # Runs inside the root folder hold this lock.
        lock "$ROOT_FOLDER.lock" exclusive
        local item
        for item in "$CACHE"/*; do
            [[ $item == *.lock ]] || remove_folder "$item"
        done
    fi
}
