#!/usr/bin/env bash
# For scripts to source: a virtual card of their own, which ends with them.

# Starts a card that draws into the file SVG, on a free port, and waits until it listens. Its port is $port; what
# it reads on standard input goes to descriptor $input.
#   start_card SVG [OPTION...]
start_card() {
  local svg=$1 line
  shift
  coproc CARD { exec build/release/bin/kelvo-virtual-card --port 0 --svg "$svg" "$@"; }
  card=$CARD_PID
  exec {input}>&"${CARD[1]}" # the original is closed in pipelines
  trap 'kill "$card" 2>/dev/null || true' EXIT
  # Its first line says where it listens: "Listening on ADDRESS:PORT".
  read -r -u "${CARD[0]}" line || { echo "The virtual card did not start." >&2; exit 1; }
  echo "Virtual card: $line"
  # shellcheck disable=SC2034 # for whoever sources this
  port=${line##*:}
  drawing=$svg
}

# Ends the card, which has written its picture for good then.
end_card() {
  kill "$card"
  wait "$card" || true
  exec {input}>&-
  [[ -s $drawing ]] || { echo "The virtual card drew nothing." >&2; exit 1; }
}
