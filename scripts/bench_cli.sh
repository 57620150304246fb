#!/usr/bin/env bash
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# Whole-process measurements of morvane-cli beside the programs that a user would take instead.
# Files lie in memory (tmpfs), so that the programs are measured and not a disk.
# usage: scripts/bench_cli.sh [PATH-OF-MORVANE-CLI]
set -euo pipefail
cli=$(realpath "${1:-build/release/bin/morvane-cli}")
folder=$(mktemp -d /dev/shm/morvane-bench.XXXXXX)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
printf '0123456789abcdef0123456789abcdef' > key
head -c 268435456 /dev/urandom > big
head -c 1024 /dev/urandom > small
hex=$(printf '30%.0s' {1..32})
encrypt="$cli encrypt --key-file key --force"
decrypt="$cli decrypt --key-file key --force"

compare() {
    echo "== $1"
    shift
    hyperfine -N --warmup 1 --style basic "$@" 2>/dev/null | grep -E 'Benchmark|Time|times faster|ran|±' || true
}

compare 'encipher 256 MiB' --prepare 'rm -f big.aes big.ssl' \
    "$encrypt big big.aes" "openssl enc -aes-256-ecb -K $hex -in big -out big.ssl"
openssl enc -aes-256-ecb -K "$hex" -in big -out big.ssl
$encrypt big big.aes
compare 'decipher 256 MiB' --prepare 'rm -f big.out big.out2' \
    "$decrypt big.aes big.out" "openssl enc -d -aes-256-ecb -K $hex -in big.ssl -out big.out2"
rm -f big.aes big.ssl big.out big.out2
compare 'xor of 256 MiB' --prepare "bash -c 'cp big source; rm -f copy source.xor'" \
    "$encrypt source source.xor" 'cp source copy'
rm -f source source.xor copy
compare 'md5 of 256 MiB' "$cli digest big" 'md5sum big'
compare 'sha1 of 256 MiB' "$cli digest --algorithm sha1 big" 'openssl dgst -sha1 big'
compare 'encipher 1 KiB' --runs 300 "$encrypt small small.aes" \
    "openssl enc -aes-256-ecb -K $hex -in small -out small.ssl"

openssl enc -aes-256-ecb -K "$hex" -in small -out small.ssl
compare 'decipher 1 KiB' --runs 300 "$decrypt small.aes small.out" \
    "openssl enc -d -aes-256-ecb -K $hex -in small.ssl -out small.out2"

# The largest resident set of a run, in KiB.
memory() {
    python3 -c 'import resource, subprocess, sys
subprocess.run(sys.argv[1:], check=True)
print(resource.getrusage(resource.RUSAGE_CHILDREN).ru_maxrss)' "$@"
}
echo '== memory'
echo "256 MiB: $(memory $encrypt big big.aes) KiB"
rm -f big.aes
truncate -s 900M large
echo "900 MiB: $(memory $encrypt large large.aes) KiB enciphering"
rm -f large
echo "900 MiB: $(memory $decrypt large.aes large) KiB deciphering"
