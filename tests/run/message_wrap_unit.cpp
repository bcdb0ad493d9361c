// Where the lines of a message break.

#include <algorithm>
#include <random>

#include "message_text.h"
#include "support/kit.h"

namespace {

std::string wrapped(const std::string &text, std::size_t width, std::size_t room = 2000) {
    std::vector<char> storage(room);
    zor::MessageText message(storage.data(), storage.size());
    message.append(text.c_str());
    zor::wrapLines(message, width);
    EXPECT_EQ(message.text[message.length], '\0');
    return {message.text, message.length};
}

TEST(Wrap, BreaksBehindBlanksAndEquals) {
    const std::string x(100, 'x');
    const struct {
        const char *what;
        std::size_t width;
        std::string text;
        std::string expected;
    } cases[] = {
        {"fits", 20, "12345678901234567890\n", "12345678901234567890\n"},
        {"next is a blank: its blanks count for the indentation", 20, "12345678901234567890   abc",
         "12345678901234567890\n         abc"},
        {"at the last column", 20, "1234567890123456789 abc", "1234567890123456789 \n         abc"},
        {"too far back to a blank", 24, "12345678901234567 9012345678",
         "12345678901234567 90123\n"
         "         45678"},
        {"back to a blank far enough", 24, "123456789012345678 0123456789",
         "123456789012345678 \n         0123456789"},
        {"behind an equals sign", 24, "1234567890123 FILE=/a/long/path",
         "1234567890123 FILE=\n         /a/long/path"},
        {"hard", 24, x.substr(0, 40),
         x.substr(0, 23) + "\n         " + x.substr(0, 14) + "\n         " + x.substr(0, 3)},
        {"the narrowest", 18, x.substr(0, 20), x.substr(0, 17) + "\n         " + x.substr(0, 3)},
        {"each line of its own", 24, "short\n1234567890123456789 12345\nshort\n",
         "short\n1234567890123456789 \n         12345\nshort\n"},
        {"too narrow counts as 80", 17, x.substr(0, 81), x.substr(0, 79) + "\n         xx"},
        {"too wide counts as 80", 257, x.substr(0, 81), x.substr(0, 79) + "\n         xx"},
        {"no terminal counts as 80", 0, x.substr(0, 80), x.substr(0, 80)},
        {"the widest", 256, x + x + x.substr(0, 56), x + x + x.substr(0, 56)},
    };
    for (const auto &each : cases) {
        EXPECT_EQ(wrapped(each.text, each.width), each.expected) << each.what;
    }
}

// Nothing but breaks and indentation is added, no line is too long, and no room is exceeded.
TEST(Wrap, LosesNothingAndStaysInItsRoom) {
    std::mt19937 random(20220714);
    const auto upTo = [&random](unsigned limit) { return random() % (limit + 1); };
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        const std::size_t length = upTo(600);
        const unsigned blankEvery = 1 + upTo(60);
        while (text.size() < length) {
            text += upTo(blankEvery) == 0 ? ' ' : upTo(20) == 0 ? '=' : 'a';
        }
        const std::size_t width = 18 + upTo(238);
        const std::size_t room = text.size() + 1 + upTo(200);
        const std::string result = wrapped(text, width, room);
        const auto squeeze = [](std::string line) {
            std::erase_if(line, [](char c) { return c == ' ' || c == '\n'; });
            return line;
        };
        ASSERT_EQ(squeeze(result), squeeze(text));
        ASSERT_LT(result.size(), room);
        const auto breaks =
            static_cast<std::size_t>(std::count(result.begin(), result.end(), '\n'));
        if (room - result.size() > 1 + zor::kTextColumn) {
            for (std::size_t start = 0; start < result.size();) {
                const std::size_t end = std::min(result.find('\n', start), result.size());
                ASSERT_LE(end - start, width) << result;
                ASSERT_TRUE(start == 0 || result.compare(start, 9, "         ") == 0) << result;
                start = end + 1;
            }
        }
        ASSERT_LE(result.size(), text.size() + breaks * (1 + zor::kTextColumn));
    }
}

TEST(Wrap, ATextBeyondItsRoomIsCut) {
    char storage[16];
    zor::MessageText message(storage, sizeof storage);
    message.append("0123456789");
    message.appendf("%s", "abcdefghij");
    EXPECT_STREQ(storage, "0123456789abcde");
    EXPECT_EQ(message.length, 15U);
    message.append("z");
    EXPECT_STREQ(storage, "0123456789abcde");
}

} // namespace
