#!/bin/sh
# tshark's DSM-CC dissector, an independent reader, decodes every DSM-CC section of a stream
# (the carousel's, and the stream descriptors of its stream events) without a malformed
# packet or an error.
#   tshark_reads_carousel.sh TSHARK STREAM.ts EXPECTED_SECTIONS
set -u
decoded=$("$1" -r "$2" -o mpeg_sect.verify_crc:TRUE -V 2>/dev/null) || { echo "tshark cannot read $2"; exit 1; }
sections=$(printf '%s\n' "$decoded" | grep -c '^MPEG DSM-CC')
errors=$(printf '%s\n' "$decoded" | grep -ciE 'malformed|expert info \((error|warning)|crc.*(bad|incorrect)')
echo "tshark: $sections DSM-CC section(s), $errors error(s)"
[ "$sections" -eq "$3" ] && [ "$errors" -eq 0 ]
