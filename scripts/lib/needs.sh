# Sourced. needs FILE-OR-PROGRAM...: ends the script with one sentence that names what is missing.
needs() {
    local missing=()
    for each in "$@"; do command -v "$each" >/dev/null || missing+=("${each#"$PWD"/}"); done
    [ ${#missing[@]} -eq 0 ] && return
    echo "${0##*/} needs ${missing[*]}; run scripts/packages build run test, and scripts/build release TARGET." >&2
    exit 1
}
