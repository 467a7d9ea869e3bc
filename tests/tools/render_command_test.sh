#!/bin/sh
# The renderer's command line: --help and -h print the usage and succeed; an unknown
# option fails, naming the option, with the usage after it. $1 is halvern-render.
render="$1"
for flag in --help -h; do
    out=$("$render" "$flag") || { echo "$flag failed"; exit 1; }
    echo "$out" | grep -q '^Usage: halvern-render' || { echo "$flag printed no usage"; exit 1; }
done
if out=$("$render" --bogus 2>&1); then
    echo "an unknown option succeeded"
    exit 1
fi
echo "$out" | grep -q 'unknown option --bogus' || { echo "the error does not name the option"; exit 1; }
echo "$out" | grep -q '^Usage: halvern-render' || { echo "no usage after the error"; exit 1; }
