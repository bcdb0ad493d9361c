#!/bin/sh
# Repeats the tests of signals, threads and abnormal ends while the machine is busy; a hang shows as a
# failure by the children's alarm. Then come the long forms of those that are short in the check.
# Usage: repeat_under_load.sh RUN_TEST [TIMES]
test_program=${1:?usage: $0 RUN_TEST [TIMES]}
times=${2:-200}
load_ids=
for i in 1 2 3; do
    (while :; do :; done) &
    load_ids="$load_ids $!"
done
trap 'kill $load_ids' EXIT INT TERM
# The end that the watch must force takes seconds, and source lines too.
"$test_program" --gtest_brief=1 --gtest_repeat="$times" --gtest_break_on_failure \
    --gtest_filter='Signal*:Abort.*:ThreadEnds.*:-*Allocator*:*SourceLines*:SignalSteps.*' || exit
LONG_TEST_KILLS=1000 LONG_TEST_RUN_UNITS=100000 \
    "$test_program" --gtest_brief=1 --gtest_filter='SignalSteps.*:Hostile.*'
