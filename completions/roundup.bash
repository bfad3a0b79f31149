# Completion of roundup(1) for bash.
_roundup() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
    local machine='--machine --host --user --verbose' filter='--name --publisher --kind --larger-than --since --sort'
    COMPREPLY=()
    case $before in
    --machine | --host | --store) COMPREPLY=($(compgen -d -- "$word")) ;;
    --html) COMPREPLY=($(compgen -f -- "$word")) ;;
    --kind) COMPREPLY=($(compgen -W 'app msi package update' -- "$word")) ;;
    --sort) COMPREPLY=($(compgen -W 'name publisher size date' -- "$word")) ;;
    --progress) COMPREPLY=($(compgen -W 'auto bar plain none' -- "$word")) ;;
    --format)
        case $command in
        list) COMPREPLY=($(compgen -W 'table tree json ndjson csv' -- "$word")) ;;
        gather) COMPREPLY=($(compgen -W 'text json ndjson' -- "$word")) ;;
        *) COMPREPLY=($(compgen -W 'text json' -- "$word")) ;;
        esac
        ;;
    *)
        ((COMP_CWORD == 1)) && {
            COMPREPLY=($(compgen -W 'list show gather uninstall diff report --help --version' -- "$word"))
            return
        }
        case $command in
        list) COMPREPLY=($(compgen -W "$machine $filter --format --progress --help" -- "$word")) ;;
        report) COMPREPLY=($(compgen -W "$machine $filter --html --progress --help" -- "$word")) ;;
        show) COMPREPLY=($(compgen -W "$machine --name --why --format --help" -- "$word")) ;;
        gather) COMPREPLY=($(compgen -W "$machine --name --all --jobs --store --format --progress --help" -- "$word")) ;;
        uninstall) COMPREPLY=($(compgen -W "$machine --name --dry-run --help" -- "$word")) ;;
        diff)
            [[ $word == -* ]] && COMPREPLY=($(compgen -W '--host --user --verbose --format --help' -- "$word")) ||
                COMPREPLY=($(compgen -f -- "$word"))
            ;;
        esac
        ;;
    esac
}
complete -o filenames -F _roundup roundup
