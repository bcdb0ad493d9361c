// The stack of signal tables: run units do not always end in the order in which they began.

#include <algorithm>
#include <array>
#include <csignal>

#include "run/signal_table.h"
#include "signal_row.h"

#include <gtest/gtest.h>

namespace {

using Table = std::array<SignalRow, zor::kSignalTableBytes / sizeof(SignalRow)>;

void ownHandler(int /*signo*/) {}

__sighandler_t handlerOf(int signo) {
    struct sigaction action {};
    sigaction(signo, nullptr, &action);
    return action.sa_handler;
}

TEST(SignalTable, WhatStoodBeforeComesBackInWhicheverOrderTheyAreRemoved) {
    std::array<int, 3> order{0, 1, 2};
    do {
        std::array<Table, 3> tables{};
        signal(SIGTERM, ownHandler);
        signal(SIGPIPE, SIG_DFL);
        for (Table &table : tables) {
            zor::fillSignalTable(table.data());
            zor::installSignalTable(table.data());
        }
        const __sighandler_t dispatcher = handlerOf(SIGTERM);
        EXPECT_NE(dispatcher, ownHandler);
        for (const int removed : order) {
            EXPECT_EQ(handlerOf(SIGTERM), dispatcher);
            EXPECT_EQ(handlerOf(SIGPIPE), SIG_IGN);
            zor::removeSignalTable(tables[static_cast<unsigned>(removed)].data());
        }
        EXPECT_EQ(handlerOf(SIGTERM), ownHandler);
        EXPECT_EQ(handlerOf(SIGPIPE), SIG_DFL);
        EXPECT_EQ(handlerOf(SIGSTKFLT), SIG_DFL);
        zor::removeSignalTable(tables[0].data()); // one that is not in force changes nothing
        EXPECT_EQ(handlerOf(SIGTERM), ownHandler);
    } while (std::next_permutation(order.begin(), order.end()));
    signal(SIGTERM, SIG_DFL);
}

} // namespace
