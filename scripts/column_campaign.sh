#!/usr/bin/env bash
# SPDX-FileCopyrightText: Morvane Keeper contributors
# SPDX-License-Identifier: GPL-3.0-or-later
#
# The long run of column encryption's crash test. A plain test run takes a sample.
#   scripts/column_campaign.sh [KILLS [SEED]]   kills it at KILLS random moments over 1,000 cells
# Builds with the dev preset. TMPDIR chooses where the files lie.
set -euo pipefail
cd "$(dirname "$0")/.."

export KEEPER_COLUMN_KILLS=${1:-300} KEEPER_COLUMN_SEED=${2:-1}
[ -f build/dev/build.ninja ] || cmake --preset dev >/dev/null
cmake --build --preset dev --target guard_test
exec build/dev/bin/guard_test --gtest_filter=ColumnSwitchTest.AKillAtAnyMomentLeavesAllOrNothing
