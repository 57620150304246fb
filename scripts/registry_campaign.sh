#!/usr/bin/env bash
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The long run of the user registry's crash test. A plain test run takes a sample.
#   scripts/registry_campaign.sh [COUNT [SEED]]   COUNT kills at random system calls of writing
#                                                 user records
# Builds with the dev preset. TMPDIR chooses where the files lie.
set -euo pipefail
cd "$(dirname "$0")/.."

export KEEPER_REGISTRY_KILLS=${1:-500} KEEPER_REGISTRY_SEED=${2:-1}
[ -f build/dev/build.ninja ] || cmake --preset dev >/dev/null
cmake --build --preset dev --target app_test
exec build/dev/bin/app_test --gtest_filter='UsersTest.KilledWhileWritingLeavesAWholeRecord'
