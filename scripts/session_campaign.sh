#!/usr/bin/env bash
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The long run of the session's tests. A plain test run takes a sample.
#   scripts/session_campaign.sh kills  [COUNT [SEED]]   SIGKILL at COUNT random moments of login
#                                                       and exit of the real program
#   scripts/session_campaign.sh misses [COUNT]          COUNT wrong keys and near misses
#   scripts/session_campaign.sh logins [COUNT [SEED]]   COUNT simulated sessions under a clock that
#                                                       jumps, on several machines, with crashes
# Builds with the dev preset. TMPDIR chooses where the files lie: a folder in memory is fastest.
set -euo pipefail
cd "$(dirname "$0")/.."

build() {
    [ -f build/dev/build.ninja ] || cmake --preset dev >/dev/null
    cmake --build --preset dev --target "$@"
}

bin=build/dev/bin
case ${1:-} in
    kills)
        build morvane-keeper morvane-cli
        exec python3 tests/e2e/killed_sessions.py $bin/morvane-keeper $bin/morvane-cli "${2:-200}" "${3:-1}"
        ;;
    misses)
        export KEEPER_NEAR_MISSES=${2:-10000}
        filter='SessionTest.NoNearMiss*'
        ;;
    logins)
        export KEEPER_SIMULATED_LOGINS=${2:-100000} KEEPER_SIMULATION_SEED=${3:-20260520}
        filter='SimulatedSessions.*'
        ;;
    *)
        sed -n '6,11s/^# \{0,2\}//p' "$0" >&2
        exit 2
        ;;
esac
build guard_session_test
exec $bin/guard_session_test --gtest_filter="$filter"
