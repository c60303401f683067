#!/bin/sh
# abi.sh SOURCE OUT: writes down the binary interface that SOURCE/tests/host/Interfaces.cpp knows, as abigail reads it
# out of a debugger's information. Compiled with CXX, g++ where that is not set.
set -eu

source=$1
out=$(realpath "$2")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$source"
# Each class is described although nothing here implements it: otherwise the interfaces were names without a table,
# and no change of one would show.
"${CXX:-g++}" -std=c++20 -O0 -g -femit-class-debug-always -fPIC -shared -I. \
  tests/host/Interfaces.cpp -o "$folder/libinterfaces.so"
# Without what differs from place to place: folders, line numbers, the libraries that were linked. A type's number is
# made of its name, so that a change is a small difference of the file too.
abidw --headers-dir host --drop-private-types --type-id-style hash --no-comp-dir-path --no-corpus-path \
  --no-show-locs --no-elf-needed --out-file "$out" "$folder/libinterfaces.so"
