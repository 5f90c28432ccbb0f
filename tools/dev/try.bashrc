# shellcheck shell=bash
# The shell of ./dev try.

# shellcheck source=/dev/null
[[ ! -f /etc/bash.bashrc ]] || source /etc/bash.bashrc
# shellcheck source=/dev/null
source <(kelvro-host completion)
