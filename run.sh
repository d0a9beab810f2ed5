#!/bin/sh
# Builds the program. With arguments it runs it with these; without, it shows a demo: the example
# contacts imported into four address books of a store under build/demo (or the one that
# OX_CONTACT_STORE names), the books, and one person in full.
set -eu
start=$PWD
cd "$(dirname "$0")"
root=$PWD
scripts/install_packages
cmake --preset release >/dev/null
cmake --build --preset release --target oxcontacts -j "$(nproc)" >&2
program=$root/build/release/oxcontacts/oxcontacts

if [ $# -gt 0 ]; then
  cd "$start"
  exec "$program" "$@"
fi

: "${OX_CONTACT_STORE:=$root/build/demo/contacts.db}"
export OX_CONTACT_STORE
echo "store: $OX_CONTACT_STORE"

# file, account, name, type
import() {
  if [ "$2" != _local ] && ! "$program" --quiet --json accounts | grep -q "\"$2:ABAccount\""; then
    "$program" --quiet accounts add "$3" --type "$4" --identifier "$2:ABAccount" >/dev/null
  fi
  echo
  echo "$3: examples/contacts/$1"
  "$program" import "examples/contacts/$1" --into "$2"
}
import local.vcf _local "On My Mac" local
import icloud.vcf demo-icloud iCloud carddav
import google.vcf demo-google Google carddav
import company.vcf demo-company "Brightwater Ltd" exchange

echo
"$program" books
echo
"$program" groups
echo
"$program" show "$("$program" --json persons --find "Zoë" | sed -n 's/.*"ID": *"\([^"]*\)".*/\1/p' | head -n 1)"
