#!/bin/sh
# Installs what a build of this project needs and the machine lacks; does nothing, fast, on a machine
# that has it all. Debian and its kin are served by apt-get; elsewhere the missing things are named.
set -eu

missing=""
# need PACKAGE TEST...: the package is missing when the test fails.
need() {
  package=$1
  shift
  "$@" >/dev/null 2>&1 || missing="$missing $package"
}
fuzzer_runtime() { ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-*.a; }
header() { [ -e "/usr/include/$1" ] || [ -e "/usr/local/include/$1" ]; }

need g++ command -v g++
need cmake command -v cmake
need ninja-build command -v ninja
need ccache command -v ccache
need pkg-config command -v pkg-config
need libgtest-dev header gtest/gtest.h
need libgmock-dev header gmock/gmock.h
need libbenchmark-dev header benchmark/benchmark.h
need libcli11-dev header CLI/CLI.hpp
need libfmt-dev header fmt/format.h
case "${1:-}" in
  bench)  # the peers that the benchmarks measure beside the product, each of them optional
    need libvectorscan-dev header hs/hs.h
    need libre2-dev header re2/set.h
    need libpcre2-dev header pcre2.h
    ;;
  fuzz)
    need clang command -v clang++
    need libclang-rt-14-dev fuzzer_runtime
    ;;
  coverage) need gcovr command -v gcovr ;;
  abi) need abigail-tools command -v abidw ;;
  lint)
    need clang command -v clang++
    need clang-tidy command -v clang-tidy
    need clang-format command -v clang-format
    ;;
esac
[ -n "$missing" ] || exit 0

command="apt-get install -y --no-install-recommends$missing"
give_up() {
  echo "something is missing; run this line as root, then make again:" >&2
  echo "  apt-get update && $command" >&2
  exit 1
}
if ! command -v apt-get >/dev/null 2>&1; then
  echo "missing on this machine:$missing" >&2
  exit 1
elif [ "$(id -u)" = 0 ]; then
  as=""
elif command -v sudo >/dev/null 2>&1; then
  as="sudo"  # asks on a terminal; without one it refuses where it would have to
else
  give_up
fi
echo "installing:$missing" >&2
$as apt-get update -q >/dev/null || give_up
$as env DEBIAN_FRONTEND=noninteractive $command >/dev/null || give_up
