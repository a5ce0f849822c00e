# Completion of softphone(1) for bash.

_softphone() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]} words=""
    local options="--library --real --headsets --script --json --log --plain --narrate --help --version"

    case $previous in
        --library | --headsets | --script | =) compopt -o default ;;  # readline's own completion of files
        *) words=$options ;;
    esac
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _softphone softphone
