# shellcheck shell=bash
# Deleting what ./dev has made: the build folder of this clone and, on request, the cache folder,
# which other clones share.

command_clean() {
    case "${1-}" in
    '' | --all) ;;
    *) usage_error "clean: unknown argument '$1'" ;;
    esac
    lock "$PROJECT/build/.lock" exclusive
    rm -rf --one-file-system "$PROJECT/build"
    [[ ${1-} == --all && -d $CACHE ]] || return 0
    local item
    for item in "$ROOT_FOLDERS"*.lock; do
        [[ ! -e $item ]] || try_lock "$item" exclusive ||
            die "the cache folder is left alone, for another ./dev is at work in ${item%.lock}"
    done
    for item in "$CACHE"/*; do
        # A lock's file stays, for another ./dev may be about to take it.
        [[ $item == *.lock ]] || remove_folder "$item"
    done
}
