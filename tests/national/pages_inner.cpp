// Every EBCDIC code page of every locale that the library knows, against the conversion library's
// own tables.
#include <algorithm>
#include <cctype>
#include <filesystem>
#include <set>

#include "codepage.h"
#include "national.h"
#include "national/icu.h"
#include "national/locale_table.h"
#include "national/locales.h"
#include "national/services.h"
#include "text/statement_kit.h"

namespace {

// Through national data, by converters as the library makes them for anyone.
std::string byIcu(const std::string &from, const std::string &to, const std::string &bytes) {
    const zor::IcuConversion &icu = *zor::icuConversion();
    UErrorCode status = U_ZERO_ERROR;
    UConverter *const in = icu.ucnv_open(from.c_str(), &status);
    UConverter *const out = icu.ucnv_open(to.c_str(), &status);
    std::u16string national(bytes.size(), 0);
    const char *source = bytes.data();
    char16_t *end = national.data();
    icu.ucnv_toUnicode(in, &end, end + national.size(), &source, source + bytes.size(), nullptr, 1,
                       &status);
    std::string target(bytes.size() * 5 / 2 + 2, 0);
    const char16_t *unit = national.data();
    char *byte = target.data();
    icu.ucnv_fromUnicode(out, &byte, byte + target.size(), &unit, end, nullptr, 1, &status);
    EXPECT_LE(status, U_ZERO_ERROR) << from << " " << to;
    icu.ucnv_close(in);
    icu.ucnv_close(out);
    target.resize(static_cast<std::size_t>(byte - target.data()));
    return target;
}

std::string byService(decltype(&_zorUniAtoE) service, const std::string &bytes) {
    std::string target(bytes.size() * 5 / 2 + 2, 0);
    int32_t left = lengthOf(target);
    EXPECT_EQ(service(bytes.data(), lengthOf(bytes), target.data(), &left), 0);
    target.resize(target.size() - static_cast<std::size_t>(left));
    return target;
}

// Each byte behind each other one.
std::string allPairs() {
    std::string pairs;
    for (int i = 0; i < 256 * 256; ++i) {
        pairs += static_cast<char>(i);
        pairs += static_cast<char>(i >> 8);
    }
    return pairs;
}

constexpr const char *kCodeSets[] = {"ISO-8859-1", "UTF-8"};

std::string localeOf(const zor::LocaleRow &row, const std::string &codeSet) {
    std::string name = std::string(row.locale) + "." + codeSet;
    std::transform(name.begin(), name.begin() + 2, name.begin(), tolower);
    return name;
}

bool isSingle(const std::string &page) {
    return _zorGetMaxCharSize(page.c_str()) == 1;
}

void singlesConvertLikeIcu(const std::string &page, const std::string &icuPage) {
    static const std::string pairs = allPairs();
    const bool single = isSingle(page);
    // These have bytes that give two or none of the other code page.
    const bool uneven =
        std::set<std::string>{"QBX-420", "QBX-9030", "QBX-12712", "QBX-16804"}.contains(page);
    const auto check = [&](auto service, const std::string &from, const std::string &to,
                           int32_t toPage, const std::string &source) {
        EXPECT_TRUE(byService(service, source) == byIcu(from, to, source)) << page;
        // The part that goes by look-up alone.
        std::string part = pairs;
        const zor::Translation &translation = zor::translationTo(toPage);
        std::erase_if(part, [&](unsigned char byte) {
            return translation.kinds[byte] != zor::ByteKind::single;
        });
        EXPECT_TRUE(byService(service, part) == byIcu(from, to, part)) << page;
        EXPECT_GT(part.size(), pairs.size() / 5) << page;
        return part == pairs;
    };
    const std::string ebcdic = byIcu("ISO-8859-1", icuPage, pairs);
    const bool natives = check(_zorUniAtoE, "ISO-8859-1", icuPage, zor::kEbcdicPage, pairs);
    const bool ebcdics =
        check(_zorUniEtoA, icuPage, "ISO-8859-1", zor::kNativePage, single ? pairs : ebcdic);
    EXPECT_EQ(natives && ebcdics, single && !uneven) << page;
}

// From UTF-8, each beside one far from it, some between digits.
void pairsConvertLikeIcu(const std::string &page, const std::string &icuPage) {
    std::string text;
    for (unsigned c = 0x80; c < 0x800; ++c) {
        for (const unsigned character : {c, 0x87F - c}) {
            text += static_cast<char>(0xC0 | character >> 6);
            text += static_cast<char>(0x80 | (character & 0x3F));
        }
        text += c % 3 == 0 ? "1" : "";
    }
    EXPECT_TRUE(byService(_zorUniAtoE, text) == byIcu("UTF-8", icuPage, text)) << page;
    const bool byLookUp = zor::translationTo(zor::kEbcdicPage).kinds[0xC3] == zor::ByteKind::lead;
    EXPECT_EQ(byLookUp, isSingle(page)) << page;
}

// The process chooses its code pages anew for each.
void allPages(const std::string &codeSet, decltype(&pairsConvertLikeIcu) convertLikeIcu) {
    for (const zor::LocaleRow &row : zor::kLocaleTable) {
        const std::string locale = localeOf(row, codeSet);
        setenv("LC_ALL", locale.c_str(), 1);
        for (const std::string page : {"", row.ebcdicbase, row.ebcdicdefault}) {
            setenv("EBCDIC_CODEPAGE", page.c_str(), 1);
            _zorProccom->codepage = -1;
            if (_zorProccom->convclose != nullptr) {
                _zorProccom->convclose();
            }
            _zorcSetCodePages();
            EXPECT_EQ(_zorProccom->localename, locale);
            if (!page.empty()) {
                EXPECT_EQ(_zorProccom->ebcdicname, page);
                convertLikeIcu(page, "ibm" + page.substr(3));
            } else if (std::string(row.ebcdicdefault) != "QBX-1390") { // of the second row of JA_JP
                EXPECT_STREQ(_zorProccom->ebcdicname, row.ebcdicdefault);
            }
        }
    }
}

TEST(CodePages, OfAllLocalesConvertAsTheConversionLibraryDoes) {
    const kit::TemporaryDirectory directory;
    auto environment = locales::in("en_US.ISO-8859-1");
    for (const std::string codeSet : kCodeSets) {
        std::set<std::string> names = {"nb_NO." + codeSet}; // what the C library makes of no_NO
        for (const zor::LocaleRow &row : zor::kLocaleTable) {
            names.insert(localeOf(row, codeSet));
        }
        for (const std::string &name : names) {
            std::filesystem::create_directory_symlink(environment[0].second + "/en_US." + codeSet,
                                                      directory.file(name));
        }
    }
    environment[0].second = directory.path();
    kit::expectChild({.environment = environment}, [] {
        allPages(kCodeSets[0], singlesConvertLikeIcu);
        allPages(kCodeSets[1], pairsConvertLikeIcu);
    });
}

} // namespace
