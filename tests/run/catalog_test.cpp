// The built catalogue against the list of messages: every number has a text, and every text takes
// the arguments that its issuer gives.

#include <array>
#include <cstring>
#include <nl_types.h>
#include <type_traits>

#include "message_list.h"
#include "support/kit.h"

namespace {

enum class Kind : char { character = 'c', number = 'd', wide = 'l', pointer = 'p', text = 's' };

template <class T> constexpr Kind kindOf() {
    if constexpr (std::is_same_v<T, const char *>) {
        return Kind::text;
    } else if constexpr (std::is_same_v<T, void *>) {
        return Kind::pointer;
    } else {
        static_assert(std::is_integral_v<T>, "give the new argument type a kind");
        return sizeof(T) == sizeof(int64_t) ? Kind::wide : Kind::number;
    }
}

struct Row {
    const char *helper;
    int32_t number;
    uint32_t flags;
    std::vector<Kind> arguments;
};

template <class... Arguments>
Row rowOf(const char *helper, const zor::message::Message<Arguments...> &message) {
    return {helper, message.number, message.flags, {kindOf<Arguments>()...}};
}

std::vector<Row> allRows() {
    using namespace zor::message;
    return {
#define ZOR_MESSAGE(name, ...) rowOf(#name, name),
#include "message_list.def"
#undef ZOR_MESSAGE
    };
}

class Catalog : public testing::Test {
protected:
    void SetUp() override {
        const std::string path =
            std::string(_zorProccom->libdir) + "../share/locale/en_US/cobol2run.cat";
        catalog_ = catopen(path.c_str(), 0);
        ASSERT_NE(catalog_, reinterpret_cast<nl_catd>(-1)) << path;
    }
    void TearDown() override { catclose(catalog_); }

    // A text that may be issued: a severity, a blank, one line that is not empty.
    std::string entry(int set, int message) const {
        const char *text = catgets(catalog_, set, message, nullptr);
        if (text == nullptr) {
            ADD_FAILURE() << "no text for " << set << ", message " << message;
            return "";
        }
        EXPECT_TRUE(text[0] >= '0' && text[0] <= '3' && text[1] == ' ' && text[2] > ' ') << text;
        EXPECT_EQ(strchr(text, '\n'), nullptr) << text;
        return text;
    }

private:
    nl_catd catalog_ = nullptr;
};

// The kinds that a printf format asks for, in the order of the arguments; an argument that a
// positional format leaves out ahead of its last one is an error of the format.
std::vector<Kind> kindsAskedBy(const std::string &format) {
    std::vector<Kind> kinds;
    std::size_t next = 0;
    for (std::size_t at = format.find('%'); at != std::string::npos; at = format.find('%', at)) {
        ++at;
        if (format[at] == '%') {
            ++at;
            continue;
        }
        std::size_t argument = next++;
        const std::size_t digits = format.find_first_not_of("0123456789", at);
        if (format[digits] == '$') {
            argument = static_cast<std::size_t>(std::stoi(format.substr(at))) - 1;
            at = digits + 1;
        }
        at = format.find_first_not_of("0123456789.+- ", at);
        const bool wide = format.compare(at, 2, "ll") == 0;
        at += wide ? 2 : 0;
        if (kinds.size() <= argument) {
            kinds.resize(argument + 1, Kind{});
        }
        kinds[argument] = wide ? Kind::wide : static_cast<Kind>(format[at]);
    }
    return kinds;
}

TEST_F(Catalog, HasATextForEveryMessageThatTakesItsArguments) {
    for (const Row &row : allRows()) {
        const int message = static_cast<int>(row.flags & MESSAGE_VARIANT_MASK) + 1;
        const std::string text = entry(row.number, message);
        const std::vector<Kind> asked = kindsAskedBy(text);
        ASSERT_LE(asked.size(), row.arguments.size()) << row.helper << ": " << text;
        for (std::size_t i = 0; i < asked.size(); ++i) {
            const Kind kind = asked[i] == Kind::character ? Kind::number : asked[i];
            EXPECT_EQ(static_cast<char>(kind), static_cast<char>(row.arguments[i]))
                << row.helper << ": argument " << i + 1 << " of " << text;
        }
    }
}

TEST_F(Catalog, HasTheTextsThatNoHelperIssues) {
    for (const auto &[set, message] : {std::pair{96, 1}, {202, 1}, {230, 1}, {901, 2}, {995, 1}}) {
        entry(set, message);
    }
    for (const int fileSystemCode : {2, 5, 9, 16, 17, 29, 30, 34, 39, 52}) {
        const std::string text = entry(201, fileSystemCode);
        EXPECT_TRUE(kindsAskedBy(text).empty());
        EXPECT_LE(text.size(), 2U + 79U); // it is fetched into 80 bytes
    }
    EXPECT_EQ(kindsAskedBy(entry(993, 1)), std::vector{Kind::number});
    EXPECT_EQ(kindsAskedBy(entry(994, 1)), (std::vector{Kind::number, Kind::text}));
    EXPECT_EQ(entry(9999, 1).substr(2, 8), "ZOR IWSC");
}

TEST_F(Catalog, EndsTheRunOnlyWhereItCannotGoOn) {
    const auto numbersAre = [this](char severity, const std::vector<int> &numbers) {
        for (const int number : numbers) {
            EXPECT_EQ(entry(number, 1)[0], severity) << number;
        }
    };
    numbersAre('0', {12});
    numbersAre('1', {40,  48,  49,  76,  77,  168, 171, 172, 173, 174,  176,  181,
                     182, 221, 222, 223, 224, 225, 230, 240, 241, 1003, 2526, 2527});
    numbersAre('2', {13,  66,  75,  96,  200,  206,  242,  243,  813,  901, 902,
                     903, 907, 994, 995, 1000, 1001, 1002, 2502, 2512, 2534});
}

} // namespace
