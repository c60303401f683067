#!/bin/sh
# fuzz.sh BUILD_FOLDER SECONDS: runs every fuzz target of the build for that long, from its stored
# corpus. What a run finds new goes to the build folder, so the checkout stays as it was.
set -eu

build=$1
seconds=$2
while IFS='|' read -r name corpus dictionary; do
  [ -n "$name" ] || continue
  found="$build/fuzz/found/$name"
  mkdir -p "$found"
  echo "== $name for $seconds s"
  "$build/fuzz/$name" -max_total_time="$seconds" -print_final_stats=0 -verbosity=0 -rss_limit_mb=4096 \
    -artifact_prefix="$build/fuzz/$name-" -dict="$dictionary" "$found" "$corpus"
done < "$build/fuzz/targets.txt"
