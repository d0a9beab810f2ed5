#!/bin/sh
# Builds the program. With arguments it runs it with these; without, it shows a demo: the example
# contacts imported into four address books of a store under build/demo (or the one that
# OX_CONTACT_STORE names), then edits on a copy of that store, which is made anew at every run.
set -eu
start=$PWD
cd "$(dirname "$0")"
root=$PWD
program=$root/build/release/oxcontacts/oxcontacts
cores=$(nproc)
if [ ! -x "$program" ]; then
  echo "This installs the Debian packages that are missing (packages.txt, the first part), builds" >&2
  echo "oxcontacts under build/release, about $((12 / cores + 1)) minutes on $cores cores, and runs it." >&2
fi
scripts/install_packages run
cmake --preset release >/dev/null
cmake --build --preset release --target oxcontacts -j "$cores" >&2

if [ $# -gt 0 ]; then
  cd "$start"
  exec "$program" "$@"
fi

# The store that a command with arguments works on, and the one of this demo.
own=${OX_CONTACT_STORE:-${XDG_DATA_HOME:-${HOME:-}/.local/share}/oxcontacts/contacts.db}
demo=${OX_CONTACT_STORE:-$root/build/demo/contacts.db}
export OX_CONTACT_STORE="$demo"

# file, account, name, type
import() {
  if [ "$2" != _local ] && ! "$program" --quiet --json accounts | grep -q "\"$2:ABAccount\""; then
    "$program" --quiet accounts add "$3" --type "$4" --identifier "$2:ABAccount" >/dev/null
  fi
  printf '%-16s ' "$3"
  "$program" --quiet import "examples/contacts/$1" --into "$2"
}
echo "1. Example contacts, imported into the store $OX_CONTACT_STORE"
echo "   (run this again: everything is skipped, nothing is there twice)"
import local.vcf _local "On My Mac" local
import icloud.vcf demo-icloud iCloud carddav
import google.vcf demo-google Google carddav
import company.vcf demo-company "Brightwater Ltd" exchange
echo
"$program" books

# The edits: each command as it could be typed, then what it says.
try() {
  printf '$ oxcontacts'
  for word in "$@"; do
    case $word in *[!A-Za-z0-9_./:=+-]*) printf " '%s'" "$word" ;; *) printf ' %s' "$word" ;; esac
  done
  printf '\n'
  said=$("$program" "$@" 2>&1) || { echo "$said"; exit 1; }
  echo "$said" | sed -e 's/^oxcontacts: //' -e 's/^/    /'
}
work=$root/build/demo/edits
rm -rf "$work"
mkdir -p "$work"
"$program" --quiet backup --all "$work/contacts.db"
export OX_CONTACT_STORE="$work/contacts.db"
unset OX_TAG_STORE
cd "$work"

echo
echo "2. Edits, on a fresh copy of that store in $work"
try add-person _local 'name=Mia Holm' 'phone=+1 555 0100' birthday=--05-17
try set 'Mia Holm' 'phone+:Boat=+1 555 0177' address.city=Oslo
try tag 'Mia Holm' --add sailing
try add-group _local Club
try add-group _local Crew --under Club
try group-add Crew 'Mia Holm'
try copy 'Mia Holm' --to iCloud
try backup _local local.book
try accounts add Archive --identifier demo-archive:ABAccount
try restore Archive local.book

echo
echo "3. What came of it: Mia in three books, the restored groups, one person in full"
"$program" persons --find 'Mia Holm'
"$program" groups --book Archive
"$program" show "$("$program" --json persons --book Archive --find 'Mia Holm' |
  sed -n 's/.*"ID": *"\([^"]*\)".*/\1/p' | head -n 1)"

echo
if [ "$own" = "$demo" ]; then
  echo "./run.sh persons, and every other command, works on $own."
else
  echo "./run.sh persons, and every other command, works on your own store, $own."
  echo "On that of this demo: ./run.sh --store $demo persons"
fi
