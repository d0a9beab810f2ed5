#!/bin/sh
# How long does the program take as a whole, and how much memory? Median wall time and peak memory
# of whole commands, at 10,000 and 100,000 cards. Beside them, as floors: a program that does
# nothing, SQLite alone writing the same rows, SQLite alone listing them.
#
# usage: bench/program.sh [BUILD]     (build/bench unless given; RUNS=5 for more or fewer runs)
set -eu
cd "$(dirname "$0")/.."
build=${1:-build/bench}
runs=${RUNS:-5}
bin=$build/bench
program=$build/oxcontacts/oxcontacts
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT INT TERM

row() { # NAME RUNS COMMAND...
  printf '%-46s' "$1"
  shift
  "$bin/bench_measure" "$@"
}

"$bin/bench_measure" --machine
printf '%-46s %13s %11s\n' command median 'peak memory'
row 'floor: a program that does nothing' "$runs" true

for size in ${OX_BENCH_SIZES:-10000 100000}; do
  cards=$folder/$size.vcf
  export OX_CONTACT_STORE="$folder/$size.db"
  "$bin/bench_make_contacts" "$size" "$cards"
  # A store of its own for each run of the import; the last one stays.
  cat > "$folder/import" <<EOF
#!/bin/sh
rm -f "$OX_CONTACT_STORE"*
exec "$program" --quiet import "$cards"
EOF
  chmod +x "$folder/import"
  echo "$size cards"
  row '  import' "$runs" "$folder/import"
  row '  floor: rows by plain SQLite' "$runs" "$bin/bench_plain_store" write "$OX_CONTACT_STORE"
  row '  import, all there' "$runs" "$program" --quiet import "$cards"
  row '  accounts' "$runs" "$program" accounts
  row '  books' "$runs" "$program" books
  row '  persons --limit 10' "$runs" "$program" persons --limit 10
  row '  floor: listing by plain SQLite' "$runs" "$bin/bench_plain_store" list "$OX_CONTACT_STORE"
done
