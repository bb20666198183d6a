# Completion of fxrender for bash. The program itself knows what fits: it is asked.
_fxrender() {
    local reply flags
    mapfile -t reply < <("${COMP_WORDS[0]/#\~/$HOME}" complete bash "${COMP_LINE:0:COMP_POINT}" "$COMP_WORDBREAKS" 2>/dev/null)
    flags=${reply[0]-}
    COMPREPLY=("${reply[@]:1}")
    # Without a reply bash offers files, where this says so.
    [[ $flags == *files* ]] && compopt -o default 2>/dev/null
    [[ $flags == *nospace* ]] && compopt -o nospace 2>/dev/null
    return 0
}
complete -F _fxrender fxrender
