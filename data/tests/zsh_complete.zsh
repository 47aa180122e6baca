#!/usr/bin/env zsh
# Completes a command line the way an interactive zsh does when the user presses Tab, and prints
# the words the completion system offers, one a line.
#   zsh -f zsh_complete.zsh FPATH_DIR BIN_DIR 'orvantis settings get '
# FPATH_DIR holds _orvantis; BIN_DIR the program the completion asks for setting and tool names.
# A zsh with no start-up files runs on a pseudo-terminal (zsh/zpty) with compinit loaded; the
# words reach compadd, which is wrapped to print each match before adding it.
emulate -L zsh
zmodload zsh/zpty zsh/zselect || { print -u2 "zsh_complete: no zsh/zpty or zsh/zselect module"; exit 2 }

fpath_dir=$1 bin_dir=$2 line=$3
zpty -b orv_shell zsh -f -i || { print -u2 "zsh_complete: zpty cannot start zsh"; exit 2 }
shell_fd=$REPLY

# The shell's set-up: no prompt, no line editor surprises, the completion system, and Tab bound
# to a widget that completes and then prints an end mark so the reader knows when to stop.
zpty -w orv_shell "PS1='' PS2='' RPS1=''; unsetopt zle_bracketed_paste 2>/dev/null; setopt no_beep"
zpty -w orv_shell "fpath=(${(q)fpath_dir} \$fpath); path=(${(q)bin_dir} \$path)"
zpty -w orv_shell "autoload -Uz compinit && compinit -u -D"
zpty -w orv_shell "zstyle ':completion:*' list-prompt ''; zstyle ':completion:*' menu no; zstyle ':completion:*' list-grouped false; LISTMAX=100000"
zpty -w orv_shell 'compadd() {
  if (( ! ${@[(I)-[DOA]]} )); then
    local -a __orv_matches
    builtin compadd -O __orv_matches "$@"
    (( ${#__orv_matches} )) && print -rl -- "" "<<match>>"${^__orv_matches}
  fi
  builtin compadd "$@"
}'
zpty -w orv_shell '_orv_complete() { _main_complete; print -r -- "<<end-of-completion>>" }'
zpty -w orv_shell 'zle -C orv-complete complete-word _orv_complete; bindkey "^I" orv-complete'
zpty -w orv_shell 'print -r -- "<<ready>>"'

# Reads until a mark, waiting on the terminal's descriptor, for 20 s at most; keeps what came.
output=
read_until() {
  local mark=$1 chunk
  local -F deadline=$(( SECONDS + 20 ))
  output=
  while (( SECONDS < deadline )); do
    if zpty -r -t orv_shell chunk; then
      output+=$chunk
      [[ $output == *$mark* ]] && return 0
    else
      zselect -t 50 -r $shell_fd
    fi
  done
  print -u2 "zsh_complete: no $mark from the shell within 20 s; it printed:"
  print -u2 -r -- $output
  return 1
}
typeset -F SECONDS
read_until '<<ready>>'$'\r' || { zpty -d orv_shell; exit 2 }

zpty -w -n orv_shell "$line"$'\t'
read_until '<<end-of-completion>>'$'\r' || { zpty -d orv_shell; exit 2 }
zpty -d orv_shell

for l in ${(f)output//$'\r'/}; do
  [[ $l == '<<match>>'* ]] && print -r -- ${l#'<<match>>'}
done | sort -u
