# Completion of zebview's command line. Options and the names that they take are those of its help.

_zebview_options() { grep -oE '^ +(-[a-z],)?--[a-z-]+' | grep -oE -- '--[a-z-]+'; }

_zebview()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} help takes
    COMPREPLY=()
    compopt -o filenames 2>/dev/null
    help=$("${COMP_WORDS[0]}" --help 2>/dev/null) || return
    if [[ $word == -* ]]; then
        compopt +o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -W "$(_zebview_options <<<"$help")" -- "$word")
        return
    fi
    if [[ $before =~ ^--?[a-z-]+$ ]]; then
        # What it takes follows after one space; descriptions after more.
        takes=$(sed -nE "s/^ +(-[a-z],)?$before(,--[a-z-]+)? ([^ ].*)/\3/p" <<<"$help")
        case $takes in
            *:\{*\}*)
                takes=${takes#*\{}
                takes=${takes%%\}*}
                mapfile -t COMPREPLY < <(compgen -W "${takes//,/ }" -- "$word")
                return
                ;;
            DIR*) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
            FILE* | '') ;;
            *) return ;;
        esac
    fi
    mapfile -t COMPREPLY < <(compgen -f -- "$word")
}
complete -F _zebview zebview
