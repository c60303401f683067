# Completion of tovrin for bash. Commands, options and their values come from the program's own help, so
# that there is no second list of them.

_tovrin_help() { "${COMP_WORDS[0]}" $1 --help 2>/dev/null; }

# The options in a help text; the first word of their lines has all spellings, as in -v,--invert-match.
_tovrin_options() { sed -n 's/^  \(-[^ {]*\).*/\1/p' | tr ',' '\n'; }

_tovrin() {
  local current=$2 previous=$3 general commands command= word help value candidates
  general=$(_tovrin_help)
  commands=$(sed -n '/^Subcommands:/,$s/^  \([a-z][a-z]*\) .*/\1/p' <<<"$general")
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    if [[ $'\n'$commands$'\n' == *$'\n'$word$'\n'* ]]; then
      command=$word
      break
    fi
  done
  help=$general
  [[ -z $command ]] || help=$(_tovrin_help "$command")$'\n'$general
  # What follows the option before, if that wants a value: TEXT, or TEXT:{compact,indented}
  [[ $previous == -* ]] && value=$(sed -n "s/^  \([^ ]*,\)*$previous \([A-Z][^ ]*\).*/\2/p" <<<"$help")

  if [[ $value == *{* ]]; then
    value=${value#*\{}
    candidates=$(tr ',' '\n' <<<"${value%%\}*}")
  elif [[ -z $value && $current == -* ]]; then
    candidates=$(_tovrin_options <<<"$help")
  elif [[ -z $value && -z $command ]]; then
    candidates=$commands
  else
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen -f -- "$current")
    return
  fi
  mapfile -t COMPREPLY < <(compgen -W "$candidates" -- "$current" | sort -u)
}

complete -F _tovrin tovrin
