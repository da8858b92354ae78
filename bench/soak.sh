#!/usr/bin/env bash
# A recorder that is left running in a private server while a device goes and comes back and the server is started
# again, then kills at random moments. Prints what the recorder holds early and late.
# usage: bench/soak.sh [seconds=600] [kills=30] [seed]
set -euo pipefail
cd "$(dirname "$0")/.."
export CANTOREL_SOAK_SECONDS=${1:-600} CANTOREL_SOAK_KILLS=${2:-30}
[ -z "${3:-}" ] || export CANTOREL_SOAK_SEED=$3
scripts/build release soak
exec build/release/bin/soak --gtest_brief=1
