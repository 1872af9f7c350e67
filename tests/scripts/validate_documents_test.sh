#!/usr/bin/env bash
# scripts/validate-documents finds what is wrong with documents. Argument: a folder with the documents of sample devices.
set -euo pipefail
export LC_ALL=C  # sed shall alter bytes
expected=$1
validate=$(readlink -f -- "$(dirname -- "$0")/../../scripts/validate-documents")
folder=$(mktemp -d)
trap 'rm -rf -- "$folder"' EXIT
sample=$expected/dual-band-bridge

status=0
wrong() {
  echo "$1: $(cat -- "$folder/said")"
  status=1
}
begin() { rm -rf -- "$folder/documents" && mkdir -- "$folder/documents"; }
run() { "$validate" "$folder/documents" >"$folder/said" 2>&1; }
# expect_valid WHAT: the documents are, all of them.
expect_valid() { run || wrong "$1 is refused"; }
# expect_refused WHAT WORDS: they are not, and it is said why.
expect_refused() {
  if run; then
    wrong "$1 is taken"
  elif ! grep -qF -- "$2" "$folder/said"; then
    wrong "$1 is refused without the words '$2'"
  fi
}
# altered DOCUMENT FROM TO: the sample's document with another text in place of one that it has.
altered() {
  begin
  sed "0,/$2/s//$3/" "$sample/$1" >"$folder/documents/$1"
  ! cmp -s -- "$sample/$1" "$folder/documents/$1" || wrong "there is no '$2' in $1"
}

begin
cp -- "$sample"/*.json* "$folder/documents"
expect_valid 'a device'
grep -q '5 documents are valid' "$folder/said" || wrong 'not all documents of a device are looked at'

altered global.json '"logLevel": 2' '"logLevel": 3'
expect_refused 'another number' 'global.json: .logLevel breaks the rule oneOf'
altered global.json '"logLevel"' '"logLevels"'
expect_refused 'a member of another name' 'breaks the rule required'
expect_refused 'a member that does not belong there' 'breaks the rule additionalProperties'
altered network.json.bridge '"number": 0' '"number": 1'
expect_refused 'the networks in the wrong order' '[0].number breaks the rule const'
altered network.json.bridge '"date": "2021-01-01 00:00"' '"date": "2021-01-02 00:00"'
expect_refused 'a schedule of the guest password in the primary network' '.guestPasswordRotation breaks the rule const'
altered radio.json '"frequency": 3' '"frequency": 2'
expect_refused 'radios that no device has together' 'the document breaks the rule anyOf'
altered network.json.bridge '"frequency": 3' '"frequency": 2'
expect_refused 'networks on radios that no device has together' '.featureSettings breaks the rule anyOf'
altered radio.json '"bandwidth": 3' '"bandwidth": 1'
expect_refused 'forced 40 MHz at 5 GHz' '[1].frequency breaks the rule const'
altered wps.json '"band": 0' '"band": 1'
expect_refused 'a radio of WPS where that is off' '.band breaks the rule const'
altered misc.json '"id": 0' '"id": 1'
expect_refused 'a profile whose number is not its place' '.macFilterProfiles[0].id breaks the rule const'
altered misc.json '"policy": 0' '"policy": 1'
expect_refused 'a list that denies under the name of one that allows' '.macFilterProfiles[0].policy breaks the rule const'
altered network.json.bridge '"dtim": [0-9]*' '"dtim": 2147483648'
expect_refused 'a number of more than 32 bits' 'dtim breaks the rule maximum'
altered network.json.bridge '"ssid": "[^"]*"' '"ssid": "na\xefve"'
expect_valid 'a text that is no UTF-8'
altered network.json.bridge '"password": "[^"]*"' '"password": ["hush-hush"]'
expect_refused 'a list as a text' '.password breaks the rule type'
! grep -q hush-hush "$folder/said" || wrong 'a value of the document is shown'
altered misc.json '\([0-9a-f]\):' '\1-'
expect_refused 'a MAC address of another form' 'mac breaks the rule pattern'
altered wps.json '"reserved": 0' '"reserved": 0, "reserved": 0'
expect_refused 'a member that stands there twice' 'stands there twice'
altered wps.json '"reserved": 0' '"reserved": NaN'
expect_refused 'what only looks like JSON' 'wps.json: no JSON'
begin
head -c 20 -- "$sample/radio.json" >"$folder/documents/radio.json"
expect_refused 'half a document' 'radio.json: no JSON'
printf '[]' >"$folder/documents/radio.json"
expect_refused 'a device without radios' 'the document breaks the rule minItems'

begin
cp -- "$sample/radio.json" "$folder/documents/0f1e.wps.json"
expect_refused 'a document under the name of another, behind a word' '0f1e.wps.json: the document breaks the rule type'
begin
cp -- "$sample/radio.json" "$folder/documents/radios.json"
expect_refused 'a document of an unknown name' 'there is no schema'
begin
expect_refused 'a folder without documents' 'no document in'
rm -rf -- "$folder/documents"
expect_refused 'no folder' 'there is no folder'
exit $status
