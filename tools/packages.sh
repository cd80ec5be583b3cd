# shellcheck shell=sh
# What the tools share: the Debian packages that they need, and how they build. To be sourced.

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

need_lxml() { need_packages /usr/lib/python3/dist-packages/lxml=python3-lxml; }

need_compiler() { need_packages g++=g++ make=make cmake=cmake; }
need_tests() {
  need_compiler
  need_packages /usr/include/gtest/gtest.h=libgtest-dev xmllint=libxml2-utils
  need_lxml
}
need_benchmarks() {
  need_compiler
  need_packages /usr/include/benchmark/benchmark.h=libbenchmark-dev
}
need_workflow() { need_packages snakemake=snakemake gnuplot=gnuplot-nox; }
need_fuzzers() {
  need_packages clang++=clang make=make cmake=cmake llvm-symbolizer=llvm
  need_packages "$(clang++ -print-runtime-dir)/libclang_rt.fuzzer-$(uname -m).a=libclang-rt-dev"
}

# logged LOG COMMAND...: runs a command. On a terminal its output is shown as it comes; elsewhere it
# goes to the end of a file, which is shown when the command fails.
logged() {
  log=$1
  shift
  if [ -t 1 ]; then
    "$@" || exit 1
    return
  fi
  "$@" >> "$log" 2>&1 || {
    cat "$log" >&2
    exit 1
  }
}

# build PRESET [CMAKE_OPTION...]: configures and builds, on all processors.
# ORVA_WARNINGS_AS_ERRORS=ON makes warnings errors.
build() {
  preset=$1
  shift
  mkdir -p "build/$preset"
  : > "build/$preset/build.log"
  logged "build/$preset/build.log" cmake --preset "$preset" \
    "-DORVA_WARNINGS_AS_ERRORS=${ORVA_WARNINGS_AS_ERRORS:-OFF}" "$@"
  logged "build/$preset/build.log" cmake --build --preset "$preset" --parallel "$(nproc)"
}
