// The stack of signal tables: run units do not always end in the order in which they began.

#include <algorithm>
#include <array>
#include <csignal>

#include "run/signal_table.h"
#include "signal_row.h"

#include <gtest/gtest.h>

namespace {

void ownHandler(int /*signo*/) {}

__sighandler_t handlerOf(int signo) {
    struct sigaction action {};
    sigaction(signo, nullptr, &action);
    return action.sa_handler;
}

TEST(SignalTable, WhatStoodBeforeComesBackInWhicheverOrderTheyAreRemoved) {
    std::array<unsigned, 3> order{0, 1, 2};
    do {
        SignalRow tables[3][zor::kSignalTableBytes / sizeof(SignalRow)] = {};
        signal(SIGTERM, ownHandler);
        signal(SIGPIPE, SIG_DFL);
        for (SignalRow *table : tables) {
            zor::fillSignalTable(table);
            zor::installSignalTable(table);
        }
        const __sighandler_t dispatcher = handlerOf(SIGTERM);
        EXPECT_NE(dispatcher, ownHandler);
        for (const unsigned removed : order) {
            EXPECT_EQ(handlerOf(SIGTERM), dispatcher);
            EXPECT_EQ(handlerOf(SIGPIPE), SIG_IGN);
            zor::removeSignalTable(tables[removed]);
        }
        zor::removeSignalTable(tables[0]); // one that is not in force changes nothing
        EXPECT_EQ(handlerOf(SIGTERM), ownHandler);
        EXPECT_EQ(handlerOf(SIGPIPE), SIG_DFL);
        EXPECT_EQ(handlerOf(SIGSTKFLT), SIG_DFL);
    } while (std::next_permutation(order.begin(), order.end()));
    signal(SIGTERM, SIG_DFL);
}

} // namespace
