// Conversions between national, native and EBCDIC data and to upper and lower case, and the choice
// of the code pages, each in a process of its own locale.
#include <clocale>
#include <map>
#include <sys/resource.h>

#include "codepage.h"
#include "display.h"
#include "national.h"
#include "national/locales.h"
#include "support/failure_kit.h"
#include "text/statement_kit.h"

namespace {

constexpr const char *kLatin = "de_DE.ISO-8859-1"; // EBCDIC code page QBX-1141
constexpr const char *kUtf8 = "en_US.UTF-8";       // QBX-1140
constexpr const char *kMixed = "ja_JP.UTF-8";      // QBX-1399
constexpr const char *kTurkish = "tr_TR.ISO-8859-9";

// Each in storage of its own size, so that the sanitizer sees what goes beyond.
using Item = std::vector<char>;

enum Call { AtoE, EtoA, ToEbcdic, ToAscii, Upper, Lower, ToUnicode, FromUnicode };

struct Case {
    const char *source; // hexadecimal; with a "-" ahead the length is negative
    int32_t capacity;
    const char *expected;     // status, length out, whole target
    const char *message = ""; // without the line feeds at its end
};

struct Group {
    const char *locale;
    Call call;
    const char *page; // name, "" the native one, "e" the EBCDIC one; for the last two calls
    std::vector<Case> cases;
};

#define CUT "ZOR222I  A conversion between code pages failed: status 11."
#define FAILED(status) "ZOR222W  A conversion between code pages failed: status " status "."
#define UNOPENED(name, status)                                                                     \
    "ZOR221W  A converter for code page " name " cannot be opened: status " status                 \
    ". Check that the name is right and the code page is installed."
#define UNFOLDED(locale)                                                                           \
    "ZOR225W  A change between upper and lower case failed: status 15, locale " locale "."

#define TEN "4230423042304230423042304230423042304230"

// clang-format off
const std::vector<Group> kGroups = {
    {kLatin, ToUnicode, "", {{"41e4", 8, "0 4 4100e400eeeeeeee"}, {"", 4, "0 0 eeeeeeee"},
        {"4142", 5, "0 4 41004200ee"}, {"4142", 2, "15 2 4100", FAILED("15")},
        {"-4142", 2, "1 2 eeee", FAILED("1")}}},
    {kLatin, ToUnicode, "e", {{"c1c0", 4, "0 4 4100e400"}}},
    {kLatin, ToUnicode, "qbx-01140", {{"c19f", 4, "0 4 4100ac20"}}},
    {kLatin, ToUnicode, "qbx-923_P100-1998", {{"a4", 2, "0 2 ac20"}}},
    {kLatin, ToUnicode, "QBX-1140  ", {{"c1", 2, "0 2 4100"}}},
    {kLatin, ToUnicode, "SHIFT_JIS", {{"4182a082", 6, "11 4 41004230eeee", CUT}}},
    {kUtf8, ToUnicode, "QBX-99999", {{"c1", 2, "4 2 eeee", UNOPENED("QBX-99999", "4")}}},
    {kUtf8, ToUnicode, "QBX-1140-AND-MUCH-MORE-THAN-29-BYTES", {
        {"c1", 2, "4 2 eeee", UNOPENED("QBX-1140-AND-MUCH-MORE-THAN-2", "4")}}},
    {kLatin, FromUnicode, "", {{"4100e400", 3, "0 2 41e4ee"}, {"4230", 2, "0 1 1aee"},
        {"410000d8", 4, "11 4 41eeeeee", FAILED("11")}, // and a mark that only a display heeds
        {"41000e20", 1, "0 1 41"}}},
    {kLatin, FromUnicode, "e", {{"4100e400", 1, "15 1 c1", FAILED("15")}}},
    {kLatin, FromUnicode, "UTF-8", {{"3dd800de", 4, "0 4 f09f9880"}}},
    {kLatin, AtoE, "", {{"41e4", 4, "0 2 c1c0eeee"}, {"41", 1, "0 0 c1"}, {"", 1, "0 1 ee"},
        {"414243", 2, "15 2 c1c2", FAILED("15")}, {"-41", 2, "1 2 eeee", FAILED("1")}}},
    {kLatin, EtoA, "", {{"c1c29f", 4, "0 1 41421aee"}}},
    {kLatin, ToEbcdic, "", {{"4142", 4, "0 2 c1c2eeee"}, {"0e", 2, "0 1 0eee"}, {"0f", 0, "0 0 "},
        {"-0e", 2, "0 0 eeee"}, {"0e41", 4, "0 2 0ec1eeee"}, {"0e41", -4, "0 3 0ec10fee"},
        {"0e41", -2, "0 2 0ec1"}, {"0e410e41", -6, "0 4 0ec10ec1eeee"},
        {"-0e410f", -4, "0 1 c1eeeeee"}, {"-410f", 4, "0 2 c10feeee"},
        {"-0e4142", 4, "0 2 c1c2eeee"}, {"41424344", 2, "0 2 c1c2"},
        {"4142434445", 2, "15 0 eeee", FAILED("15")}}},
    {kLatin, ToAscii, "", {{"c1c2", 4, "0 2 41422020"}, {"c1c2", -5, "0 2 2020204142"},
        {"", 2, "0 0 2020"}, {"0f", 2, "0 1 0fee"}, {"c1c2c3", 2, "15 0 4142", FAILED("15")}}},
    {"en_US.UTF-8@x", ToUnicode, "", {{"c3a4", 4, "0 2 e400eeee"}}},
    {"en_US.ISO-8859-16", AtoE, "", {{"41", 1, "4 1 ee",
        "ZOR221W  A converter for code page ISO-8859-16 cannot be opened: status 4. Check\n"
        "         that the name is right and the code page is installed."}}},
    {kUtf8, ToUnicode, "", {{"41e38182e381", 8, "11 4 41004230eeeeeeee", CUT},
        {"e328", 4, "0 4 fdff2800"}}},
    {kUtf8, AtoE, "", {{"41c3a442", 4, "0 1 c143c2ee"}, {"41c3a442", 2, "15 2 c143", FAILED("15")},
        {"41c3", 4, "0 3 c1eeeeee", CUT}, {"c341c380", 4, "0 1 3fc164ee"},
        {"c3c3a4", 4, "0 2 3f43eeee"}, {"41c3a4e2", 4, "0 2 c143eeee", CUT},
        {"4142e2", 1, "15 1 c1", CUT "\n\n" FAILED("15")}}},
    {kMixed, ToUnicode, "e", {{"0e44810f", 2, "0 2 4230"}, // SI is left when the target is full
        {"0e44810fc1", 2, "15 2 4230", FAILED("15")}}},
    {kMixed, ToUnicode, "", {{"e38182e3", 2, "11 2 4230", CUT}}},
    {kMixed, FromUnicode, "e", {{"423042300e20", 5, "15 5 0e44814481", FAILED("15")},
        {TEN TEN TEN TEN, 3, "15 3 0e4481", FAILED("15")}, // the next: not as in the run cut
        {"4100", 1, "0 1 c1"}}},
    {kMixed, AtoE, "", {{"41e3818242", 9, "0 3 c10e44810fc2eeeeee"},
        {"e38182e381", 4, "0 0 0e44810f", CUT}}},
    {kMixed, EtoA, "", {{"c10e44810fc2", 6, "0 1 41e3818242ee"},
        {"0e448144", 3, "0 0 e38182", CUT}}},
    {kMixed, ToEbcdic, "", {{"e38182e38182", 6, "0 6 0e448144810f"},
        {"-e38182e38182", 4, "0 4 44814481"}, {"41e3818242", 3, "0 3 c10e44"}}},
    {kMixed, ToAscii, "", {{"c10e44810fc2", 6, "0 5 41e381824220"}, {"-0e4481", 3, "0 3 e38182"},
        {"-0e448144", 3, "0 3 e38182"}, {"-0e44810e44810f", -8, "0 6 2020e38182e38182"},
        {"-0e44810fc20f", 5, "0 4 e381824220"}, {"-0f", 1, "0 0 20"}}},
    {kLatin, Upper, "", {{"df006900", 6, "6 6 530053004900"},
        {"df00", 2, "15 2 eeee", UNFOLDED("de_DE")}}},
    {kLatin, Lower, "", {{"c4004900", 4, "4 4 e4006900"}}},
    {kTurkish, Upper, "", {{"6900", 2, "2 2 3001"}}},
    {kTurkish, Lower, "", {{"4900", 2, "2 2 3101"}, {"4900", 1, "15 1 ee", UNFOLDED("tr_TR")}}},
};
// clang-format on

int32_t call(const Group &group, const Item &source, int32_t length, Item &target,
             int32_t &targetLength) {
    constexpr decltype(&_zorUniAtoE) kBetween[] = {_zorUniAtoE, _zorUniEtoA, _zorConvToEBCDIC,
                                                   _zorConvToASCII};
    if (group.call < Upper) {
        return kBetween[group.call](source.data(), length, target.data(), &targetLength);
    }
    if (group.call < ToUnicode) {
        const auto change = group.call == Upper ? _zorUpperCaseUnicode : _zorLowerCaseUnicode;
        return change(target.data(), &targetLength, source.data(), length);
    }
    const std::string page = group.page;
    const auto pageLength = page == "e" ? CODEPAGE_EBCDIC : lengthOf(page);
    const auto convert = group.call == ToUnicode ? _zorConvToUnicode : _zorConvFromUnicode;
    return convert(source.data(), length, target.data(), &targetLength, page.data(), pageLength);
}

void expectCase(const Group &group, const Case &c) {
    const int32_t sign = *c.source == '-' ? -1 : 1;
    Item source;
    for (std::string hex = c.source + (sign < 0 ? 1 : 0); !hex.empty(); hex.erase(0, 2)) {
        source.push_back(static_cast<char>(std::stoi(hex.substr(0, 2), nullptr, 16)));
    }
    source.shrink_to_fit();
    Item target(static_cast<std::size_t>(std::abs(c.capacity)), '\xEE');
    int32_t length = c.capacity;
    const int32_t status = call(group, source, sign * lengthOf(source), target, length);
    EXPECT_EQ(std::to_string(status) + " " + std::to_string(length) + " " +
                  kit::hex(target.data(), target.size()),
              c.expected)
        << "call " << group.call << " of " << c.source << " into " << c.capacity;
}

TEST(Conversions, GiveBytesStatusesLengthsAndMessages) {
    std::map<std::string, std::string> messages; // by locale
    for (const Group &group : kGroups) {
        for (const Case &c : group.cases) {
            messages[group.locale] += *c.message != 0 ? std::string(c.message) + "\n\n" : "";
        }
    }
    for (const auto &[locale, err] : messages) {
        kit::expectChild({.environment = locales::in(locale), .err = err}, [] {
            for (const Group &group : kGroups) {
                for (const Case &c : group.cases) {
                    if (std::string(group.locale) == getenv("LC_ALL")) {
                        expectCase(group, c);
                    }
                }
            }
        });
    }
}

// To national data and to EBCDIC, and back. The sign of a native text's length is that of the
// EBCDIC one; when it is negative all characters are two-byte ones of the EBCDIC page.
CHILD_TEST(Conversions, OfMixedDataRoundTrip, locales::in(kMixed)) {
    const std::u16string characters = u"A z9あ漢ｱ、Ж×"; // of one, two and three bytes
    Random random(7);
    for (int trial = 0; trial < 4000; ++trial) {
        const int32_t sign = trial % 2 == 0 ? 1 : -1;
        std::u16string text;
        for (auto count = random.below(40); count > 0; --count) {
            text += characters[random.below(characters.size())];
        }
        std::erase_if(text, [=](char16_t c) { return sign < 0 && (c < 0x100 || c == u'ｱ'); });
        Item room(text.size() * 3);
        const int32_t bytes = _Tvq_display_of(lengthOf(text), text.data(), room.data());
        const Item native(room.begin(), room.begin() + bytes);
        std::u16string national(text.size(), u'#');
        EXPECT_EQ(_Tvq_national_of(bytes, native.data(), national.data()), lengthOf(text));
        EXPECT_EQ(national, text);
        Item ebcdic(native.size() * 5 / 3 + 4), back(native.size());
        int32_t written = -lengthOf(ebcdic), length = bytes;
        EXPECT_EQ(_zorConvToEBCDIC(native.data(), sign * bytes, ebcdic.data(), &written), 0);
        EXPECT_EQ(_zorConvToASCII(ebcdic.data(), sign * written, back.data(), &length), 0);
        EXPECT_EQ(back, native);
    }
}

// Past what the stack holds, in place, by look-up and through national data.
CHILD_TEST(Conversions, TakeLongTextsInPlace, locales::in(kUtf8)) {
    for (const std::size_t size : {16380U, 16381U, 100000U}) {
        const std::pair<std::string, char> firsts[] = {{"x", '\xA7'}, {"\xc3\xa4", '\x43'}};
        for (const auto &[first, ebcdic] : firsts) {
            const std::string native = first + std::string(size, 'x');
            const int32_t bytes = lengthOf(native);
            std::string area = native;
            int32_t left = bytes;
            EXPECT_EQ(_zorUniAtoE(area.data(), bytes, area.data(), &left), 0);
            EXPECT_EQ(area.substr(0, size + 1), ebcdic + std::string(size, '\xA7'));
            int32_t length = bytes;
            EXPECT_EQ(_zorConvToASCII(area.data(), bytes - left, area.data(), &length), 0);
            EXPECT_EQ(area, native);
        }
        // Onto itself, one byte further on.
        std::string area = std::string(size, 'x') + 'y';
        auto left = static_cast<int32_t>(size);
        EXPECT_EQ(_zorUniAtoE(area.data(), left, &area[1], &left), 0);
        EXPECT_EQ(area, 'x' + std::string(size, '\xA7'));
    }
}

CHILD_TEST(Conversions, LoadTheLibraryAtFirstUseAndStartAgainAfterTheirEnd, .out = "text\n") {
    const auto icuIsLoaded = [] {
        return kit::readFile("/proc/self/maps").find("libicu") != std::string::npos;
    };
    kit::displayLine(DISPLAY_ON_SYSOUT, {"text"});
    EXPECT_FALSE(icuIsLoaded());
    EXPECT_EQ(_zorProccom->convclose, nullptr);
    for (int round = 0; round < 2; ++round) {
        char target[2] = {};
        int32_t length = sizeof target;
        EXPECT_EQ(_Tvq_national_of(1, "A", target), 2);
        EXPECT_EQ(_zorCompareUnicode(u"A", 2, u"B", 2), -1);
        EXPECT_EQ(_zorUpperCaseUnicode(target, &length, u"", 0) + length, 0);
        ASSERT_NE(_zorProccom->convclose, nullptr);
        _zorProccom->convclose();
    }
    EXPECT_TRUE(icuIsLoaded());
}

const std::string kAllFail =
    UNOPENED("UTF-8", "2") "\n\nZOR224W  The collating sequence of locale en_US cannot be opened: "
                           "status 2.\n\nZOR225W  A change between upper and lower case failed: "
                           "status 2, locale en_US.\n";

// Where the conversion library cannot be loaded each service tells so.
CHILD_TEST(Conversions, FailWithoutTheLibrary, .errHolds = kAllFail) {
    rlimit files{};
    getrlimit(RLIMIT_NOFILE, &files);
    const rlimit none = {0, files.rlim_max};
    setrlimit(RLIMIT_NOFILE, &none);
    char target[8] = {};
    EXPECT_EQ(_Tvq_national_of(1, "A", target), 0);
    EXPECT_EQ(_Tvq_display_of(0, "", target), 0);
    EXPECT_EQ(_zorCompareUnicode(u"A", 2, u"B", 2), 2);
    int32_t length = sizeof target;
    EXPECT_EQ(_zorUpperCaseUnicode(target, &length, u"a", 2), 2);
    setrlimit(RLIMIT_NOFILE, &files);
}

#if !ZOR_UNDER_SANITIZER
PROGRAM_TEST(Conversions, EndTheRunWithoutStorage, .errHolds = "ZOR907S",
             .status = failure::kAborted) {
    int32_t length = 1;
    char target = 0;
    _zorUniAtoE("\xc3\xa4 and not as much as the length says", 0x7FFFFF00, &target, &length);
}
#endif

CHILD_TEST(CodePages, AnswerQuestions, .environment = locales::in(kUtf8),
           .errHolds = "ZOR221W  A converter for code page nothing cannot be opened: ") {
    const std::string tooLong = "QBX-1140" + std::string(60, 'x');
    const struct {
        std::string name;
        int32_t widest; // 0: not known
        int32_t ccsid;
    } cases[] = {{"QBX-1140", 1, 1140}, {"qbx-00037", 1, 37},  {"UTF-8", 3, 1208},
                 {"ISO8859-1", 1, 819}, {"QBX-1399", 3, 1399}, {"UTF-16LE", 2, 1202},
                 {"nothing", 0, -1},    {"", 0, -1},           {tooLong, 0, -1}};
    for (const auto &[name, widest, ccsid] : cases) {
        int32_t got = 0;
        const bool known = widest != 0;
        EXPECT_EQ(_zorValidateCPID(name.data(), lengthOf(name)), known ? 0 : 1) << name;
        EXPECT_EQ(_zorGetMaxCharSize(name.data()), widest) << name;
        EXPECT_EQ(_zorGetCCSID(name.data(), &got), known ? 0 : 2) << name;
        EXPECT_EQ(got, ccsid) << name;
    }
    EXPECT_EQ(_zorValidateCPID("QBX-1140##", 8), 0);
}

void showSelection() {
    char name[25];
    char ebcdic[15];
    _zorGetLocaleCP(name, ebcdic);
    printf("%s %d %s %s %d", name, static_cast<int>(_zorProccom->codepage), ebcdic,
           _zorProccom->localename + 6, static_cast<int>(_zorGetMBCurMax()));
    // The selection is made once.
    setenv("EBCDIC_CODEPAGE", "QBX-1155", 1);
    _zorcSetCodePages();
    EXPECT_STREQ(_zorProccom->ebcdicname, ebcdic);
}

TEST(CodePages, FollowTheEnvironment) {
    const struct {
        const char *locale;
        const char *ebcdic;    // empty: as if it were not set
        const char *expected;  // locale name, row, EBCDIC name, code set, bytes per character
        const char *text = ""; // of message 230, if any
    } cases[] = {
        {"C", "", "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1"},
        {"C.UTF-8", "", "en_US.UTF-8 8 QBX-1140 UTF-8 6"},
        {"no_SUCH", "", "en_US.ISO8859-1 8 QBX-1140 ISO8859-1 1"},
        {"ja_JP.UTF-8", "", "ja_JP.UTF-8 48 QBX-1399 UTF-8 6"},
        {"ja_JP.UTF-8", "QBX-930", "ja_JP.UTF-8 48 QBX-930 UTF-8 6"},
        {"xx_YY.UTF-8", "", "xx_YY.UTF-8 8 QBX-1140 UTF-8 6"},
        {"de_DE@euro", "", "de_DE.ISO-8859-1 2 QBX-1141 ISO-8859-1 1"},
        {"de_DE.ISO-8859-1", "qbx-273", "de_DE.ISO-8859-1 2 qbx-273 ISO-8859-1 1"},
        {"de", "", "de 8 QBX-1140 UTF-8 6"},
        {"en_US.UTF-8@muchlongerthanitmaybe", "",
         "en_US.UTF-8@muchlongerth 8 QBX-1140 UTF-8@muchlongerth 6"},
        {"zh_CN.UTF-8", "", "zh_CN.UTF-8 46 QBX-1388 UTF-8 6"},
        {"tr_TR.ISO-8859-9", "qbx-1155", "tr_TR.ISO-8859-9 45 qbx-1155 ISO-8859-9 1"},
        // The rules of this locale have another upper case of "i".
        {"tr_TR.iso-8859-9", "QBX-500", "tr_TR.iso-8859-9 45 QBX-500 iso-8859-9 1",
         "code page QBX-500 does not belong to locale TR_TR.ISO-8859-9."},
        {"fr_CH.ISO-8859-1", "QBX-500", "fr_CH.ISO-8859-1 14 QBX-500 ISO-8859-1 1"},
        {"en_US.UTF-8", "QBX-500", "en_US.UTF-8 8 QBX-500 UTF-8 6",
         "code page QBX-500 does not belong to locale EN_US.UTF-8."},
        {"en_US.UTF-8", "qbx-1047", "en_US.UTF-8 8 QBX-1140 UTF-8 6",
         "code page qbx-1047 is not known. QBX-1140 is used."},
        {"en_US.UTF-8", "QBX-1140-AND-SO-ON", "en_US.UTF-8 8 QBX-1140 UTF-8 6",
         "code page QBX-1140-AND-SO-ON is not known. QBX-1140 is used."},
    };
    for (const auto &[locale, ebcdic, expected, text] : cases) {
        const auto result = kit::runChild(showSelection, locales::in(locale, ebcdic));
        EXPECT_EQ(result.out, expected) << locale;
        EXPECT_EQ(result.err.substr(0, 16), *text != 0 ? "ZOR230W  EBCDIC " : "");
        EXPECT_NE(result.err.find(text), std::string::npos) << result.err;
    }
}

// A program may have set a locale of its own before.
CHILD_TEST(CodePages, AreChosenAheadOfTheBytesOfACharacter, .out = "6 8") {
    setlocale(LC_ALL, "C");
    const int bytes = _zorGetMBCurMax();
    printf("%d %d", bytes, static_cast<int>(_zorProccom->codepage));
}

} // namespace
