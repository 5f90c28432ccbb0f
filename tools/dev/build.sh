# shellcheck shell=bash
# Building with the CMake presets, and the commands that build first: build, test, demo, try and
# bench; also the shell.

JOBS=$(nproc)
PRESETS=(dev release asan tsan coverage)

# check_usage COMMAND ARGS…: before any set-up, so that a slip costs no minutes.
check_usage() {
    case "$1" in
    build) [[ $# -le 2 ]] || usage_error "build: takes one preset" ;;
    with-servers) [[ $# -ge 2 ]] || usage_error "with-servers: needs a command to run" ;;
    docs | lint | servers | shell | try) [[ $# -eq 1 ]] || usage_error "$1: takes no arguments" ;;
    test) parse_test_arguments "${@:2}" ;;
    fuzz) parse_fuzz_arguments "${@:2}" ;;
    package) parse_package_arguments "${@:2}" ;;
    esac
    [[ $1 != build || $# -eq 1 ]] || check_preset "$2"
}

check_preset() {
    [[ " ${PRESETS[*]} " == *" $1 "* ]] || usage_error "unknown preset '$1' (there are: ${PRESETS[*]})"
}

# build_preset PRESET strict|lenient [TARGET…]: all targets if none is named. Strict takes warnings
# for errors; lenient does not, lest a newer compiler keeps a user from a demo, but takes a build
# folder as it is. No other ./dev gets at the build folder until this one ends or unlocks it.
build_preset() {
    local preset=$1 folder=$PROJECT/build/$1 plugin=build/$1/plugin/libkelvrostorage.so wanted
    # shellcheck disable=SC2034 # `step` reads it
    local LOGS=$PROJECT/build/logs
    local errors=ON targets=("${@:3}")
    [[ $2 == strict ]] || errors=OFF
    [[ -f CMakePresets.json ]] || die "there is no CMakePresets.json in $PROJECT to build with"
    # Paths are left out of the hashes of debug builds, so that every clone profits from one cache.
    export CCACHE_DIR=$CACHE/ccache CCACHE_BASEDIR=$PROJECT CCACHE_NOHASHDIR=1 CCACHE_MAXSIZE=5G
    lock "$PROJECT/build/.lock" exclusive
    wanted=$(hash_of CMakePresets.json "$PROJECT" /.stamp "$(versions)")
    if [[ ! -f $folder/build.ninja ]] || ! stamp_is "$folder/.configured" "$wanted $errors" &&
        { [[ $2 == strict ]] || ! stamp_is "$folder/.configured" "$wanted ON"; }; then
        step "configure-$preset" "configuring the preset $preset" \
            cmake --preset "$preset" --fresh -D "KELVRO_WARNINGS_AS_ERRORS=$errors"
        echo "$wanted $errors" >"$folder/.configured"
    fi
    step "build-$preset" "building the preset $preset" \
        cmake --build --preset "$preset" --parallel "$JOBS" \
        ${targets[@]+--target "${targets[@]}"}
    if [[ -f $plugin ]]; then
        echo "$plugin" >build/.last-plugin
    elif [[ $preset != fuzz ]]; then
        rm -f build/.last-plugin
    fi
}

export_plugin() {
    [[ -f $PROJECT/build/.last-plugin ]] || die "the build made no plug-in file"
    KELVROSTORAGE_PLUGIN=$PROJECT/$(<"$PROJECT/build/.last-plugin")
    export KELVROSTORAGE_PLUGIN
}

command_build() {
    build_preset "${1-dev}" strict
}

parse_test_arguments() {
    TEST_PRESET=dev TEST_REGEX='' TEST_LONG=''
    while (($# > 0)); do
        case "$1" in
        --preset)
            [[ $# -ge 2 ]] || usage_error "test: --preset needs a preset"
            TEST_PRESET=$2
            shift
            ;;
        --preset=*) TEST_PRESET=${1#*=} ;;
        --long) TEST_LONG=yes ;;
        -*) usage_error "test: unknown option '$1'" ;;
        *)
            [[ -z $TEST_REGEX ]] || usage_error "test: takes one REGEX"
            TEST_REGEX=$1
            ;;
        esac
        shift
    done
    check_preset "$TEST_PRESET"
}

command_test() {
    # Whole programs, or single cases by name: ctest knows both.
    local options=(--output-on-failure --no-tests=error -j "$JOBS") left_out=case
    local cases=$PROJECT/build/$TEST_PRESET/cases status=0
    [[ -z $TEST_REGEX ]] || options+=(-R "$TEST_REGEX") left_out=program
    [[ -n $TEST_LONG ]] || left_out+='|long'
    options+=(-LE "^($left_out)$")
    build_preset "$TEST_PRESET" strict
    [[ ! -f build/.last-plugin ]] || export_plugin
    export_server_programs
    start_servers
    rm -rf "$cases"
    [[ -n $TEST_REGEX ]] || export GTEST_OUTPUT=xml:$cases/
    run_child ctest --preset "$TEST_PRESET" "${options[@]}" || status=$?
    [[ -n $TEST_REGEX ]] || count_cases "$cases"
    ((status == 0)) || return "$status"
    [[ -n $TEST_LONG && -z $TEST_REGEX ]] || return 0
    make_packages
    test_packages
    fuzz_each 60
}

# count_cases FOLDER: sums up what the test programs have reported there.
count_cases() {
    local counts
    counts=$(sed -n 's/^<testsuites tests="\([0-9]*\)" failures="\([0-9]*\)".*/\1 \2/p' \
        "$1"/*.xml 2>/dev/null | awk '{ t += $1; f += $2 } END { print t + 0, "cases in", NR, "test programs,", f + 0, "cases failed" }')
    say "$counts"
}

command_demo() {
    # The tests take several times as long to build, and the demo runs none of them.
    build_preset dev lenient kelvrostorage kelvro-host
    export_plugin
    start_servers
    run_child build/dev/host/kelvro-host demo --plugin "$KELVROSTORAGE_PLUGIN" "$@"
}

command_try() {
    build_preset dev lenient kelvrostorage kelvro-host
    unlock "$PROJECT/build/.lock" # the shell may stay open for days
    start_servers
    say "kelvro-host is here, and both databases are there until you leave this shell"
    PATH=$PROJECT/build/dev/host:$PATH run_child bash --rcfile "$PROJECT/tools/dev/try.bashrc" -i
}

command_bench() {
    [[ -x bench/run ]] || die "there is no bench/run to measure with"
    # Whoever draws no picture does without its library.
    [[ " $* " != *" --keep "* && " $* " != *" --picture "* ]] ||
        install_packages_if_missing python3-matplotlib
    # Nor do those build that measure nothing.
    if [[ ! " $* " =~ " "(--picture|--results|--help|-h)" " ]]; then
        build_preset release lenient kelvrostorage bench/all
        export_plugin
        start_servers
    fi
    run_child bench/run "$PROJECT/build/release" "$@"
}

command_shell() {
    run_child bash -i
}
