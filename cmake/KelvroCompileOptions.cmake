# Compile and link options that every target of ours shares; link to Kelvro::options privately.
# They stay out of the installed package: a host chooses its own.

add_library(kelvro_options INTERFACE)
add_library(Kelvro::options ALIAS kelvro_options)

target_compile_definitions(kelvro_options INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_KEYWORDS
    QT_USE_QSTRINGBUILDER)

target_compile_options(kelvro_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion)
# Not for those who only use it: tomorrow's compiler warns of more.
if(KELVRO_WARNINGS_AS_ERRORS)
    target_compile_options(kelvro_options INTERFACE -Werror)
endif()

if(KELVRO_SANITIZERS)
    # -fno-sanitize-recover: an undefined-behaviour report must fail the test that caused it.
    set(_sanitize -fsanitize=${KELVRO_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(kelvro_options INTERFACE ${_sanitize})
    target_link_options(kelvro_options INTERFACE ${_sanitize})
endif()

if(KELVRO_COVERAGE)
    target_compile_options(kelvro_options INTERFACE --coverage)
    target_link_options(kelvro_options INTERFACE --coverage)
endif()

# For the programs and the tests, which are not the plug-in: not optimised but in a release, for that
# takes longer than all else about compiling them. Link to Kelvro::quick privately.
add_library(kelvro_quick INTERFACE)
add_library(Kelvro::quick ALIAS kelvro_quick)
target_compile_options(kelvro_quick INTERFACE
    $<$<NOT:$<CONFIG:Release>>:-O0$<SEMICOLON>-g1>)
