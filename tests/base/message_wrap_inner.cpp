// Where the lines of a message break.

#include <algorithm>
#include <random>
#include <sstream>

#include "base/message_wrap.h"

#include <gtest/gtest.h>

namespace {

std::string wrapped(const std::string &text, std::size_t width, std::size_t room = 20000) {
    std::vector<char> storage(room);
    zor::MessageText message(storage.data(), storage.size());
    message.append(text.c_str());
    zor::wrapLines(message, width);
    EXPECT_EQ(message.text[message.length], '\0');
    return {message.text, message.length};
}

TEST(Wrap, BreaksBehindBlanksAndEquals) {
    const std::string x(100, 'x');
    const std::string gap = "\n         ";
    const struct {
        const char *what;
        std::size_t width;
        std::string text;
        std::string expected;
    } cases[] = {
        {"fits", 20, "12345678901234567890\n", "12345678901234567890\n"},
        {"next is a blank: its blanks count for the indentation", 20, "12345678901234567890   abc",
         "12345678901234567890" + gap + "abc"},
        {"at the last column", 20, "1234567890123456789 abc", "1234567890123456789 " + gap + "abc"},
        {"too far back to a blank", 24, "12345678901234567 9012345678",
         "12345678901234567 90123" + gap + "45678"},
        {"back to a blank far enough", 24, "123456789012345678 0123456789",
         "123456789012345678 " + gap + "0123456789"},
        {"behind an equals sign", 24, "1234567890123 FILE=/a/long/path",
         "1234567890123 FILE=" + gap + "/a/long/path"},
        {"hard", 24, x.substr(0, 40),
         x.substr(0, 23) + gap + x.substr(0, 14) + gap + x.substr(0, 3)},
        {"the narrowest", 18, x.substr(0, 20), x.substr(0, 17) + gap + x.substr(0, 3)},
        {"each line of its own", 24, "short\n1234567890123456789 12345\nshort\n",
         "short\n1234567890123456789 " + gap + "12345\nshort\n"},
        {"too narrow counts as 80", 17, x.substr(0, 81), x.substr(0, 79) + gap + "xx"},
        {"too wide counts as 80", 257, x.substr(0, 81), x.substr(0, 79) + gap + "xx"},
        {"no terminal counts as 80", 0, x.substr(0, 80), x.substr(0, 80)},
        {"the widest", 256, x + x + x.substr(0, 56), x + x + x.substr(0, 56)},
    };
    for (const auto &each : cases) {
        EXPECT_EQ(wrapped(each.text, each.width), each.expected) << each.what;
    }
}

std::string squeezed(std::string text) {
    std::erase_if(text, [](char c) { return c == ' ' || c == '\n'; });
    return text;
}

// Nothing but breaks and indentation is added, no line is too long, and no room is exceeded.
TEST(Wrap, LosesNothingAndStaysInItsRoom) {
    std::mt19937 random(20220714);
    const auto upTo = [&random](unsigned limit) { return random() % (limit + 1); };
    for (int round = 0; round < 3000; ++round) {
        std::string text(upTo(600), 'a');
        const unsigned blankEvery = 1 + upTo(60);
        for (char &c : text) {
            c = upTo(blankEvery) == 0 ? ' ' : upTo(20) == 0 ? '=' : 'a';
        }
        const std::size_t width = 18 + upTo(238);
        const std::string result = wrapped(text, width);
        ASSERT_EQ(squeezed(result), squeezed(text));
        std::istringstream lines(result);
        for (std::string line; std::getline(lines, line);) {
            ASSERT_LE(line.size(), width) << result;
            ASSERT_TRUE(result.starts_with(line) || line.starts_with("         ")) << result;
        }
        const std::size_t room = 1 + upTo(static_cast<unsigned>(text.size()) + 200);
        const std::string cramped = wrapped(text, width, room);
        ASSERT_TRUE(squeezed(text).starts_with(squeezed(cramped)));
        ASSERT_LT(cramped.size(), room);
        ASSERT_GE(cramped.size(), std::min(text.size(), room - 1));
    }
}

} // namespace
