# fish completion of qorctl. Sub-commands, options and their values are what the program's own help
# says, so that this file need not follow it.

function __qorctl_subcommands
    qorctl --help 2>/dev/null | awk '/^Subcommands:/ { found = 1; next } /^[^ ]/ { found = 0 }
        found && /^  [a-z]/ { name = $1; $1 = ""; print name "\t" substr($0, 2) }'
end

function __qorctl_subcommand
    set -l words (commandline -opc)
    test (count $words) -gt 1; and echo $words[2]
end

function __qorctl_options
    qorctl (__qorctl_subcommand) --help 2>/dev/null |
        grep -oE '^ +(-[a-zA-Z],)?--?[a-z][a-z-]*' | grep -oE -- '--[a-z-]+'
end

function __qorctl_values
    set -l words (commandline -opc)
    qorctl (__qorctl_subcommand) --help 2>/dev/null |
        awk -v option="$words[-1]" '$1 == option && $2 ~ /[|]/ { gsub(/[|]/, "\n", $2); print $2 }'
end

complete -c qorctl -n 'test -z (__qorctl_subcommand)' -f -a '(__qorctl_subcommands)'
complete -c qorctl -n 'test -n (__qorctl_subcommand); and string match -q -- "-*" (commandline -ct)' \
    -f -a '(__qorctl_options)'
complete -c qorctl -n 'test -n (__qorctl_subcommand); and string match -q -- "-*" (commandline -opc)[-1]' \
    -f -a '(__qorctl_values)'
