# Completion of the lumiwren command line.
_lumiwren() {
  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} line
  COMPREPLY=()
  if [ "$before" = --run-action ] && [ "$COMP_CWORD" -eq 2 ]; then
    while IFS=$'\t' read -r _ _ line; do
      [[ $line == "$word"* ]] && COMPREPLY+=("$(printf %q "$line")")
    done < <(lumiwren --actions 2>/dev/null)
  elif [ "$before" = --actions ] && [ "$COMP_CWORD" -eq 2 ]; then
    mapfile -t COMPREPLY < <(compgen -W --json -- "$word")
  elif [ "$COMP_CWORD" -eq 1 ]; then
    mapfile -t COMPREPLY < <(compgen -W \
      "--menu --settings --run-action --actions --set-api-key --quit --version --help" -- "$word")
  fi
}
complete -F _lumiwren lumiwren
