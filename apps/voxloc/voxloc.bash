# Bash completion of voxloc. It asks the program's own help, so that it knows every option of the
# version that is installed.

# _voxloc_options WORD...: the options that the program takes after these words.
_voxloc_options() {
    "$@" --help 2>/dev/null | sed -n 's/^  \(-[[:alnum:]],\)\{0,1\}\(--[[:alnum:]-]*\).*/\2/p'
}

# _voxloc_choices OPTION WORD...: the values that an option is limited to.
_voxloc_choices() {
    local option=$1
    shift
    "$@" --help 2>/dev/null |
        sed -n "s/^  \(-[[:alnum:]],\)\{0,1\}$option [^{]*{\([^}]*\)}.*/\2/p" | tr , '\n'
}

# _voxloc_subcommands WORD...
_voxloc_subcommands() {
    "$@" --help 2>/dev/null | sed -n '/^Subcommands:/,/^$/s/^  \([[:alnum:]]\{1,\}\) .*/\1/p'
}

_voxloc_arrays() {
    "$1" arrays 2>/dev/null | sed -n '2,$s/ .*//p'
}

_voxloc() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local word words=() path=("${COMP_WORDS[0]}")
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        [[ " $(_voxloc_subcommands "${path[@]}" | tr '\n' ' ') " == *" $word "* ]] && path+=("$word")
    done
    COMPREPLY=()
    case "$previous" in
        -a | --array) mapfile -t words < <(_voxloc_arrays "${path[0]}") ;;
        -f) mapfile -t words < <(_voxloc_choices --format "${path[@]}") ;;
        --*) mapfile -t words < <(_voxloc_choices "$previous" "${path[@]}") ;;
    esac
    if [ ${#words[@]} -eq 0 ]; then
        if [[ $current == -* ]]; then
            mapfile -t words < <(_voxloc_options "${path[@]}")
        elif [ ${#path[@]} -eq 1 ]; then
            mapfile -t words < <(_voxloc_subcommands "${path[@]}")
        elif [ "${path[*]:1}" = arrays ]; then
            mapfile -t words < <(_voxloc_subcommands "${path[@]}"; _voxloc_arrays "${path[0]}")
        fi
    fi
    [ ${#words[@]} -eq 0 ] || mapfile -t COMPREPLY < <(compgen -W "${words[*]}" -- "$current")
}

complete -o default -o bashdefault -F _voxloc voxloc
