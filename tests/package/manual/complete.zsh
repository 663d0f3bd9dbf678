# zsh complete.zsh FOLDER LINE...
#
# Types each LINE and a tab into an interactive zsh with the completions in FOLDER, and prints what it
# shows, with the completed line between "<<" and ">>".
zmodload zsh/zpty || exit 1
export TERM=dumb COLUMNS=200 LINES=100
folder=$1
shift
zpty shell zsh -f -i || exit 1
zpty -w shell "PS1= RPS1= LISTMAX=0; unsetopt beep zle_bracketed_paste; fpath=(${(q)folder} \$fpath)"
zpty -w shell 'autoload -Uz compinit && compinit -D -u'
zpty -w shell 'tell() { print -r -- "<<$BUFFER>>" }; zle -N tell; bindkey "^X" tell'
# Nothing may be typed before the line editor runs. The quotes keep the echo of this line from
# matching.
zpty -w shell 'zle-line-init() { print -r -- REA""DY }; zle -N zle-line-init'
zpty -r shell shown '*READY*' || exit 1
for line in "$@"; do
  zpty -w -n shell $'\x15'"$line"$'\t\x18'
  zpty -r shell shown '*>>*' || exit 1
  print -r -- "$shown"
done
zpty -d shell
