# bash completion of ztreport(1) and ztinbox(1), from their --help.

_ztportal() {
  local program=$1 current=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}
  local help commands command='' i
  # bash splits --option=value into three words.
  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD-2]}
  [[ $current == = ]] && current=
  COMPREPLY=()
  help=$'\n'$("$program" --help 2>/dev/null)
  commands=$(sed -n 's/^  \([a-z]\+\)  .*/\1/p' <<<"$help")
  for ((i = 1; i < COMP_CWORD; i++)); do
    if [[ $help =~ $'\n  '(-.,)?"${COMP_WORDS[i]} "[A-Z] ]]; then
      [[ ${COMP_WORDS[i+1]} == = ]] && ((i++))
      ((i++))  # its value
    elif grep -qxF -e "${COMP_WORDS[i]}" <<<"$commands"; then
      command=${COMP_WORDS[i]}
      help+=$'\n'$("$program" "$command" --help 2>/dev/null)
      break
    fi
  done

  local type= words action=file
  if [[ $before == -* && $help =~ $'\n  '(-.,)?"$before "([A-Z]+)([^$'\n']*) ]]; then
    type=${BASH_REMATCH[2]} words=${BASH_REMATCH[3]##*: }
  elif [[ $current != -* && $help == *$'\n  FILE '* ]]; then
    type=FILE
  elif [[ -n $command ]]; then
    commands=
  fi
  case $type in
    FILE | DIR)
      [[ $type == DIR ]] && action=directory
      compopt -o filenames 2>/dev/null
      mapfile -t COMPREPLY < <(compgen -A "$action" -- "$current")
      return ;;
    CUSTOMER | WORD) words=$(sed 's/, \| or /\n/g; s/:[A-Z]*//g' <<<"$words") ;;
    '') words="$commands $(grep -oP '^  (-.,)?\K--[a-z-]+' <<<"$help")" ;;
    *) return ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$current")
}

complete -F _ztportal ztreport ztinbox
