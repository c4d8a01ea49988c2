#!/usr/bin/env bash
# Runs a command, then checks its exit code and that its output (standard output and
# error together) holds every pattern, each an extended regular expression.
# Usage: expect_output.sh CODE PATTERN... -- COMMAND...
set -u
code=$1
shift
patterns=()
while (($#)) && [[ $1 != -- ]]; do
  patterns+=("$1")
  shift
done
shift
output=$("$@" 2>&1)
status=$?
failed=0
if ((status != code)); then
  echo "exit $status, expected $code"
  failed=1
fi
for pattern in "${patterns[@]}"; do
  if ! grep -Eq -- "$pattern" <<<"$output"; then
    echo "no line matches: $pattern"
    failed=1
  fi
done
if ((failed)); then
  echo "--- output of: $*"
  echo "$output"
fi
exit $failed
