# fish completion of ztreport(1) and ztinbox(1), from their --help.

# __ztportal_options PROGRAM CONDITION: adds completions for the options of the help on standard input.
function __ztportal_options
    while read -l line
        if string match -qr '^  FILE ' -- $line
            complete -c $argv[1] -n $argv[2] -F
        else if set -l part (string match -rg '^  (?:-.,)?--([a-z-]+)((?: [A-Z]+)?)\S*(?: REQUIRED)? *(.*)' -- $line)
            set -l value
            switch (string trim -- $part[2])
                case ''
                case FILE
                    set value -r -F
                case DIR
                    set value -x -a '(__fish_complete_directories)'
                case CUSTOMER WORD
                    set value -x -a (string replace -r '.*: ' '' -- $part[3] | string replace -ra ',| or |:[A-Z]+' ' ')
                case '*'
                    set value -x
            end
            complete -c $argv[1] -n $argv[2] -l $part[1] $value -d $part[3]
        end
    end
end

for program in ztreport ztinbox
    command -q $program; or continue
    complete -c $program -f
    $program --help | __ztportal_options $program true
    for line in ($program --help | string match -r '^  [a-z]+  .*')
        set -l part (string match -rg '^  (\S+) +(.*)' -- $line)
        complete -c $program -n __fish_use_subcommand -a $part[1] -d $part[2]
        $program $part[1] --help | string match -v '  -h,--help*' | __ztportal_options $program "__fish_seen_subcommand_from $part[1]"
    end
end
