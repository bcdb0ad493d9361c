// Editing moves beside what a C programmer would write for the same text.
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "edit.h"
#include "support/bench.h"

namespace {

std::string word(std::size_t value) {
    return {static_cast<char>(value & 0xFF), static_cast<char>(value >> 8 & 0xFF)};
}

std::string numericDescriptor(const std::string &picture, int code) {
    return word(picture.size()) + ".$" + static_cast<char>(code) + picture;
}

// A locale with thousands separators, built for the occasion; false without localedef.
bool useGroupingLocale() {
    std::string path = std::filesystem::temp_directory_path() / "bench.XXXXXX";
    if (mkdtemp(path.data()) == nullptr) {
        return false;
    }
    const std::string build = "localedef -i en_US -f UTF-8 " + path + "/en_US.UTF-8 2>/dev/null";
    setenv("LOCPATH", path.c_str(), 1);
    const bool usable =
        system(build.c_str()) == 0 && setlocale(LC_NUMERIC, "en_US.UTF-8") != nullptr;
    return system(("rm -r " + path).c_str()) == 0 && usable;
}

double editing(const std::string &picture, int code, const char *digits) {
    const std::string descriptor = numericDescriptor(picture, code);
    const auto *block = reinterpret_cast<const NumericEditDescriptor *>(descriptor.data());
    return bench::nanoseconds([=](unsigned times) {
        char receiver[32];
        for (unsigned i = 0; i < times; ++i) {
            _zorcMoveNumToNumEdit(block, digits, receiver);
            bench::keep(receiver);
        }
    });
}

template <class... Values> double printing(const char *format, Values... values) {
    return bench::nanoseconds([=](unsigned times) {
        char receiver[32];
        for (unsigned i = 0; i < times; ++i) {
            snprintf(receiver, sizeof receiver, format, values...);
            bench::keep(receiver);
        }
    });
}

ZOR_BENCH(editNumbers) {
    const double byHand = printing("%d,%03d,%03d.%02d", 1, 234, 567, 89);
    bench::row("Z,ZZZ,ZZ9.99", editing("Z,ZZZ,ZZ9.99", 0, "+123456789"),
               "snprintf %d,%03d,%03d.%02d", byHand);
    const double floating = editing("$$,$$$,$$9.99-", 11, "-012345678");
    bench::row("$$,$$$,$$9.99-", floating, "snprintf %s$%d,%03d.%02d%c",
               printing("%s$%d,%03d.%02d%c", "   ", 123, 456, 78, '-'));
    const double asterisks = editing("***,***,**9.99", 0, "+00001234567");
    bench::row("***,***,**9.99", asterisks, "snprintf %s%d,%03d.%02d",
               printing("%s%d,%03d.%02d", "******", 12, 345, 67));
    bench::row("ZZZZZZZZ9.99 no separators", editing("ZZZZZZZZ9.99", 0, "+00123456789"),
               "snprintf %12.2f", printing("%12.2f", 1234567.89));
    if (useGroupingLocale()) {
        bench::row("Z,ZZZ,ZZ9.99", editing("Z,ZZZ,ZZ9.99", 0, "+123456789"), "snprintf %'12.2f",
                   printing("%'12.2f", 1234567.89));
        setlocale(LC_NUMERIC, "C");
    }
}

ZOR_BENCH(deEditNumbers) {
    const std::string picture = "Z,ZZZ,ZZ9.99-";
    const std::string descriptor = word(picture.size()) + picture;
    const double ours = bench::nanoseconds([&](unsigned times) {
        char result[32];
        for (unsigned i = 0; i < times; ++i) {
            _zorcMoveNumEditToNum(reinterpret_cast<const DeEditDescriptor *>(descriptor.data()),
                                  "1,234,567.89-", result);
            bench::keep(result);
        }
    });
    const double peers = bench::nanoseconds([&](unsigned times) {
        int parts[4];
        char sign;
        for (unsigned i = 0; i < times; ++i) {
            sscanf("1,234,567.89-", "%d,%d,%d.%d%c", &parts[0], &parts[1], &parts[2], &parts[3],
                   &sign);
            bench::keep(parts);
        }
    });
    bench::row("de-edit Z,ZZZ,ZZ9.99-", ours, "sscanf %d,%d,%d.%d%c", peers);
}

ZOR_BENCH(moveCharacters) {
    static char receiver[4096];
    static char sender[4096];
    memset(sender, 'x', sizeof sender);
    const std::string picture = "XXXX/XX/XX XX";
    const std::string descriptor = word(picture.size()) + '\0' + picture;
    bench::row("alphanumeric XXXX/XX/XX XX", bench::nanoseconds([&](unsigned times) {
                   for (unsigned i = 0; i < times; ++i) {
                       _zorcMoveAlphaNumEdit(
                           reinterpret_cast<const AlphanumericEditDescriptor *>(descriptor.data()),
                           "2026112410", 10, receiver);
                       bench::keep(receiver);
                   }
               }),
               "snprintf %.4s/%.2s/%.2s %.2s",
               printing("%.4s/%.2s/%.2s %.2s", "2026112410", "112410", "2410", "10"));
    bench::row("fill 4096 bytes with 3", bench::nanoseconds([&](unsigned times) {
                   for (unsigned i = 0; i < times; ++i) {
                       _zorcMoveFigConst(receiver, sizeof receiver, "ABC", 3);
                       bench::keep(receiver);
                   }
               }),
               "byte loop", bench::nanoseconds([&](unsigned times) {
                   for (unsigned i = 0; i < times; ++i) {
                       for (unsigned at = 0, from = 0; at < sizeof receiver; ++at) {
                           receiver[at] = "ABC"[from];
                           from = from == 2 ? 0 : from + 1;
                       }
                       bench::keep(receiver);
                   }
               }));
    bench::row("move 100 to 200 bytes", bench::nanoseconds([&](unsigned times) {
                   for (unsigned i = 0; i < times; ++i) {
                       _zorcMoveVarLenOverlap(receiver, 200, sender, 100);
                       bench::keep(receiver);
                   }
               }),
               "memmove and memset", bench::nanoseconds([&](unsigned times) {
                   for (unsigned i = 0; i < times; ++i) {
                       memmove(receiver, sender, 100);
                       memset(receiver + 100, ' ', 100);
                       bench::keep(receiver);
                   }
               }));
}

} // namespace
