// Editing moves, the fill with a literal, and moves of items that may overlap.
#include "collating.h"
#include "edit.h"
#include "national.h"
#include "national/locales.h"
#include "text/statement_kit.h"

namespace {

// Shows what a move wrote, and fails when that does not begin at its first byte.
struct Receiver {
    char *data() { return &bytes[8]; }
    std::string text() const {
        EXPECT_EQ(bytes.substr(0, 8), "~~~~~~~~");
        return bytes.substr(8, std::max<std::size_t>(bytes.find_last_not_of('~') + 1, 8) - 8);
    }
    std::string bytes = std::string(500, '~');
};

std::string word(std::size_t value) {
    return {static_cast<char>(value), static_cast<char>(value >> 8)};
}

// A block of the interface: fields ahead, a text whose length they tell behind.
template <class Block> const Block *as(const std::string &bytes) {
    return reinterpret_cast<const Block *>(bytes.data());
}

struct Picture {
    std::string text;
    std::vector<std::pair<std::string, std::string>> cases; // what is moved, and what comes out
    std::vector<int> codes{0};                              // the same comes out with each
    std::string currency = "$"; // through the second form of a routine unless it is one character
    char point = '.';
    bool zeroTreatment = false;
};

constexpr const char *kFails = "does not fit";

std::string edited(const Picture &picture, int code, const std::string &digits) {
    const std::size_t size = picture.text.size();
    const bool isString = picture.currency.size() != 1;
    const std::string bytes = word(picture.zeroTreatment ? 0 - size : size) + picture.point +
                              (isString ? '&' : picture.currency[0]) + static_cast<char>(code) +
                              picture.text;
    const std::string string = word(picture.currency.size()) + picture.currency;
    const auto *block = as<NumericEditDescriptor>(bytes);
    Receiver item;
    isString ? _zorcMoveNumToNumEdit2(block, digits.data(), item.data(), as<CurrencyString>(string))
             : _zorcMoveNumToNumEdit(block, digits.data(), item.data());
    return item.text();
}

std::string deEdited(const Picture &picture, const std::string &item) {
    const std::string bytes = word(picture.text.size()) + picture.text;
    const std::string string = word(picture.currency.size()) + picture.currency;
    const auto *block = as<DeEditDescriptor>(bytes);
    Receiver result;
    const int32_t rc =
        picture.currency.size() == 1
            ? _zorcMoveNumEditToNum(block, item.data(), result.data())
            : _zorcMoveNumEditToNum2(block, item.data(), result.data(), as<CurrencyString>(string));
    EXPECT_TRUE(rc == 0 || rc == 1);
    return rc == 0 ? result.text() : kFails;
}

enum class Way { edit, deEdit, both };

void check(const std::vector<Picture> &pictures, Way way) {
    for (const Picture &picture : pictures) {
        for (const auto &[from, to] : picture.cases) {
            SCOPED_TRACE(picture.text + " of " + from);
            for (const int code : picture.codes) {
                EXPECT_EQ(
                    way == Way::deEdit ? deEdited(picture, from) : edited(picture, code, from), to)
                    << "code " << code;
            }
            if (way == Way::both) {
                EXPECT_EQ(deEdited(picture, to), from.substr(1) + from[0]);
            }
        }
    }
}

// De-editing gives back the digits and the sign.
TEST(NumericEdit, AndBack) {
    const std::string sevens(400, '7');
    const std::vector<Picture> pictures = {
        // suppression
        {"ZZZ.ZZ", {{"+00005", "   .05"}, {"+00000", "   .00"}}},
        {"Z,ZZZ,ZZ9", {{"+0001234", "    1,234"}, {"+1234567", "1,234,567"}}},
        {"***,**9.99", {{"+00012345", "****123.45"}}},
        {"**/**9", {{"+00005", "*****5"}, {"+01005", "*1/005"}}},
        {"9 9/0", {{"+12", "1 2/0"}}},
        {"0Z,Z9", {{"+005", "0 , 5"}}},  // an inserted 0 keeps a comma behind it
        {"PZZV99", {{"+0007", "  07"}}}, // scaling positions occupy no byte
        // fixed signs
        {"99CR", {{"-12", "12CR"}, {"+12", "12  "}}, {2, 3, 4, 5}},
        {"+$ZZ9.9", {{"-0012", "-$  1.2"}, {"+1234", "+$123.4"}}, {2, 4, 5}},
        // floating signs
        {"+++9.99", {{"+12345", "+123.45"}, {"-00345", "  -3.45"}}, {6, 8}},
        {"--,--9", {{"+0012", "    12"}, {"-0012", "   -12"}, {"-1012", "-1,012"}}, {7, 9}},
        {"++.+,+", {{"+000", " +.0,0"}}, {6}},
        {"++./9", {{"+05", " +./5"}}, {6}},
        // floating currency
        {"$$,$$9.99",
         {{"+000123", "    $1.23"}, {"+012345", "  $123.45"}, {"+123456", "$1,234.56"}},
         {12}},
        {"$$$9-", {{"-012", " $12-"}, {"+012", " $12+"}}, {10}},
        {"$$/$9", {{"+005", "   $5"}}, {12}},
        {"/$$9", {{"+05", "/ $5"}}, {12}},
        {"$$0$9", {{"+105", "$1005"}}, {12}},
        {"$$9", {{"+01", " #1"}}, {12}, "#"},
        // a currency string
        {"$$$9.99-", {{"-00123", "  EUR1.23-"}, {"+01234", " EUR12.34 "}}, {11}, "EUR"},
        {"99$V", {{"+12", "12EUR "}}, {0}, "EUR "},
        {"$" + std::string(400, '9'), {{"+" + sevens, "EUR" + sevens}}, {0}, "EUR"},
    };
    check(pictures, Way::both);
}

TEST(NumericEdit, Alone) {
    const int zero = EDIT_BLANK_WHEN_ZERO(0);
    const int zero2 = EDIT_BLANK_WHEN_ZERO(2);
    const std::vector<Picture> pictures = {
        {"9(", {{"+1", "1 "}}}, // half a sign pair takes one position
        {"Z,ZZ9.99", {{"+123456", "1.234,56"}, {"+000056", "    0,56"}}, {0}, "$", '\0'},
        {"-99+", {{"?12", "-12-"}, {"+12", " 12 "}}, {3}}, // what is not "+" counts as minus
        {"-99db", {{"-12", " 12  "}}, {0, 1, 13}},
        {"99db", {{"-12", "12  "}}, {12}},         // nothing stands where a floating currency would
        {"PP99V9", {{"+123", "123"}}, {0}, "EUR"}, // only what was written is copied
        {"$99", {{"+12", "12"}}, {0}, ""},
        // zero
        {"***.**", {{"+00000", "***.**"}, {"+00005", "***.05"}}, {0, 2, 3}, "$", '.', true},
        {"$**,***.**", {{"+0000000", "*******.**"}}, {7}, "$", '.', true},
        {"***.**", {{"+00000", "***,**"}}, {2}, "$", ',', true},
        {"***.**", {{"+00000", "      "}}, {8, 12}, "$", '.', true},
        {"$**.**", {{"+0000", "***.**"}}, {2}, "EUR", '.', true}, // overlaid
        {"$$$.$$", {{"+0000", "      "}, {"+0001", "  $.01"}}, {12}, "$", '.', true},
        {"**/**", {{"-0000", "     "}}, {zero, zero2}, "$", '.', true},
        {"99.99-", {{"-0000", "      "}}, {zero, zero2}},
        {"99.99-", {{"-0001", "00.01-"}}, {zero2}},
        {"99", {{"+00", "  "}}, {200}}, // no code, yet above the last one
        {"", {{"+", ""}}, {2}},
        {"", {{"+", ""}}, {2}, "EUR"},
    };
    check(pictures, Way::edit);
}

TEST(DeEdit, Table) {
    const std::vector<Picture> pictures = {
        {"", {{"", "+"}}},
        // a sign position or the head of a floating string
        {"+Z9", {{"112", kFails}, {"- 2", "02-"}, {"+ 2", "02+"}, {"  2", "02+"}, {"*12", "12+"}}},
        {"-99", {{"+12", "12+"}, {" 12", "12+"}, {"112", kFails}}},
        {"99+", {{"12 ", "12+"}}},
        {"+++9", {{" *12", "12+"}, {"--12", kFails}, {"-+12", kFails}, {"-*12", kFails}}},
        {"+++9", {{" 112", kFails}}}, // a digit without a sign ahead of it
        {"---9", {{"-5-1", kFails}, {" +12", "12+"}}},
        {"---", {{" 5-", kFails}}}, // where "-" may float, such a digit stands for plus
        // a floating sign in the place of an insertion byte
        {"++,++9", {{"  -123", "0123-"}}},
        {"--/--9", {{"  -123", "0123-"}}},
        {"++/99", {{"  -12", "012+"}}}, // no further sign position
        {"9/+9", {{"1-+2", "12+"}}},
        // currency
        {"$99", {{"$12", "12+"}, {"712", "712+"}}},
        {"$$$", {{" EUR5", "05+"}}, {0}, "EUR"}, // the string stretches past the picture's length
        {"$99", {{"$12", "12+"}}, {0}, ""},
        {"$99", {{"$12", "12+"}}, {0}, "EUR"},       // not found
        {"99V9P", {{"123EUR", "123+"}}, {0}, "EUR"}, // behind the item
        // sign pairs
        {"99CR", {{"12DB", kFails}, {"12cr", kFails}, {"12 R", kFails}, {"12C ", kFails}}},
        {"99db", {{"12db", "12-"}, {"12dr", kFails}}},
        {"99C", {{"12C", kFails}}},
    };
    check(pictures, Way::deEdit);
}

template <class Block>
std::string edited(void (*move)(const Block *, const void *, int32_t, void *),
                   const std::string &descriptor, const std::string &sender) {
    Receiver item;
    move(as<Block>(descriptor), sender.data(), lengthOf(sender), item.data());
    return item.text();
}

TEST(CharacterEdit, Table) {
    const struct {
        std::u16string picture;
        char repeat;
        std::u16string sender;
        std::u16string expected;
    } cases[] = {
        {u"XX/XX 00X", 0, u"ABCDEF", u"AB/CD 00E"},
        {u"XXXX/X ", 0, u"A\u00C4", u"A\u00C4  /  "},
        {u"NNN/9NNNNNN", 1, u"AB", u"ABA/BABABAB"},
        {u"X X\u0081X", 0, u"ABCD", u"A BCD"}, // half an ideographic blank
        {u"XX", 1, u"", u"  "},
        {u"", 0, u"AB", u""},
    };
    const auto narrow = [](const std::u16string &text) {
        return std::string(text.begin(), text.end());
    };
    for (const auto &[picture, repeat, sender, expected] : cases) {
        std::string runs; // among them some that are empty
        for (std::size_t at = 0, next = 0; at < picture.size(); at = next) {
            next = std::min(picture.find_first_not_of(picture[at], at), picture.size());
            runs += word('N') + word(0) + word('0') + word(0xFFFF);
            runs += word(picture[at]) + word(next - at);
        }
        const std::string national = word(runs.size()) + repeat + '\0' + runs;
        EXPECT_EQ(edited(_zorcMoveUnicodeEdit, national, wide(sender)), wide(expected));
        const std::string block = word(picture.size()) + repeat + narrow(picture);
        EXPECT_EQ(edited(_zorcMoveAlphaNumEdit, block, narrow(sender)), narrow(expected));
    }
    // An ideographic blank is one position of two bytes.
    const std::string block = word(3) + '\0' + "X\x81\x40X";
    EXPECT_EQ(edited(_zorcMoveAlphaNumEdit, block, "VW"), "V\x81\x40W");
    EXPECT_EQ(edited(_zorcMoveAlphaNumEdit, word(0xFFFF) + '\0' + "X", "V"), "");
}

TEST(FigurativeConstant, AllLengths) {
    for (const std::string literal : {"", "A", "AB", "ABC", "ABCDEFGHIJ"}) {
        const std::string row =
            literal.empty() ? "" : moved("", 40 * literal.size(), false, literal);
        for (int length = -39; length < 40; ++length) {
            const std::size_t bytes = row.empty() ? 0 : static_cast<std::size_t>(abs(length));
            Receiver item;
            _zorcMoveFigConst(item.data(), length, literal.data(), lengthOf(literal));
            EXPECT_EQ(item.text(), moved(row, bytes, length < 0, " ")) << literal;
        }
    }
}

// The three kinds of items, of which double-byte ones keep their beginning in any case.
CHILD_TEST(OverlappingMove, AllLengthsAndDistances, locales::in("ja_JP.UTF-8")) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyz";
    for (int target = -8; target <= 8; ++target) {
        for (int source = -8; source <= 8; ++source) {
            const auto to = static_cast<std::size_t>(abs(target));
            const std::string value = letters.substr(10, static_cast<std::size_t>(abs(source)));
            const auto expectMove = [&](auto move, const std::string &from,
                                        const std::string &blank) {
                const std::string field = moved(from, to, target < 0, blank);
                for (std::size_t at = 2; at < 19; ++at) {
                    std::string storage = letters;
                    move(&storage[at], target, &storage[10], source);
                    EXPECT_EQ(storage, std::string(letters).replace(at, to, field))
                        << target << " from " << source << " at " << at;
                }
            };
            expectMove(_zorcMoveVarLenOverlap, value, source < 0 ? "@" : " ");
            expectMove(_zorcDBCSMoveVarLenOverlap, value.substr(0, to),
                       source < 0 ? "@@" : "\x81\x40");
            expectMove([](auto... words) { EXPECT_EQ(_zorMoveUnicode(words...), 0); },
                       source < 0 ? "" : value, wide(u" "));
        }
    }
}

// Pictures as a compiler accepts them: suppression or a floating string, commas within, a point,
// and a sign at one of the ends.
TEST(NumericEdit, RandomPicturesAndBack) {
    constexpr struct {
        const char *symbol; // of the part that is suppressed
        const char *behind; // what stands at the end
        int code;
    } kKinds[] = {{"Z", "", 0}, {"*", "", 0}, {"Z", "-", 3}, {"*", "+", 2},  {"Z", "CR", 3},
                  {"+", "", 6}, {"-", "", 7}, {"$", "", 12}, {"$", "DB", 11}};
    Random random(20220714);
    for (int i = 0; i < 20000; ++i) {
        const auto &kind = kKinds[random.below(std::size(kKinds))];
        const bool floats = kind.symbol[0] != 'Z' && kind.symbol[0] != '*';
        const std::size_t suppressed = random.below(12) + (floats ? 2 : 0);
        std::string text;
        for (std::size_t n = 0; n < suppressed; ++n) {
            text += kind.symbol;
            text += n > 1 && random.oneIn(4) ? "," : "";
        }
        const std::size_t nines = suppressed == 0 ? 1 + random.below(9) : random.below(6);
        const std::size_t decimals = random.below(4);
        text += std::string(nines, '9') + (decimals > 0 ? "." : "") + std::string(decimals, '9') +
                kind.behind;
        std::string digits;
        for (auto n = suppressed - (floats ? 1 : 0) + nines + decimals; n > 0; --n) {
            digits += random.text(1, random.oneIn(3) ? 10 : 1);
        }
        // Of zero the sign may be suppressed.
        const bool isZero = digits.find_first_not_of('0') == std::string::npos;
        const bool hasSign = !isZero && kind.code % EDIT_FLOAT_CURRENCY != 0;
        digits.insert(0, 1, hasSign && random.oneIn(2) ? '-' : '+');
        const Picture picture{.text = text, .cases = {}};
        const std::string item = edited(picture, kind.code, digits);
        ASSERT_EQ(item.size(), text.size()) << text << " " << digits;
        ASSERT_EQ(deEdited(picture, item), digits.substr(1) + digits[0]) << text;
    }
}

} // namespace
