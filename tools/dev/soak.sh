# shellcheck shell=bash
# The long run that kills the database servers under load and looks for what was lost.

# command_soak [MINUTES] [OPTION…]: the options are those of kelvro-soak.
command_soak() {
    local length=()
    if [[ ${1-} =~ ^[0-9]+$ ]]; then
        length=(--minutes "$1" --kills 1000000)
        shift
    fi
    build_preset dev strict kelvrostorage kelvro-soak
    unlock "$PROJECT/build/.lock" # what runs now may go on for hours
    export_plugin
    export_server_programs
    # shellcheck disable=SC2034 # `stop_child` reads it: after Ctrl-C it reads back what it stored
    CHILD_PATIENCE=600
    run_child nice build/dev/tests/soak/kelvro-soak --plugin "$KELVROSTORAGE_PLUGIN" \
        --json build/soak.json "${length[@]}" "$@"
}
