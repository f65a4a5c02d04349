# For the tests of the built command: a home of their own, and what they check with.
set -euo pipefail
export LC_ALL=C.UTF-8
unset XDG_CONFIG_HOME XDG_DATA_HOME DISPLAY WAYLAND_DISPLAY

scratch=$(mktemp -d)
export HOME=$scratch/home XDG_RUNTIME_DIR=$scratch/runtime
mkdir -m 700 "$HOME" "$XDG_RUNTIME_DIR"

fail() {
  printf 'FAILED: %s\n' "$*" >&2
  exit 1
}

# expect STATUS WORD…: runs the words; their output is then in $out and $err.
expect() {
  local wanted=$1 status=0
  shift
  "$@" >"$scratch/out" 2>"$scratch/err" </dev/null || status=$?
  out=$(cat "$scratch/out")
  err=$(cat "$scratch/err")
  [ "$status" = "$wanted" ] || fail "$* ended with $status, not $wanted: $out $err"
  # Whatever fails says why, in one line.
  if [ "$wanted" != 0 ]; then
    [ "$(wc -l <"$scratch/err")" = 1 ] || fail "$* did not say why in one line: $err"
  fi
}

equal() {
  [ "$1" = "$2" ] || fail "\"$1\" is not \"$2\""
}

contains() {
  case $1 in *"$2"*) ;; *) fail "\"$2\" is not in \"$1\"" ;; esac
}

# until SECONDS WORD…: runs the words until they succeed.
until_true() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$end" ] || return 1
    read -rt 0.05 <> <(:) || true
  done
}
