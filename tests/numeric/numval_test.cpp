// NUMVAL and NUMVAL-C: cases by hand and random texts, against the grammar as an expression and the
// C libraries' reading of the numbers that it finds.
#include <cerrno>
#include <map>

#include "numeric_functions/forms_kit.h"
#include "numval.h"
#include "text/statement_kit.h"

namespace {

const std::string kDigits = "0123456789";

struct Argument {
    std::string text;
    NumvalFormat format{'$', '.', NUMVAL_CURRENCY_SIGN};
    std::string currency{};
};

struct Outcome {
    std::string number; // as C reads it
    std::string messages;
};

// What each capture of the grammar is: sign, currency, integer digits, fraction, or trailer.
const std::string kCaptures = "scwff"
                              "cwftftt"
                              "wftft";

// Every start of a text that is right. A text counts up to the end of the longest one.
std::string grammar(const std::string &point, const std::string &comma, const std::string &money) {
    const std::string whole = "(\\d+(?:" + comma + "\\d+)*)";
    const std::string fraction = "(" + point + "\\d*)";
    const std::string tail = " *([+-] *|CR *|C|DB *|D)?";
    const std::string number =
        whole + "(?:" + comma + "|" + fraction + "?" + tail + ")|" + fraction + tail;
    return " *(?:([+-]) *(" + money + " *)?(?:" + whole + "(?:" + comma + "|" + fraction + "? *)|" +
           fraction + " *)?|(" + money + " *)(?:" + number + "|" + tail + ")|" + number + ")?";
}

Outcome model(const Argument &a, bool isC, size_t room, size_t unit) {
    std::string messages;
    const std::string name = isC ? " NUMVAL-C;" : " NUMVAL;";
    const auto refuse = [&](const std::string &text, size_t at, size_t size = 0) {
        if (at < text.size()) {
            messages += std::string(size == 0 ? "152 " : "155 ") + text[at] + " " +
                        std::to_string(at * std::max(size, 1U) + 1) + name;
        }
    };
    const char point = a.format.decimalPoint;
    const bool isString = a.format.currencyMode == NUMVAL_CURRENCY_STRING;
    const std::string currency = a.format.currencyMode == NUMVAL_CURRENCY_SIGN
                                     ? std::string(1, a.format.currencySign)
                                     : a.currency;
    if (isC && isString && !currency.empty() && !a.text.empty()) {
        refuse(currency, currency[0] == ' ' ? 0 : std::string::npos, unit);
        refuse(currency, currency.find_first_of("+,-." + kDigits), unit);
        refuse(currency, currency.find_last_not_of(' ') + 1, unit);
    }
    const std::string never = "(?!)";
    const std::string noCurrency = "+-,. " + kDigits; // where none is looked for
    std::string money = isC && currency.find_first_of(noCurrency) != 0 ? "" : never;
    for (const char c : currency) {
        money += std::string("[") + c + "]";
    }
    static std::map<std::string, std::regex> expressions;
    const std::string text =
        grammar(std::string("[") + point + "]", isC ? (point == '.' ? "," : "[.]") : never,
                currency.empty() ? never : money);
    const auto expression = expressions.try_emplace(text, text).first->second;
    std::smatch found;
    std::regex_search(a.text, found, expression, std::regex_constants::match_continuous);
    std::string number, sign;
    bool isBegun = false;
    for (size_t i = 0; i < kCaptures.size(); ++i) {
        const char what = kCaptures[i];
        isBegun = isBegun || (what != 's' && found[i + 1].matched);
        (what == 's' || what == 't' ? sign : what == 'c' ? money : number) += found[i + 1].str();
    }
    size_t digits = 0;
    std::string kept = sign.find_first_of("-RB") != std::string::npos ? "-" : "";
    for (const char c : number) {
        const bool isDigit = isdigit(c) != 0;
        kept += c == point ? "." : isDigit && ++digits <= room ? std::string(1, c) : "";
    }
    messages += digits > room && unit == 1 ? "151  " + name : "";
    const auto end = static_cast<size_t>(found.length());
    refuse(a.text, end);
    if (isC && !isBegun && end < a.text.size() &&
        noCurrency.find(a.text[end]) > noCurrency.size()) {
        refuse(a.text, a.text.find_first_of("+-,." + kDigits, end));
    }
    messages += digits > room && unit == 2 ? "151  " + name : "";
    return digits == 0 ? Outcome{"0", messages + "97  " + name} : Outcome{kept, messages};
}

template <class T> std::string bytes(T value) {
    return kit::hex(&value, sizeof value);
}

// The outcome of a function of either kind, whose value is returned and stored.
template <class T, class Function>
void expect(Function f, const Argument &a, const std::string &messages, bool isNational, T value) {
    const std::string text = isNational ? wide(a.text) : a.text;
    const std::string currency = isNational ? wide(a.currency) : a.currency;
    const int32_t length = lengthOf(text);
    T stored{};
    T returned;
    errno = EDOM;
    if constexpr (std::is_invocable_v<Function, const NumvalFormat *, int32_t, const void *, T *>) {
        returned = f(&a.format, length, text.data(), &stored);
    } else {
        returned = f(&a.format, length, text.data(), lengthOf(currency), currency.data(), &stored);
    }
    EXPECT_TRUE(!messages.empty() || errno == (isNational ? EDOM : 0));
    ASSERT_EQ(bytes(returned) + bytes(stored) + forms::takeInserts(),
              bytes(value) + bytes(value) + messages)
        << "[" << a.text << "] " << a.currency << a.format.decimalPoint;
}

void expectValue(const Argument &a, bool isC) {
    const Outcome native = model(a, isC, 62, 1);
    const Outcome wide = model(a, isC, 63, 2);
    const __float128 wideValue = forms::parse<__float128>(wide.number);
    const auto expectForms = [&](auto numval, auto numval16, auto decimal, auto zoru, auto zoru16) {
        expect(numval, a, native.messages, false, forms::parse<double>(native.number));
        expect(numval16, a, native.messages, false, forms::parse<__float128>(native.number));
        expect(zoru, a, wide.messages, true, static_cast<double>(wideValue));
        expect(zoru16, a, wide.messages, true, wideValue);
        if (native.number.size() <= 34) { // the library for decimals does not round well
            expect(decimal, a, native.messages, false, forms::parse<ZorDecimal128>(native.number));
        }
    };
    isC ? expectForms(_Tvq_numval_c, _zorcNumvalC16, _Tvq_numval_c_decfloat16, _zoruNumvalC,
                      _zoruNumvalC16)
        : expectForms(_Tvq_numval, _zorcNumval16, _Tvq_numval_decfloat16, _zoruNumval,
                      _zoruNumval16);
}

TEST(Numval, TextsByHand) {
    const std::string text62(62, '7');
    // clang-format off
    const std::vector<std::string> texts =
         {"", " ", "  -12.5 ", "12.5-", "12.5 -", "12.5CR", "12.5 DB", "+12-", "12.5 C", "12C", "12D", ".5", "5.",
          ".", "-", "1,5", "$1,234.50", "1,,234", "1,234,5", "1,2", "1,", "-$ 5", "$", "EUR 12", "12cr", "1E5", "-0",
          "0.00", "1.50", "$$5", "12$", "+.", "5+5", "12 R", "12CRX", "9007199254740993",
          "179769313486231580793728971405303415",
          "500000000000000000000000000000000000000", text62, text62 + "7", text62 + "78.5x", "." + text62 + "99"};
    // clang-format on
    for (const std::string &text : texts) {
        for (const bool isC : {false, true}) {
            expectValue({text}, isC);
            expectValue({text, {'$', ',', 1}}, isC);
            expectValue({text, {'$', '.', NUMVAL_CURRENCY_STRING}, "EUR"}, isC);
        }
    }
    for (const char *currency : {"", " E", "E.R", "E ", "E  ", " ", "A-+", "$"}) {
        expectValue({"E.R 1", {'$', '.', NUMVAL_CURRENCY_STRING}, currency}, true);
    }
    // 35 digits: a tie, and a number that rounds to a power of ten.
    const auto ten = static_cast<ZorDecimal128>(10);
    const auto nines = forms::parse<ZorDecimal128>("9999999999999999999999999999999999");
    const auto even = forms::parse<ZorDecimal128>("1234567890123456789012345678901234");
    expect(_Tvq_numval_decfloat16, {"12345678901234567890123456789012345"}, "", false, even * ten);
    expect(_Tvq_numval_decfloat16, {"99999999999999999999999999999999995.01"}, "", false,
           (nines + static_cast<ZorDecimal128>(1)) * ten);
}

TEST(Numval, RandomTexts) {
    Random random(1);
    const auto oneOf = [&](std::initializer_list<const char *> parts) {
        return std::string(parts.begin()[random.below(parts.size())]);
    };
    for (unsigned i = 0; i < 10'000 && !testing::Test::HasFailure(); ++i) {
        const auto digits = [&] { return random.text(random.below(i % 20 == 0 ? 70 : 9), 10); };
        std::string text = oneOf({"", "", " "}) + oneOf({"", "", "+", "-"}) + oneOf({"", " "}) +
                           oneOf({"", "$", "EUR", "CR"}) + oneOf({"", " "}) + digits() +
                           oneOf({"", "", ",", "."}) + digits() + oneOf({"", ".", ","}) + digits() +
                           oneOf({"", " "}) + oneOf({"", "+", "-", "CR", "DB", "C"}) +
                           oneOf({"", " "});
        if (!text.empty() && random.oneIn(4)) {
            text[random.below(text.size())] = "+-,. 5CDRBEx$"[random.below(13)];
        }
        const NumvalFormat format{'$', i % 4 == 0 ? ',' : '.',
                                  static_cast<uint16_t>(random.below(3))};
        expectValue({text, format, oneOf({"EUR", "C", "CR", "$", "", "E R"})}, i % 2 == 0);
    }
}

TEST(Numval, LengthsBelowOneAndReservedForms) {
    double result = 5;
    const NumvalFormat format{'$', '.', 1};
    EXPECT_EQ(_zorcNumvalFloat8(&format, -1, "1", &result) + result, 0);
    EXPECT_EQ(forms::takeNumbers(), "97;");
    result = 5;
    EXPECT_EQ(_Tvq_numval_decpacked3232(&format, 1, "1", &result), &result);
    EXPECT_EQ(_Tvq_numval_c_deczoned6332(&format, 1, "1", 0, nullptr, &result), &result);
    EXPECT_EQ(result, 5);
}

} // namespace
