// Editing moves through the exported interface. Receivers stand between guard bytes, so that a byte
// written beside them fails the case.
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "edit.h"
#include "support/kit.h"

namespace {

constexpr char kGuard = '\x7E';
constexpr std::size_t kGuardBytes = 8;

// A receiver that shows what was written, and fails when that does not begin at its first byte.
class Receiver {
public:
    explicit Receiver(std::size_t room) : bytes_(room + 2 * kGuardBytes, kGuard) {}
    char *data() { return bytes_.data() + kGuardBytes; }
    std::string text() const {
        const std::size_t first = bytes_.find_first_not_of(kGuard);
        if (first == std::string::npos) {
            return {};
        }
        EXPECT_EQ(first, kGuardBytes);
        return bytes_.substr(first, bytes_.find_last_not_of(kGuard) + 1 - first);
    }

private:
    std::string bytes_;
};

std::string word(std::size_t value) {
    return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)};
}

using Pairs = std::vector<std::pair<std::string, std::string>>; // what is moved, and what comes out

struct Picture {
    std::string text;
    std::vector<int> codes; // the same comes out with each
    Pairs cases;            // sign and digits, and the edited item
    bool zeroTreatment = false;
    char decimalPoint = '.';
    char currency = '$';
};

std::string edited(const Picture &picture, int code, const std::string &digits,
                   const std::string *currency = nullptr) {
    const std::size_t length = picture.text.size();
    const std::string descriptor = word(picture.zeroTreatment ? 0U - length : length) +
                                   picture.decimalPoint + picture.currency +
                                   static_cast<char>(code) + picture.text;
    const auto *block = reinterpret_cast<const NumericEditDescriptor *>(descriptor.data());
    Receiver receiver(length + (currency != nullptr ? currency->size() : 0));
    if (currency == nullptr) {
        _zorcMoveNumToNumEdit(block, digits.data(), receiver.data());
    } else {
        const std::string string = word(currency->size()) + *currency;
        _zorcMoveNumToNumEdit2(block, digits.data(), receiver.data(),
                               reinterpret_cast<const CurrencyString *>(string.data()));
    }
    return receiver.text();
}

constexpr int blankWhenZero(int code) {
    return EDIT_BLANK_WHEN_ZERO(code);
}

TEST(NumericEdit, Table) {
    const Picture pictures[] = {
        // suppression
        {"ZZ9.99", {0}, {{"+00100", "  1.00"}}},
        {"ZZZ.ZZ", {0}, {{"+00005", "   .05"}, {"+00000", "   .00"}}},
        {"Z,ZZZ,ZZ9", {0}, {{"+0001234", "    1,234"}, {"+1234567", "1,234,567"}}},
        {"***,**9.99", {0}, {{"+00012345", "****123.45"}}},
        {"**/**9", {0}, {{"+00005", "*****5"}, {"+01005", "*1/005"}}},
        {"ZZ099", {0}, {{"+0012", "   12"}}},
        {"9 9/0", {0}, {{"+12", "1 2/0"}}},
        {"ZZ9/9", {0}, {{"+0012", "  1/2"}}},
        {"Z./9", {0}, {{"+05", " ./5"}}},
        {"0Z,Z9", {0}, {{"+005", "0 , 5"}}}, // an inserted 0 keeps a comma behind it
        {"9(", {0}, {{"+1", "1 "}}},         // half a sign pair takes one position
        {"", {2}, {{"+", ""}}},
        // scaling positions occupy no byte
        {"PP99V99", {0}, {{"+1234", "1234"}}},
        {"ZZV99", {0}, {{"+0007", "  07"}}},
        // point and comma change places
        {"Z,ZZ9.99", {0}, {{"+123456", "1.234,56"}, {"+000056", "    0,56"}}, false, '\0'},
        // fixed signs; whatever is not "+" counts as minus
        {"+99-", {2, 4, 5}, {{"-12", "-12-"}, {"+12", "+12+"}}},
        {"-99+", {3}, {{"?12", "-12-"}, {"+12", " 12 "}}},
        {"99CR", {2, 3, 4, 5}, {{"-12", "12CR"}, {"+12", "12  "}}},
        {"-99db", {0, 1, 13}, {{"-12", " 12  "}}},
        {"99db", {12}, {{"-12", "12  "}}},
        // floating signs
        {"+++9.99", {6, 8}, {{"+12345", "+123.45"}, {"-00345", "  -3.45"}}},
        {"---9", {7, 9}, {{"+012", "  12"}, {"-012", " -12"}}},
        {"--,--9", {7}, {{"-0012", "   -12"}, {"-1012", "-1,012"}}},
        {"++.99", {6}, {{"+005", " +.05"}}},
        {"+++.++", {6}, {{"-0000", "  -.00"}}},
        {"++.+,+", {6}, {{"+000", " +.0,0"}}},
        {"++./9", {6}, {{"+05", " +./5"}}},
        {"++V99", {6}, {{"-005", " -05"}}},
        // floating currency
        {"$$$9.99", {12}, {{"+00123", "  $1.23"}}},
        {"$$,$$9", {12}, {{"+0005", "    $5"}, {"+0123", "  $123"}, {"+1234", "$1,234"}}},
        {"$$$9-", {10}, {{"-012", " $12-"}}},
        {"$$$9+CR", {11}, {{"+012", " $12   "}, {"-012", " $12-CR"}}},
        {"$$/$9", {12}, {{"+005", "   $5"}}},
        {"/$$9", {12}, {{"+05", "/ $5"}}},
        {"0$$9", {12}, {{"+05", "0 $5"}}},
        {"$$0$9", {12}, {{"+105", "$1005"}}},
        {"$$9", {12}, {{"+01", " #1"}}, false, '.', '#'},
        // fixed currency
        {"-$ZZ9.99", {3}, {{"-01234", "-$ 12.34"}}},
        {"$99", {2}, {{"+12", "#12"}}, false, '.', '#'},
        // zero
        {"***.**", {0, 2, 3}, {{"+00000", "***.**"}, {"+00005", "***.05"}}, true},
        {"$**,***.**", {7}, {{"+0000000", "*******.**"}}, true},
        {"***.**", {2}, {{"+00000", "***,**"}}, true, ','},
        {"***.**", {8, 12}, {{"+00000", "      "}}, true},
        {"ZZ/ZZ.ZZ", {0}, {{"+000000", "        "}}, true},
        {"$$$.$$", {12}, {{"+0000", "      "}, {"+0001", "  $.01"}}, true},
        {"99.99-", {blankWhenZero(0), blankWhenZero(3)}, {{"+0000", "      "}}},
        {"**/**", {blankWhenZero(2)}, {{"-0000", "     "}}, true},
        {"99.99-", {blankWhenZero(3)}, {{"-0001", "00.01-"}}},
        {"$$9CR", {blankWhenZero(11)}, {{"-01", " $1CR"}, {"-00", "     "}}},
        {"99", {200}, {{"+00", "  "}}}, // no code, yet above the last one
    };
    for (const Picture &picture : pictures) {
        for (const int code : picture.codes) {
            for (const auto &[digits, expected] : picture.cases) {
                EXPECT_EQ(edited(picture, code, digits), expected)
                    << picture.text << " code " << code << " of " << digits;
            }
        }
    }
}

TEST(NumericEdit, CurrencyString) {
    const struct {
        Picture picture;
        std::string currency;
    } cases[] = {
        {{"$$$9.99", {12}, {{"+00123", "  EUR1.23"}}}, "EUR"},
        {{"99$", {0}, {{"+12", "12EUR "}}}, "EUR "},
        {{"$99", {0}, {{"+12", "#12"}}}, "#"},
        {{"$99", {0}, {{"+12", "12"}}}, ""},
        {{"$$9", {12}, {{"+05", " GBP5"}}, false, '.', '&'}, "GBP"},
        {{"PP99V9", {0}, {{"+123", "123"}}}, "EUR"},             // only what was written is copied
        {{"$$9", {blankWhenZero(12)}, {{"+00", "   "}}}, "EUR"}, // the placeholder was blanked
        {{"$**.**", {2}, {{"+0000", "***.**"}}, true}, "EUR"},   // or overlaid
        {{"", {0}, {{"+", ""}}}, "EUR"},
        {{"$" + std::string(400, '9'),
          {0},
          {{std::string(401, '7'), "EUR" + std::string(400, '7')}}},
         "EUR"},
    };
    for (const auto &[picture, currency] : cases) {
        const auto &[digits, expected] = picture.cases.front();
        EXPECT_EQ(edited(picture, picture.codes.front(), digits, &currency), expected)
            << picture.text << " with " << currency;
    }
}

constexpr const char *kFails = "does not fit";

std::string deEdited(const std::string &picture, const std::string &sender,
                     const std::string *currency = nullptr) {
    const std::string descriptor = word(picture.size()) + picture;
    const auto *block = reinterpret_cast<const DeEditDescriptor *>(descriptor.data());
    const std::string string = currency != nullptr ? word(currency->size()) + *currency : "";
    Receiver result(picture.size() + 1);
    const int32_t rc =
        currency == nullptr
            ? _zorcMoveNumEditToNum(block, sender.data(), result.data())
            : _zorcMoveNumEditToNum2(block, sender.data(), result.data(),
                                     reinterpret_cast<const CurrencyString *>(string.data()));
    EXPECT_TRUE(rc == 0 || rc == 1);
    return rc == 0 ? result.text() : kFails;
}

TEST(DeEdit, Table) {
    const struct {
        const char *picture;
        Pairs cases; // sender and result
    } pictures[] = {
        {"", {{"", "+"}}},
        {"ZZ,ZZ9.99", {{" 1,234.50", "0123450+"}}},
        {"**9", {{"**5", "005+"}}},
        {"9/9V9P", {{"1/23", "123+"}}},
        // a sign position or the head of a floating string
        {"+Z9", {{"112", kFails}, {"- 2", "02-"}, {"+ 2", "02+"}, {"  2", "02+"}, {"*12", "12+"}}},
        {"-99", {{"+12", "12+"}, {" 12", "12+"}, {"112", kFails}}},
        {"99-", {{"12-", "12-"}}},
        {"99+", {{"12 ", "12+"}}},
        {"+++9", {{" -12", "012-"}, {"  -5", "005-"}, {"+123", "123+"}, {" *12", "12+"}}},
        {"+++9", {{"--12", kFails}, {"-+12", kFails}, {"-*12", kFails}}},
        {"+++9", {{" 112", kFails}}}, // a digit without a sign ahead of it
        {"---9", {{"  12", "012+"}, {" -12", "012-"}, {"-5-1", kFails}, {" +12", "12+"}}},
        // a floating sign in the place of an insertion byte
        {"++,++9", {{"  -123", "0123-"}}},
        {"--/--9", {{"  -123", "0123-"}}},
        {"++/99", {{"  -12", "012+"}}}, // no further sign position
        {"9/+9", {{"1-+2", "12+"}}},
        // currency
        {"$$$9.99", {{"  $1.23", "00123+"}, {"$123.45", "12345+"}}},
        {"$99", {{"$12", "12+"}, {"712", "712+"}}},
        // sign pairs
        {"99CR", {{"12CR", "12-"}, {"12  ", "12+"}, {"12DB", kFails}, {"12cr", kFails}}},
        {"99CR", {{"12 R", kFails}, {"12C ", kFails}, {"12DR", kFails}}},
        {"99db", {{"12db", "12-"}}},
        {"99C", {{"12C", kFails}}},
    };
    for (const auto &picture : pictures) {
        for (const auto &[sender, expected] : picture.cases) {
            EXPECT_EQ(deEdited(picture.picture, sender), expected)
                << picture.picture << " of " << sender;
        }
    }
}

TEST(DeEdit, CurrencyString) {
    const struct {
        std::string picture;
        std::string sender;
        std::string currency;
        std::string expected;
    } cases[] = {
        {"$$$9.99-", "  EUR1.23-", "EUR", "00123-"},
        {"$$$", " EUR5", "EUR", "05+"}, // the string stretches past the picture's length
        {"99V9P$", "123EUR", "EUR", "123+"},
        {"$99", "$12", "EUR", "12+"},  // not found
        {"99", "12EUR", "EUR", "12+"}, // behind the item
        {"$99", "$12", "", "12+"},
        {"$" + std::string(400, '9'), "EUR" + std::string(400, '7'), "EUR",
         std::string(400, '7') + "+"},
    };
    for (const auto &entry : cases) {
        EXPECT_EQ(deEdited(entry.picture, entry.sender, &entry.currency), entry.expected)
            << entry.picture << " of " << entry.sender;
    }
}

// De-editing an edited item gives back every digit that the picture showed, and the sign.
TEST(DeEdit, UndoesEditing) {
    const struct {
        const char *picture;
        int code;
        std::size_t digits;
        bool keepsSign;
    } cases[] = {
        {"***,**9.99-", 3, 8, true}, {"+++,++9.99", 6, 7, true},    {"---,--9.99", 7, 7, true},
        {"99/99/99", 0, 6, false},   {"$$$,$$9.99CR", 11, 7, true}, {"+$ZZ,ZZ9.9V", 2, 6, true},
    };
    std::mt19937 random(20);
    for (const auto &entry : cases) {
        for (int round = 0; round < 500; ++round) {
            // A random count of significant digits.
            std::string digits(entry.digits, '0');
            for (std::size_t i = random() % entry.digits; i < entry.digits; ++i) {
                digits[i] = static_cast<char>('0' + random() % 10);
            }
            const char sign = random() % 2 == 0 ? '+' : '-';
            const std::string item = edited({entry.picture, {}, {}}, entry.code, sign + digits);
            EXPECT_EQ(deEdited(entry.picture, item), digits + (entry.keepsSign ? sign : '+'));
        }
    }
}

TEST(AlphanumericEdit, Table) {
    const struct {
        std::string picture;
        int positions;
        bool repeat;
        std::string sender;
        std::string expected;
    } cases[] = {
        {"XX/XX 0X", 8, false, "ABCDEF", "AB/CD 0E"},
        {"XXXX/X", 6, false, "AB", "AB  / "},
        {"XXXX/X", 6, true, "AB", "ABAB/A"},
        {"X\x81\x40X", 3, false, "AB", std::string("A\x81\x40") + "B"},
        {"X\x81X", 3, false, "ABC", "ABC"}, // half an ideographic blank is a position like others
        {"XX", 2, true, "", "  "},
        {"XX", 0, false, "AB", ""},
        {"XX", -1, false, "AB", ""},
    };
    for (const auto &entry : cases) {
        const std::string descriptor = word(static_cast<std::size_t>(entry.positions)) +
                                       static_cast<char>(entry.repeat) + entry.picture;
        Receiver receiver(2 * entry.picture.size());
        _zorcMoveAlphaNumEdit(
            reinterpret_cast<const AlphanumericEditDescriptor *>(descriptor.data()),
            entry.sender.data(), static_cast<int32_t>(entry.sender.size()), receiver.data());
        EXPECT_EQ(receiver.text(), entry.expected) << entry.picture << " of " << entry.sender;
    }
}

std::string bytesOf(const std::u16string &text) {
    return {reinterpret_cast<const char *>(text.data()), text.size() * sizeof(char16_t)};
}

TEST(NationalEdit, Table) {
    struct Run {
        char16_t editChar;
        int length;
    };
    const struct {
        std::vector<Run> runs;
        bool repeat;
        std::u16string sender;
        std::u16string expected;
    } cases[] = {
        {{{u'N', 2}, {u'/', 1}, {u'N', 2}, {u'0', 2}, {u' ', 1}}, false, u"ABCD", u"AB/CD00 "},
        {{{u'N', 3}, {u'/', 1}, {u'N', 2}}, false, u"\u4E00", u"\u4E00  /  "},
        {{{u'N', 3}, {u'/', 1}, {u'N', 4}}, true, u"AB", u"ABA/BABA"},
        {{{u'N', 2}, {u'N', 0}, {u'/', -1}, {u'9', 1}}, false, u"ABC", u"ABC"},
        {{{u'N', 3}}, true, u"", u"   "},
        {{}, false, u"AB", u""},
    };
    for (const auto &entry : cases) {
        std::string runs;
        for (const Run &run : entry.runs) {
            runs += word(run.editChar) + word(static_cast<std::size_t>(run.length));
        }
        const std::string descriptor =
            word(runs.size()) + static_cast<char>(entry.repeat) + '\0' + runs;
        const std::string sender = bytesOf(entry.sender);
        Receiver receiver(64);
        _zorcMoveUnicodeEdit(reinterpret_cast<const NationalEditDescriptor *>(descriptor.data()),
                             sender.data(), static_cast<int32_t>(sender.size()), receiver.data());
        EXPECT_EQ(kit::hex(receiver.text()), kit::hex(bytesOf(entry.expected)));
    }
}

// Against the definition: a receiver is cut from an endless row of literals, at its left end or,
// when justified right, at its right end.
TEST(FigurativeConstant, AllLengths) {
    const std::string alphabet = "ABCDEFGHIJ";
    for (std::size_t literal = 1; literal <= alphabet.size(); ++literal) {
        for (std::size_t bytes = 0; bytes < 40; ++bytes) {
            std::string row;
            while (row.size() < bytes) {
                row += alphabet.substr(0, literal);
            }
            for (const bool right : {false, true}) {
                Receiver receiver(bytes);
                const auto length = static_cast<int32_t>(bytes);
                _zorcMoveFigConst(receiver.data(), right ? -length : length, alphabet.data(),
                                  static_cast<int32_t>(literal));
                EXPECT_EQ(receiver.text(),
                          right ? row.substr(row.size() - bytes) : row.substr(0, bytes));
            }
        }
    }
    Receiver untouched(4);
    _zorcMoveFigConst(untouched.data(), 4, "", 0);
    EXPECT_EQ(untouched.text(), "");
}

TEST(OverlappingMove, AllLengthsAndDistances) {
    for (const int target : {0, 1, 3, 8, -1, -3, -8}) {
        for (const int source : {0, 1, 3, 8, -1, -3, -8}) {
            for (std::size_t distance = 0; distance < 10; ++distance) {
                const auto to = static_cast<std::size_t>(std::abs(target));
                const auto from = static_cast<std::size_t>(std::abs(source));
                std::string storage = "abcdefghijklmnopqrstuvwxyz0123456789";
                const std::size_t senderAt = 10;
                const std::size_t receiverAt = senderAt + distance - 4;
                std::string expected = storage;
                std::string value = storage.substr(senderAt, from);
                const char blank = source < 0 ? '@' : ' ';
                if (to > from) {
                    value.insert(target < 0 ? 0 : from, to - from, blank);
                } else {
                    value = target < 0 ? value.substr(from - to) : value.substr(0, to);
                }
                expected.replace(receiverAt, to, value);
                _zorcMoveVarLenOverlap(&storage[receiverAt], target, &storage[senderAt], source);
                EXPECT_EQ(storage, expected) << target << " from " << source << " at " << distance;
            }
        }
    }
}

} // namespace
