# shellcheck shell=bash
# The checks of layout and quality. Each one runs to its end, so that one call shows all findings.
# A source file that clang-tidy has passed is not checked again until it, a header that it includes,
# the checks or the way of compiling change.

command_lint() {
    local failed=()
    lint_shell || failed+=(shellcheck)
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

lint_layout() {
    local files=()
    mapfile -d '' files < <(tracked '*.cpp' '*.h' '*.hpp')
    ((${#files[@]} > 0)) || return 0
    say "clang-format: ${#files[@]} files"
    run_child clang-format --dry-run -Werror "${files[@]}"
}

lint_quality() {
    local files=() folders=() stale=() hash file stamps=$PROJECT/build/lint
    # Not the tests: GoogleTest's macros expand to much of what the checks object to.
    mapfile -d '' files < <(tracked '*.cpp' ':!tests/')
    ((${#files[@]} > 0)) || return 0
    # The headers that a build makes are needed, and what it knows of who includes what.
    mapfile -t folders < <(printf '%s/all\n' "${files[@]%%/*}" | sort -u)
    build_preset dev strict "${folders[@]}"
    mkdir -p "$stamps"
    python3 tools/dev/lint_inputs.py "$stamps" "${files[@]}" >"$stamps/inputs" || return
    while read -r hash file; do
        stamp_is "$stamps/$file.passed" "$hash" || stale+=("$hash" "$file")
    done <"$stamps/inputs"
    say "clang-tidy: $((${#stale[@]} / 2)) of $(wc -l <"$stamps/inputs") files"
    ((${#stale[@]} > 0)) || return 0
    : >"$stamps/progress"
    export -f check_quality
    run_child xargs --null --max-args=2 --max-procs="$JOBS" \
        --arg-file=<(printf '%s\0' "${stale[@]}") \
        bash -c 'check_quality "$@"' check_quality "$stamps" "$((${#stale[@]} / 2))"
}

# check_quality STAMPS TOTAL HASH FILE
check_quality() {
    local stamps=$1 total=$2 hash=$3 file=$4 status=0 findings count
    findings=$(clang-tidy --quiet -p "$stamps" "$file" 2>&1) || status=$?
    echo "$file" >>"$stamps/progress"
    count=$(wc -l <"$stamps/progress")
    if ((status == 0)); then
        mkdir -p "$(dirname "$stamps/$file")"
        echo "$hash" >"$stamps/$file.passed"
        echo "[$count/$total] $file"
    else
        printf '[%s/%s] %s: findings\n%s\n' "$count" "$total" "$file" "$findings"
        return 1
    fi
}
