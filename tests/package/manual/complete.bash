# bash complete.bash FILE WORD...
#
# Prints what bash offers for the last word, one a line, with the completion in FILE. Bash splits
# "--option=value" into three words.
set -o pipefail
source "$1"
shift
rule=$(complete -p "$1")
[[ $rule =~ -F\ ([^ ]+) ]]
COMP_WORDS=("$@")
COMP_CWORD=$(($# - 1))
"${BASH_REMATCH[1]}" "$1" "${!#}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]-}"
