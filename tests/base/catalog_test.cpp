// The built catalogue against the list of messages: every number has a text, and every text takes
// the arguments that its issuer gives.

#include <nl_types.h>
#include <regex>

#include "base/message_list.h"
#include "support/kit.h"

namespace {

// The kind of an argument, as the letter of its printf conversion; "l" stands for "lld".
template <class T>
constexpr char kKindOf = std::is_same_v<T, const char *> ? 's'
                         : std::is_pointer_v<T>          ? 'p'
                         : sizeof(T) == sizeof(int64_t)  ? 'l'
                                                         : 'd';

// The kinds that a printf format asks for, in the order of the arguments; "?" for one that a
// positional format leaves out ahead of its last one, which is an error of the format.
std::string kindsAskedBy(const std::string &format) {
    static const std::regex conversion(R"(%(?:(\d+)\$)?[-+ .\d]*(l?)l?(.))");
    std::string kinds;
    std::size_t next = 0;
    for (std::sregex_iterator at(format.begin(), format.end(), conversion), end; at != end; ++at) {
        const std::smatch &match = *at;
        if (match[3] == "%") {
            continue;
        }
        const std::size_t argument = match[1].matched ? std::stoul(match[1]) - 1 : next++;
        kinds.resize(std::max(kinds.size(), argument + 1), '?');
        kinds[argument] = match[2].length() != 0 ? 'l' : match[3] == "c" ? 'd' : match.str(3)[0];
    }
    return kinds;
}

// A text that may be issued: a severity, a blank, one line that is not empty.
std::string entry(int set, int message) {
    const std::string path =
        std::string(_zorProccom->libdir) + "../share/locale/en_US/cobol2run.cat";
    static nl_catd catalog = catopen(path.c_str(), 0);
    const std::string text = catgets(catalog, set, message, "");
    EXPECT_TRUE(std::regex_match(text, std::regex("[0-3] [!-~].*")))
        << set << ", message " << message << ": " << text;
    return text;
}

template <class... Arguments>
void expectText(const char *helper, const zor::message::Message<Arguments...> &message) {
    const std::string text =
        entry(message.number, static_cast<int>(message.flags & MESSAGE_VARIANT_MASK) + 1);
    const std::string given{kKindOf<Arguments>...};
    EXPECT_TRUE(given.starts_with(kindsAskedBy(text))) << helper << ": " << text;
}

TEST(Catalog, HasATextForEveryMessageThatTakesItsArguments) {
#define ZOR_MESSAGE(name, ...) expectText(#name, zor::message::name);
#include "base/message_list.def"
#undef ZOR_MESSAGE
}

TEST(Catalog, HasTheTextsThatNoHelperIssues) {
    for (const auto &[set, message] : {std::pair{96, 1}, {202, 1}, {230, 1}, {901, 2}, {995, 1}}) {
        entry(set, message);
    }
    for (const int fileSystemCode : {2, 5, 9, 16, 17, 29, 30, 34, 39, 52}) {
        const std::string text = entry(201, fileSystemCode);
        EXPECT_EQ(kindsAskedBy(text), "");
        EXPECT_LE(text.size(), 2U + 79U); // it is fetched into 80 bytes
    }
    EXPECT_EQ(kindsAskedBy(entry(993, 1)), "d");
    EXPECT_EQ(kindsAskedBy(entry(994, 1)), "ds");
    EXPECT_EQ(entry(9999, 1).substr(2, 8), "ZOR IWSC");
}

} // namespace
