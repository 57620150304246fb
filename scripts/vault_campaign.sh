#!/usr/bin/env bash
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The long run of the sealed database's crash and damage tests. A plain test run takes a sample.
#   scripts/vault_campaign.sh crash  [MOMENTS [SEED]]   a kill and a failing disk at every system
#                                                       call, and kills at MOMENTS random moments
#                                                       of sealing, re-keying, compaction; and a
#                                                       kill and a failing disk at every call of
#                                                       a change of the key and of the making of a
#                                                       new user
#   scripts/vault_campaign.sh damage [COUNT [SEED]]     every truncation, COUNT random corruptions
# Builds with the dev preset. TMPDIR chooses where the files lie.
set -euo pipefail
cd "$(dirname "$0")/.."

what=${1:-}
case $what in
    crash)
        export KEEPER_CRASH_STEP=1 KEEPER_CRASH_MOMENTS=${2:-500} KEEPER_CRASH_SEED=${3:-1}
        filter='VaultCrashTest.*'
        ;;
    damage)
        export KEEPER_DAMAGE_STEP=1 KEEPER_DAMAGE_COUNT=${2:-10000} KEEPER_DAMAGE_SEED=${3:-1}
        filter='SealedDamageTest.*'
        ;;
    *)
        sed -n '6,13s/^# \{0,2\}//p' "$0" >&2
        exit 2
        ;;
esac
[ -f build/dev/build.ninja ] || cmake --preset dev >/dev/null
cmake --build --preset dev --target store_vault_test guard_session_test
if [ "$what" = crash ]; then
    build/dev/bin/guard_session_test --gtest_filter='*Test.KilledAnywhere*:KeyChangeTest.AFailing*:NewUserTest.*'
fi
exec build/dev/bin/store_vault_test --gtest_filter="$filter"
