# zsh complete.zsh FOLDER LINE...
#
# Types each LINE and a tabulator into an interactive zsh that finds its completions in FOLDER, and
# prints what it shows, and the line as it is then between "<<" and ">>".
zmodload zsh/zpty || exit 1
export TERM=dumb COLUMNS=200 LINES=100
folder=$1
shift
zpty shell zsh -f -i || exit 1
zpty -w shell "PS1= RPS1= LISTMAX=0; unsetopt beep zle_bracketed_paste; fpath=(${(q)folder} \$fpath)"
zpty -w shell 'autoload -Uz compinit && compinit -D -u'
zpty -w shell 'tell() { print -r -- "<<$BUFFER>>" }; zle -N tell; bindkey "^X" tell'
# What is typed before the line editor runs would be the terminal's to edit. The quotes keep the
# echo of this line from being taken for its answer.
zpty -w shell 'zle-line-init() { print -r -- REA""DY }; zle -N zle-line-init'
zpty -r shell shown '*READY*' || exit 1
for line in "$@"; do
  zpty -w -n shell $'\x15'"$line"$'\t\x18'
  zpty -r shell shown '*>>*' || exit 1
  print -r -- "$shown"
done
zpty -d shell
