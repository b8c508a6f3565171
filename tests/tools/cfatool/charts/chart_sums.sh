#!/bin/sh
# Every chart, at one size, has the bytes that were recorded after looking at it.
# Usage: chart_sums.sh CFATOOL SUMS           checks
#        chart_sums.sh CFATOOL SUMS --record  records
set -eu
tool=$1
sums=$(cd "$(dirname "$2")" && pwd)/$(basename "$2")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
for name in $("$tool" chart --list | cut -d ' ' -f 1); do
    "$tool" chart "$name" --size 161x121 --bayer 1 --seed 7 -o "$name.ppm"
done
"$tool" chart zone-plate --size 64x48 --bayer 8 --bits 16 --noise 2.5 --seed 7 -o zone-plate-4x4-noise.ppm
"$tool" chart stripes --size 64x48 --bayer 0 --bits 24 --angle 123.4 --period 3.1 -o stripes-24.ppm
if [ "${3-}" = --record ]; then
    sha256sum -- *.ppm >"$sums"
    exit 0
fi
sha256sum -c "$sums"
for file in *.ppm; do
    grep -q "  $file\$" "$sums" || { echo "$file has no recorded sum"; exit 1; }
done
