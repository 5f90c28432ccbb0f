# shellcheck shell=bash
# The checks of layout and quality. Each one runs to its end, so that one call shows all findings.
# A source file that clang-tidy has passed is not checked again until it, a header, the checks or
# the way of compiling change.

command_lint() {
    local failed=()
    lint_shell || failed+=(shellcheck)
    lint_go || failed+=(go)
    lint_layout || failed+=(clang-format)
    lint_quality || failed+=(clang-tidy)
    ((${#failed[@]} == 0)) || die "lint: findings by ${failed[*]}"
    say "lint: no findings"
}

# tracked PATTERN…: the tracked files, whoever they belong to.
tracked() {
    git -c safe.directory='*' ls-files -z -- "$@"
}

lint_shell() {
    local files=()
    mapfile -d '' files < <(tracked)
    local scripts=() file first
    for file in "${files[@]}"; do
        [[ -f $file ]] || continue
        first=
        IFS= read -r first <"$file" 2>/dev/null || true
        if [[ $file == *.sh || $first =~ ^'#!'.*[/\ ](ba)?sh ]]; then scripts+=("$file"); fi
    done
    say "shellcheck: ${#scripts[@]} files"
    run_child shellcheck --external-sources "${scripts[@]}"
}

lint_go() {
    local files=()
    mapfile -d '' files < <(tracked '*.go')
    ((${#files[@]} > 0)) || return 0
    say "gofmt, go vet: ${#files[@]} files"
    local badly
    badly=$(gofmt -l "${files[@]}")
    [[ -z $badly ]] || {
        say "not formatted by gofmt: $badly"
        return 1
    }
    (cd tools/ferretdb && go vet ./...)
}

lint_layout() {
    local files=()
    mapfile -d '' files < <(tracked '*.cpp' '*.h' '*.hpp')
    ((${#files[@]} > 0)) || return 0
    say "clang-format: ${#files[@]} files"
    run_child clang-format --dry-run -Werror "${files[@]}"
}

lint_quality() {
    local files=() stale=() file stamps=$PROJECT/build/lint headers
    mapfile -d '' files < <(tracked '*.cpp')
    ((${#files[@]} > 0)) || return 0
    # Headers that the build makes are needed as well.
    build_preset dev
    mapfile -d '' headers < <(tracked '*.h' '*.hpp')
    local common
    common=$(hash_of "${headers[@]}" .clang-tidy tests/.clang-tidy build/dev/compile_commands.json /.stamp)
    for file in "${files[@]}"; do
        stamp_is "$stamps/$file.passed" "$(hash_of "$file" "$common")" || stale+=("$file")
    done
    say "clang-tidy: ${#stale[@]} of ${#files[@]} files"
    ((${#stale[@]} > 0)) || return 0
    mkdir -p "$stamps"
    : >"$stamps/progress"
    export -f check_quality hash_of
    run_child xargs --null --max-args=1 --max-procs="$JOBS" --arg-file=<(printf '%s\0' "${stale[@]}") \
        bash -c 'check_quality "$@"' check_quality "$stamps" "$common" "${#stale[@]}"
}

# check_quality STAMPS COMMON-HASH TOTAL FILE
check_quality() {
    local passed=$1/$4.passed status=0 findings done_so_far
    findings=$(clang-tidy --quiet -p build/dev "$4" 2>&1) || status=$?
    echo "$4" >>"$1/progress"
    done_so_far=$(wc -l <"$1/progress")
    if ((status == 0)); then
        mkdir -p "$(dirname "$passed")"
        hash_of "$4" "$2" >"$passed"
        echo "[$done_so_far/$3] $4"
    else
        printf '[%s/%s] %s: findings\n%s\n' "$done_so_far" "$3" "$4" "$findings"
        return 1
    fi
}
