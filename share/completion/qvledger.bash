# Completion of qvledger and qvledger-json for bash: options, and the servers and dates whose logs exist.

# The directory of the logs: the one after -p, or the one below the registry's QV_ROOT for the server in $2.
_qvledger_logs() { # path server
    if [[ $1 ]]; then
        printf '%s' "${1/#~\//$HOME/}"
        return
    fi
    local line root='' own='' key=''
    local file=${QV_REGISTRY:-/etc/qvledger/registry.reg}
    [[ -r $file ]] || return 0
    while IFS= read -r line || [[ $line ]]; do
        line=${line%$'\r'}
        case $line in
            '['*) key=${line,,} ;;
            '"'[Qq][Vv]_[Rr][Oo][Oo][Tt]'"="'*'"')
                line=${line#*=\"}
                line=${line%\"}
                line=${line//\\\\/\\}
                [[ $2 && $key == *'\qv spl '"${2,,}"'\environment]' ]] && own=$line
                [[ $key == *'\currentversion\environment]' || ! $root ]] && root=$line
                ;;
        esac
    done <"$file"
    printf '%s/var/acct' "${own:-${root:-$QV_ROOT}}"
}

# The servers with a log in a directory, or the dates of one server's logs (of all servers without one).
_qvledger_names() { # directory kind server
    local file name date
    for file in "$1"/*.*; do
        [[ -f $file ]] || continue
        name=${file##*/}
        date=${name##*.}
        name=${name%.*}
        [[ $date == [0-9][0-9][0-9][0-9][0-9][0-9][0-9][0-9] || $date == current ]] || continue
        if [[ $2 == server ]]; then
            printf '%s\n' "$name"
        elif [[ ! $3 || $name == "$3" ]]; then
            [[ $date == current ]] && printf -v date '%(%Y%m%d)T' "$(stat -c %Y "$file")"
            printf '%s\n' "$date"
        fi
    done | sort -u
}

# Offers those of the given lines that begin with what was typed, quoted for the command line.
_qvledger_offer() { # typed; lines on the standard input
    local line
    while IFS= read -r line; do
        [[ $line == "$1"* ]] && COMPREPLY+=("$(printf '%q' "$line")")
    done
}

_qvledger() {
    local word previous path='' server='' with_argument=sepO index options='-h -V -s -e -p -O'
    if [[ ${1##*/} == qvledger ]]; then
        with_argument+=o
        options+=' -d -a -g -o'
    fi
    word=${COMP_WORDS[COMP_CWORD]}
    previous=${COMP_WORDS[COMP_CWORD - 1]}
    COMPREPLY=()
    # The server is the first word that is neither an option nor an option's argument.
    for ((index = 1; index < ${#COMP_WORDS[@]}; index++)); do
        case ${COMP_WORDS[index]} in
            -*["$with_argument"])
                [[ ${COMP_WORDS[index]} == -*p ]] && path=${COMP_WORDS[index + 1]-}
                ((++index))
                ;;
            -*) ;;
            *)
                [[ $index -ne $COMP_CWORD ]] && server=${COMP_WORDS[index]}
                break
                ;;
        esac
    done
    case $previous in
        -*o | -*p | -*O)
            if [[ $previous == *["$with_argument"] ]]; then
                compopt -o filenames 2>/dev/null
                local action="directory"
                [[ $previous == -*o ]] && action="file"
                mapfile -t COMPREPLY < <(compgen -A "$action" -- "$word")
                return
            fi
            ;;
        -*s | -*e)
            _qvledger_offer "$word" < <(_qvledger_names "$(_qvledger_logs "$path" "$server")" date "$server")
            return
            ;;
    esac
    if [[ $word == -* && ! $server ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ ! $server ]]; then
        _qvledger_offer "$word" < <(_qvledger_names "$(_qvledger_logs "$path" '')" server)
    fi
}

complete -F _qvledger qvledger qvledger-json
