# Debian packages that a script needs: says which are missing and why, installs them, or prints the command that does.
# Read by the scripts with `source`. Everything is said on standard error.

packages_missing=()
packages_reasons=()

# need PACKAGE REASON TEST...: notes PACKAGE as missing unless the command TEST... succeeds.
need() {
  local package=$1 reason=$2
  shift 2
  "$@" >/dev/null 2>&1 && return
  packages_missing+=("$package")
  packages_reasons+=("$reason")
}

# installed PACKAGE: whether dpkg has it installed, for packages that bring no command to look for. Where there is no
# dpkg, CMake will tell.
installed() { ! command -v dpkg-query >/dev/null || [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]; }

# What a build of the tool takes.
need_build_tools() {
  local CXX=${CXX:-c++}
  need g++ 'compiles C++20' command -v "${CXX%% *}"
  need cmake 'describes the build' command -v cmake
  need ninja-build 'runs the compilers, one on each core' command -v ninja
  need libcli11-dev 'reads the command line' installed libcli11-dev
  need libfmt-dev 'formats the tables' installed libfmt-dev
}

# install_missing LOG: installs what need() noted, with its output in the file LOG. Ends the script when it cannot.
install_missing() {
  local log=$1 i
  [ ${#packages_missing[@]} -gt 0 ] || return 0
  {
    echo 'These packages are needed and not installed yet:'
    for i in "${!packages_missing[@]}"; do
      printf '  %-22s %s\n' "${packages_missing[i]}" "${packages_reasons[i]}"
    done
  } >&2
  if ! command -v apt-get >/dev/null; then
    echo 'This machine has no apt-get: install them, or what they are called here, in its own way and try again.' >&2
    exit 1
  fi

  local install="apt-get install -y --no-install-recommends ${packages_missing[*]}"
  local -a as_root=(env DEBIAN_FRONTEND=noninteractive)
  if [ "$(id -u)" -ne 0 ]; then
    if ! sudo -n true 2>/dev/null; then
      echo 'Only root can install them. Run this once, then try again:' >&2
      if command -v sudo >/dev/null; then
        echo "  sudo sh -c 'apt-get update && $install'" >&2
      else
        echo "  su -c 'apt-get update && $install'" >&2
      fi
      exit 1
    fi
    as_root=(sudo -n "${as_root[@]}")
  fi

  echo "Installing them: $install" >&2
  # An update may fail for a list that has nothing to do with these packages: the installation tells.
  "${as_root[@]}" apt-get -q update </dev/null >"$log" 2>&1
  if ! "${as_root[@]}" $install </dev/null >>"$log" 2>&1; then
    tail -n 20 "$log" >&2
    echo "The installation failed; all of it is in $log" >&2
    exit 1
  fi
}
