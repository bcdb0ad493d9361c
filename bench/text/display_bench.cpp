// DISPLAY beside fprintf of the same text, each to a file of its own.
#include <cstdint>
#include <cstdio>

#include "display.h"
#include "proccom.h"
#include "support/bench.h"

namespace {

// The files are written over from the beginning now and then, so that they stay small.
constexpr unsigned kLinesPerFile = 1U << 14;

template <class Line> double lines(FILE *file, Line line) {
    return bench::nanoseconds([=](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            if (i % kLinesPerFile == 0) {
                rewind(file);
            }
            line(i);
        }
    });
}

double displaying(const DisplayItem *statement, int32_t count) {
    FILE *file = tmpfile();
    _zorProccom->sysout = file;
    const DisplayControl control = {count, DISPLAY_ON_SYSOUT, 0, '.', 0};
    const double taken = lines(file, [=](unsigned) {
        // Generated code sets the widths ahead of each statement.
        DisplayItem items[3];
        for (int32_t i = 0; i < count; ++i) {
            items[i] = statement[i];
        }
        _zorcDisplay(&control, items);
    });
    _zorProccom->sysout = nullptr;
    fclose(file);
    return taken;
}

template <class... Values> double printing(const char *format, Values... values) {
    FILE *file = tmpfile();
    const double taken = lines(file, [=](unsigned) { fprintf(file, format, values...); });
    fclose(file);
    return taken;
}

ZOR_BENCH(displayToAFile) {
    static const int32_t number = 12345678;
    static const int64_t wide = 123456789012345678;
    static const double real = 3.14159265358979;
    const DisplayItem texts[] = {{"Customer ", 9, 0, DISPLAY_TEXT},
                                 {"Smith and Sons", 14, 0, DISPLAY_TEXT},
                                 {" is in arrears", 14, 0, DISPLAY_TEXT}};
    bench::row("three texts", displaying(texts, 3), "fprintf %s%s%s",
               printing("%s%s%s\n", "Customer ", "Smith and Sons", " is in arrears"));
    const DisplayItem mixed[] = {{"Customer ", 9, 0, DISPLAY_TEXT},
                                 {&number, 4, 9, DISPLAY_SIGNED_BINARY},
                                 {" is in arrears", 14, 0, DISPLAY_TEXT}};
    bench::row("text, 9 digits, text", displaying(mixed, 3), "fprintf %s%09d%s",
               printing("%s%09d%s\n", "Customer ", number, " is in arrears"));
    const DisplayItem wideItems[] = {{"Customer ", 9, 0, DISPLAY_TEXT},
                                     {&wide, 8, 18, DISPLAY_SIGNED_BINARY},
                                     {" is in arrears", 14, 0, DISPLAY_TEXT}};
    bench::row("text, 18 digits, text", displaying(wideItems, 3), "fprintf %s%018lld%s",
               printing("%s%018lld%s\n", "Customer ", wide, " is in arrears"));
    const DisplayItem reals[] = {{"Customer ", 9, 0, DISPLAY_TEXT},
                                 {&real, 8, 16, DISPLAY_FLOATING},
                                 {" is in arrears", 14, 0, DISPLAY_TEXT}};
    bench::row("text, double, text", displaying(reals, 3), "fprintf %s% .15E%s",
               printing("%s% .15E%s\n", "Customer ", real, " is in arrears"));
}

} // namespace
