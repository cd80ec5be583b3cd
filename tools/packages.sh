# What the tools share: the Debian packages that they need. To be sourced.

# need_packages PROBE=PACKAGE...: each probe is a command on the path or a file; the packages of
# those that are missing are installed or, without root, named.
need_packages() {
  missing=
  for pair in "$@"; do
    probe=${pair%%=*}
    case $probe in
      /*) [ -e "$probe" ] && continue ;;
      *) command -v "$probe" > /dev/null 2>&1 && continue ;;
    esac
    missing="$missing ${pair#*=}"
  done
  [ -n "$missing" ] || return 0
  if [ "$(id -u)" -ne 0 ]; then
    echo "These Debian packages are missing:$missing" >&2
    echo "Install them with: sudo apt-get install$missing" >&2
    exit 1
  fi
  echo "Installing$missing" >&2
  apt-get update -qq
  # The packages are words.
  # shellcheck disable=SC2086
  DEBIAN_FRONTEND=noninteractive apt-get install -y -qq $missing > /dev/null
}

need_compiler() { need_packages g++=g++ make=make cmake=cmake; }

# build PRESET [CMAKE_OPTION...]: configures and builds quietly, on all processors.
build() {
  preset=$1
  shift
  cmake --preset "$preset" "$@" > /dev/null
  cmake --build --preset "$preset" --parallel "$(nproc)" > "build/$preset/build.log" 2>&1 || {
    cat "build/$preset/build.log" >&2
    exit 1
  }
}
