# Building with the presets, quietly: what the compilers say goes to a log that is shown when they fail.
# Read by the scripts with `source`, after packages.sh. Everything is said on standard error.

cores=$(nproc 2>/dev/null || getconf _NPROCESSORS_ONLN 2>/dev/null || echo 1)

# run_logged LOG WHAT COMMAND...: runs COMMAND with its output at the end of LOG; shows the tail of it on failure.
run_logged() {
  local log=$1 what=$2
  shift 2
  "$@" </dev/null >>"$log" 2>&1 && return
  tail -n 30 "$log" >&2
  echo "$what failed; all of it is in $log" >&2
  return 1
}

# build PRESET LOG [configure options...]: configures and builds what the preset names, on all cores. A build that
# is up to date is left alone, at the cost of looking.
build() {
  local preset=$1 log=$2
  shift 2
  : >"$log"
  if [ ! -e "build/$preset/build.ninja" ] || [ $# -gt 0 ]; then
    run_logged "$log" 'Configuring the build' cmake --preset "$preset" "$@" || return
  fi
  run_logged "$log" 'The build' cmake --build --preset "$preset" --parallel "$cores"
}
