# shellcheck shell=bash
# Fuzzing. What a target finds new goes to a working corpus in the cache folder, beside what
# fuzz/corpus has; an input that fails stays there as TARGET-failing/….

FUZZ_FOLDER=$CACHE/fuzz

fuzz_targets() {
    sed -n 's/^kelvro_fuzz_target(\([a-z_]*\).*/\1/p' "$PROJECT/fuzz/CMakeLists.txt"
}

parse_fuzz_arguments() {
    FUZZ_TARGET=${1-} FUZZ_SECONDS=${2-60}
    [[ $# -le 2 ]] || usage_error "fuzz: takes a target and a number of seconds"
    [[ -z $FUZZ_TARGET || $FUZZ_TARGET == all ]] || grep -qx -- "$FUZZ_TARGET" <(fuzz_targets) ||
        usage_error "fuzz: there is no target '$FUZZ_TARGET'; ./dev fuzz lists them"
    [[ $FUZZ_SECONDS =~ ^[1-9][0-9]*$ ]] ||
        usage_error "fuzz: '$FUZZ_SECONDS' is no number of seconds"
}

command_fuzz() {
    local target
    case "$FUZZ_TARGET" in
    '')
        for target in $(fuzz_targets); do
            printf '%-20s %15s inputs so far\n' "$target" "$(fuzz_count "$target")"
        done
        ;;
    all) fuzz_each "$FUZZ_SECONDS" ;;
    *) fuzz_each "$FUZZ_SECONDS" "$FUZZ_TARGET" ;;
    esac
}

# fuzz_each SECONDS [TARGET…]: one after the other; all if none is named.
fuzz_each() {
    local target targets=("${@:2}")
    ((${#targets[@]} > 0)) || mapfile -t targets < <(fuzz_targets)
    build_preset fuzz strict "${targets[@]/#/fuzz_}"
    unlock "$PROJECT/build/.lock"
    for target in "${targets[@]}"; do
        fuzz_for "$target" "$1"
    done
}

fuzz_count() {
    cat "$FUZZ_FOLDER/$1.count" 2>/dev/null || echo 0
}

# fuzz_for TARGET SECONDS
fuzz_for() {
    local target=$1 seconds=$2 found=$FUZZ_FOLDER/$1 options=() count total
    local dictionary=$PROJECT/fuzz/dictionaries/$target.dict
    local own=$PROJECT/fuzz/corpus/$target
    mkdir -p "$found" "$found-failing" "$own"
    [[ ! -f $dictionary ]] || options+=("-dict=$dictionary")
    step "fuzz-$target" "fuzzing $target for $seconds s" \
        "$PROJECT/build/fuzz/fuzz/fuzz_$target" -max_total_time="$seconds" -max_len=2048 \
        -timeout=20 -print_final_stats=1 -artifact_prefix="$found-failing/" \
        "${options[@]}" "$found" "$own"
    count=$(sed -n 's/^stat::number_of_executed_units: *//p' "$LOGS/fuzz-$target.log")
    total=$(($(fuzz_count "$target") + count))
    echo "$total" >"$FUZZ_FOLDER/$target.count"
    say "fuzzing $target: $count inputs, $total in all, none failed"
}
