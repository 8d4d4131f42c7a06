# fish completion of qorsim. Sub-commands, options and their values are what the program's own help
# says, so that this file need not follow it.

function __qorsim_subcommands
    qorsim --help 2>/dev/null | awk '/^Subcommands:/ { found = 1; next } /^[^ ]/ { found = 0 }
        found && /^  [a-z]/ { name = $1; $1 = ""; print name "\t" substr($0, 2) }'
end

function __qorsim_subcommand
    set -l words (commandline -opc)
    test (count $words) -gt 1; and echo $words[2]
end

function __qorsim_options
    qorsim (__qorsim_subcommand) --help 2>/dev/null |
        grep -oE '^ +(-[a-zA-Z],)?--?[a-z][a-z-]*' | grep -oE -- '--[a-z-]+'
end

function __qorsim_values
    set -l words (commandline -opc)
    qorsim (__qorsim_subcommand) --help 2>/dev/null |
        awk -v option="$words[-1]" '$1 == option && $2 ~ /[|]/ { gsub(/[|]/, "\n", $2); print $2 }'
end

complete -c qorsim -n 'test -z (__qorsim_subcommand)' -f -a '(__qorsim_subcommands)'
complete -c qorsim -n 'test -n (__qorsim_subcommand); and string match -q -- "-*" (commandline -ct)' \
    -f -a '(__qorsim_options)'
complete -c qorsim -n 'test -n (__qorsim_subcommand); and string match -q -- "-*" (commandline -opc)[-1]' \
    -f -a '(__qorsim_values)'
