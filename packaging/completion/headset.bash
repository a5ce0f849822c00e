# Completion of headset(1) for bash.

_headset() {
    local current=${COMP_WORDS[COMP_CWORD]} command="" argument="" words="" word
    local -A options=(
        [doctor]="--json"
        [list]="--json"
        [monitor]="--json --set"
        [udev-rules]=""
        [explain]=""
        [caps]="--json"
        [decode]="--json --input --output --feature"
        [encode]="--json --input --output --feature"
    )
    # What a command takes first; after that come reports and usages, which nobody can guess.
    local -A arguments=([monitor]="node" [explain]="node file" [caps]="file" [decode]="file" [encode]="file")

    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ $word == --set ]]; then
            argument=$word
        elif [[ $word != -?* ]]; then
            if [[ $command ]]; then argument=$word; else command=$word; fi
        fi
    done

    if [[ ! $command ]]; then
        words="${!options[*]}"
        [[ $current == -* ]] && words="--help --version"
    elif [[ $current == -* ]]; then
        words="${options[$command]} --help"
    elif [[ ! $argument ]]; then
        [[ ${arguments[$command]} == *node* ]] && words=$(compgen -G "/dev/hidraw*")
        # Readline's own completion of files, where none of the words fits.
        [[ ${arguments[$command]} == *file* ]] && compopt -o default
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}
complete -F _headset headset
