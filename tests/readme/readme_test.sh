#!/usr/bin/env bash
# Runs the README's command lines and its embedding example in a scratch folder, and checks what they print.
set -euo pipefail
source_folder=$1 tool=$2 example=$3
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
ln -s "$source_folder/examples" "$scratch/examples"
cd "$scratch"
tn61131() { "$tool" "$@"; }

commands=$(sed -n '/^```sh$/,/^```$/p' "$source_folder/README.md" | grep '^tn61131 ')
[ "$(grep -c . <<<"$commands")" -eq 8 ] || { echo "the README has other command lines than this test knows"; exit 1; }
# The program above the build instructions.
sed -n '/^```iecst$/,/^```$/p' "$source_folder/README.md" | grep -v '^```' >first.st
echo '{"1": {"name": "Tank.level", "type": "REAL"}, "2": {"name": "Tank.pump", "type": "BOOL"}}' >first.json
tn61131 run first.st --tags first.json --timestamp 0

while IFS= read -r line; do
    echo "+ $line"
    eval "$line" </dev/null
done <<<"$commands"

# The counter adds one in each of the ten scans.
result=$("$example" counter.vmi)
[ "$result" = "DINT#10" ] || { echo "the embedding example printed '$result'"; exit 1; }
