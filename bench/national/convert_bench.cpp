// Native to EBCDIC and back beside iconv of the C library, beside ICU called directly, and beside a
// plain loop over a table; national compares beside ICU's.
#include <array>
#include <cstdlib>
#include <iconv.h>
#include <string>
#include <vector>

#include "national.h"
#include "national/icu.h"
#include "proccom.h"
#include "support/bench.h"

namespace {

constexpr const char *kNative = "ISO-8859-1";
constexpr const char *kEbcdic = "IBM1140";

// Text as records have it: letters, digits and blanks.
std::string textOf(std::size_t length) {
    static const std::string words = "Smith and Sons, 1234567.89 ";
    std::string text;
    while (text.size() < length) {
        text += words;
    }
    text.resize(length);
    return text;
}

using Service = int32_t (*)(const void *, int32_t, void *, int32_t *);

template <class Body> double each(Body body) {
    return bench::nanoseconds([=](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            body();
        }
    });
}

double throughService(Service service, const std::string &source) {
    std::vector<char> target(source.size());
    return each([&] {
        auto left = static_cast<int32_t>(target.size());
        service(source.data(), static_cast<int32_t>(source.size()), target.data(), &left);
        bench::keep(target[0]);
    });
}

double throughIconv(const char *to, const char *from, const std::string &source) {
    std::vector<char> target(source.size());
    const iconv_t conversion = iconv_open(to, from);
    const double taken = each([&] {
        char *in = const_cast<char *>(source.data());
        char *out = target.data();
        std::size_t inLeft = source.size();
        std::size_t outLeft = target.size();
        iconv(conversion, &in, &inLeft, &out, &outLeft);
        bench::keep(target[0]);
    });
    iconv_close(conversion);
    return taken;
}

// As a program that knows ICU would do it: converters kept open, UTF-16 in between.
double throughIcu(const char *to, const char *from, const std::string &source) {
    const zor::IcuConversion &icu = *zor::icuConversion();
    UErrorCode status = U_ZERO_ERROR;
    UConverter *const in = icu.ucnv_open(from, &status);
    UConverter *const out = icu.ucnv_open(to, &status);
    std::vector<UChar> units(source.size());
    std::vector<char> target(source.size());
    const double taken = each([&] {
        const char *bytes = source.data();
        UChar *unitsEnd = units.data();
        icu.ucnv_toUnicode(in, &unitsEnd, units.data() + units.size(), &bytes,
                           bytes + source.size(), nullptr, 1, &status);
        const UChar *next = units.data();
        char *end = target.data();
        icu.ucnv_fromUnicode(out, &end, target.data() + target.size(), &next, unitsEnd, nullptr, 1,
                             &status);
        bench::keep(target[0]);
    });
    icu.ucnv_close(in);
    icu.ucnv_close(out);
    return taken;
}

double throughLoop(const std::string &source) {
    std::array<unsigned char, 256> table;
    for (std::size_t i = 0; i < table.size(); ++i) {
        table[i] = static_cast<unsigned char>(i ^ 0x55);
    }
    std::vector<unsigned char> target(source.size());
    return each([&] {
        const auto *from = reinterpret_cast<const unsigned char *>(source.data());
        unsigned char *to = target.data();
        for (std::size_t i = 0; i < source.size(); ++i) {
            to[i] = table[from[i]];
        }
        bench::keep(target[0]);
    });
}

// The process chooses its code pages anew.
void enterLocale(const char *locale) {
    setenv("LC_ALL", locale, 1);
    _zorProccom->codepage = -1;
    if (_zorProccom->convclose != nullptr) {
        _zorProccom->convclose();
    }
}

void direction(const char *name, Service service, const char *to, const char *from,
               const std::string &source) {
    const std::string row = std::string(name) + ", " + std::to_string(source.size()) + " bytes";
    bench::row(row, throughService(service, source), "iconv", throughIconv(to, from, source));
    bench::row(row, throughService(service, source), "ICU", throughIcu(to, from, source));
    bench::row(row, throughService(service, source), "table loop", throughLoop(source));
}

ZOR_BENCH(singleByteAndEbcdic) {
    enterLocale("C"); // ISO8859-1 and QBX-1140
    for (const std::size_t length : {10, 80, 32000}) {
        const std::string native = textOf(length);
        std::string ebcdic = native;
        auto left = static_cast<int32_t>(length);
        _zorUniAtoE(native.data(), left, ebcdic.data(), &left);
        direction("native to EBCDIC", _zorUniAtoE, kEbcdic, kNative, native);
        direction("EBCDIC to native", _zorUniEtoA, kNative, kEbcdic, ebcdic);
    }
}

// ASCII, and text with a character of two bytes.
ZOR_BENCH(utf8AndEbcdic) {
    enterLocale("C.UTF-8");
    const std::string ascii = textOf(80);
    const std::string umlaut = "M\xc3\xbcller" + ascii.substr(7);
    direction("ASCII to EBCDIC", _zorUniAtoE, kEbcdic, "UTF-8", ascii);
    direction("UTF-8 to EBCDIC", _zorUniAtoE, kEbcdic, "UTF-8", umlaut);
}

// A service on items.
double movingItem(Service service, const std::string &source) {
    std::vector<char> target(source.size());
    return each([&] {
        auto length = static_cast<int32_t>(target.size());
        service(source.data(), static_cast<int32_t>(source.size()), target.data(), &length);
        bench::keep(target[0]);
    });
}

ZOR_BENCH(items) {
    enterLocale("C");
    for (const std::size_t length : {80, 32000}) {
        const std::string native = textOf(length);
        const std::string bytes = std::to_string(length) + " bytes";
        bench::row("item to EBCDIC, " + bytes, movingItem(_zorConvToEBCDIC, native), "iconv",
                   throughIconv(kEbcdic, kNative, native));
    }
}

void comparing(const char *name, const std::u16string &left, const std::u16string &right) {
    const zor::IcuCollation &icu = *zor::icuCollation();
    UErrorCode status = U_ZERO_ERROR;
    UCollator *const collator = icu.ucol_open("en_US", &status);
    const auto bytes = [](const std::u16string &text) {
        return static_cast<int32_t>(text.size() * sizeof(char16_t));
    };
    const double ours = each([&] {
        bench::keep(_zorCompareUnicode(left.data(), bytes(left), right.data(), bytes(right)));
    });
    const double peers = each([&] {
        bench::keep(icu.ucol_strcoll(collator, left.data(), static_cast<int32_t>(left.size()),
                                     right.data(), static_cast<int32_t>(right.size())));
    });
    icu.ucol_close(collator);
    bench::row(name, ours, "ucol_strcoll", peers);
}

ZOR_BENCH(nationalCompare) {
    enterLocale("C");
    const std::u16string name = u"Müller-Lüdenscheidt, Bärbel und Söhne, KG";
    std::u16string early = name;
    early[1] = u'u';
    std::u16string late = name;
    late.back() = u'h';
    comparing("national compare, equal", name, std::u16string(name));
    comparing("national compare, early difference", name, early);
    comparing("national compare, late difference", name, late);
}

} // namespace
