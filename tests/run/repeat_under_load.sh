#!/bin/sh
# Repeats the tests of signals and abnormal ends while the machine is busy; a hang shows as a failure
# by the children's alarm. Usage: repeat_under_load.sh RUN_TEST [TIMES]
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
    --gtest_filter='Signal*:Abort.*:-*Allocator*:*SourceLines*'
