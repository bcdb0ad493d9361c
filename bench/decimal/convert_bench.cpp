// Conversions of items of several widths, beside what C programs do for the same: print and parse.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "decimal_convert.h"
#include "support/bench.h"

namespace {

constexpr unsigned kItems = 64; // a power of two

struct Data {
    std::vector<int64_t> integers;
    std::vector<double> doubles; // with two fraction digits
    std::vector<std::array<uint8_t, 16>> items;
    std::vector<std::string> texts;
    std::vector<std::string> fractions;
};

using Packed = std::array<uint8_t, 16>;

Packed packed(const std::string &digits, bool negative, int32_t itemDigits) {
    Packed item{};
    for (std::size_t i = 0; i < digits.size(); ++i) { // from the units
        const auto digit = static_cast<unsigned>(digits[digits.size() - 1 - i] - '0');
        uint8_t &byte = item[static_cast<std::size_t>(itemDigits) / 2 - (i + 1) / 2];
        byte = static_cast<uint8_t>(byte | (i % 2 == 0 ? digit << 4 : digit));
    }
    item[static_cast<std::size_t>(itemDigits) / 2] |= negative ? 0x0D : 0x0C;
    return item;
}

// Numbers of exactly the given digits.
Data makeData(int digits, int32_t itemDigits) {
    Data data;
    uint64_t seed = 12345;
    for (unsigned i = 0; i < kItems; ++i) {
        std::string text(1, static_cast<char>('1' + i % 9));
        for (int d = 1; d < digits; ++d) {
            seed = seed * 6364136223846793005U + 1442695040888963407U;
            text += static_cast<char>('0' + (seed >> 33) % 10);
        }
        const bool negative = i % 2 != 0;
        data.items.push_back(packed(text, negative, itemDigits));
        data.texts.push_back((negative ? "-" : "") + text);
        data.integers.push_back(strtoll(data.texts.back().c_str(), nullptr, 10));
        data.fractions.push_back(data.texts.back().substr(0, data.texts.back().size() - 2) + "." +
                                 data.texts.back().substr(data.texts.back().size() - 2));
        data.doubles.push_back(std::strtod(data.fractions.back().c_str(), nullptr));
    }
    return data;
}

template <class Call> double each(Call call) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            call(i % kItems);
        }
    });
}

constexpr int32_t kUsualDigits = 18; // the longest items that fit a 64-bit integer

void integerRows(int digits, int32_t itemDigits) {
    const Data data = makeData(digits, itemDigits);
    const std::string width =
        std::to_string(digits) + " digits" +
        (itemDigits > kUsualDigits ? " in " + std::to_string(itemDigits) : "");
    std::array<uint8_t, 16> target{};
    std::array<char, 32> text{};
    bench::row(
        "int64 to packed, " + width, each([&](unsigned i) {
            bench::keep(_zorcBCD_CONV_Int8_To_Pckd(data.integers[i], target.data(), itemDigits));
        }),
        "snprintf %lld", each([&](unsigned i) {
            snprintf(text.data(), text.size(), "%lld", static_cast<long long>(data.integers[i]));
            bench::keep(text[0]);
        }));
    bench::row("packed to int64, " + width, each([&](unsigned i) {
                   bench::keep(_zorcBCD_CONV_Pckd_To_Int8(data.items[i].data(), itemDigits));
               }),
               "strtoll",
               each([&](unsigned i) { bench::keep(strtoll(data.texts[i].c_str(), nullptr, 10)); }));
}

void doubleRows(int digits, int32_t itemDigits) {
    const Data data = makeData(digits, itemDigits);
    const std::string width = std::to_string(digits) + " digits";
    std::array<uint8_t, 16> target{};
    std::array<char, 32> text{};
    const double print = each([&](unsigned i) {
        snprintf(text.data(), text.size(), "%.2f", data.doubles[i]);
        bench::keep(text[0]);
    });
    bench::row("double to packed, " + width, each([&](unsigned i) {
                   bench::keep(
                       _zorcBCD_CONV_LFlt_To_Pckd(data.doubles[i], target.data(), itemDigits, 2));
               }),
               "snprintf %.2f", print);
    bench::row("double to packed rounded, " + width, each([&](unsigned i) {
                   bench::keep(_zorcBCD_CONV_LFlt_To_PckdRnd(data.doubles[i], target.data(),
                                                             itemDigits, 2));
               }),
               "snprintf %.2f", print);
    bench::row("packed to double, " + width, each([&](unsigned i) {
                   bench::keep(_zorcBCD_CONV_Pckd_To_LFlt(data.items[i].data(), itemDigits, 2));
               }),
               "strtod", each([&](unsigned i) {
                   bench::keep(std::strtod(data.fractions[i].c_str(), nullptr));
               }));
}

void wideRows(int digits, int32_t itemDigits) {
    const Data data = makeData(digits, itemDigits);
    const std::string width = std::to_string(digits) + " digits";
    std::array<uint8_t, 16> target{};
    std::array<char, 64> text{};
    std::vector<__float128> quads;
    std::vector<ZorDecimal128> decimals;
    for (const auto &item : data.items) {
        quads.push_back(_zorcBCD_CONV_Pckd_To_EFlt(item.data(), itemDigits, 2));
        decimals.push_back(_zorcBCD_CONV_Pckd_To_DFlt128(item.data(), itemDigits, 2));
    }
    const double print = each([&](unsigned i) {
        strfromf128(text.data(), text.size(), "%.2f", quads[i]);
        bench::keep(text[0]);
    });
    const double parse =
        each([&](unsigned i) { bench::keep(strtof128(data.fractions[i].c_str(), nullptr)); });
    bench::row("binary128 to packed, " + width, each([&](unsigned i) {
                   bench::keep(_zorcBCD_CONV_EFlt_To_Pckd(quads[i], target.data(), itemDigits, 2));
               }),
               "strfromf128", print);
    bench::row("packed to binary128, " + width, each([&](unsigned i) {
                   bench::keep(_zorcBCD_CONV_Pckd_To_EFlt(data.items[i].data(), itemDigits, 2));
               }),
               "strtof128", parse);
    bench::row("decimal128 to packed, " + width, each([&](unsigned i) {
                   bench::keep(
                       _zorcBCD_CONV_DFlt_To_Pckd(decimals[i], target.data(), itemDigits, 2));
               }),
               "strfromf128", print);
    bench::row("packed to decimal128, " + width, each([&](unsigned i) {
                   bench::keep(_zorcBCD_CONV_Pckd_To_DFlt128(data.items[i].data(), itemDigits, 2));
               }),
               "strtof128", parse);
}

} // namespace

ZOR_BENCH(decimalIntegers) {
    integerRows(5, 9);
    integerRows(9, 18);
    integerRows(18, 18);
    integerRows(18, 31);
}

ZOR_BENCH(decimalDoubles) {
    doubleRows(5, 9);
    doubleRows(9, 18);
    doubleRows(15, 18);
    doubleRows(18, 18);
}

ZOR_BENCH(decimalWideForms) {
    wideRows(9, 18);
    wideRows(18, 31);
    wideRows(31, 31);
}
