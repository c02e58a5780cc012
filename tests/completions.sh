#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# The completions in each shell: completions.sh DIRECTORY. Each is asked for the options of a command that begin so, for
# the commands, and for the options of the listing.
set -euo pipefail
directory=$(realpath "$1")
cd "$directory"
failures=0

# of_SHELL WORDS...: the completions of the last word, a line each.
of_bash() {
    bash -c 'source ./quarry.bash; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _quarry; printf "%s\n" "${COMPREPLY[@]}"' _ "$@"
}
of_fish() {
    fish --no-config -c "source ./quarry.fish; complete -C '$*'" | cut -f 1
}
# zsh completes only what is typed: the line is typed into a terminal, and the list read from it.
of_zsh() {
    timeout 60 zsh -f -c '
        zmodload zsh/zpty
        zpty shell "TERM=dumb zsh -f -i"
        zpty -w shell "PROMPT=; fpath=($1 \$fpath); autoload -Uz compinit; compinit -u -D; LISTMAX=1000"
        zpty -w shell "show() { zle list-choices; zle -R; zle -I; print DO\"\"NE }; zle -N show; bindkey \"^I\" show; print REA\"\"DY"
        zpty -r shell text "*READY*"
        zpty -w -n shell "${*[2,-1]}"$'\''\t'\''
        zpty -r shell text "*DONE*"
        print -r -- $text' _ "$directory" "$@" | tr -s ' \r' '\n\n'
}

# expect LINE WORDS...: it is among the completions in each shell.
expect() {
    local line=$1 shell
    shift
    for shell in bash fish zsh; do
        command -v "$shell" >/dev/null || continue
        grep -qxF -e "$line" <<<"$("of_$shell" "$@")" && continue
        echo "$shell: no $line after: $*" >&2
        failures=$((failures + 1))
    done
}

expect --stations quarry info --sta
expect --station quarry info --sta
expect --werror quarry check --w
expect --svg quarry coverage --s
expect coverage quarry c
expect check quarry c
expect --version quarry --v
# What another command has is not offered.
for shell in bash fish zsh; do
    command -v "$shell" >/dev/null || continue
    if grep -qxF -e --werror <<<"$("of_$shell" quarry info --w)"; then
        echo "$shell: --werror after quarry info" >&2
        failures=$((failures + 1))
    fi
done
exit "$failures"
