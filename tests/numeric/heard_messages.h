// A program whose messages its host hears, in one line: "152 E 2 NUMVAL;" is message 152 with its
// arguments.
#ifndef ZOR_TESTS_NUMERIC_HEARD_MESSAGES_H
#define ZOR_TESTS_NUMERIC_HEARD_MESSAGES_H

#include <cstring>
#include <string>

#include "support/kit.h"

namespace heard {

inline kit::Environment environment() {
    static const kit::TemporaryDirectory directory;
    std::string source = "$set 152\n1 \"1 %c %d %s\"\n$set 155\n1 \"1 %c %d %s\"\n"
                         "$set 97\n1 \"1 %s\"\n$set 151\n1 \"1 %s\"\n";
    for (const int number : {48, 49, 50, 51, 53, 54, 55, 58, 59, 60, 61}) {
        source += "$set " + std::to_string(number) + "\n1 \"1 _\"\n";
    }
    // The library's own catalogue comes first, but not under this locale's name.
    kit::buildCatalog(directory, "C.UTF-8", source);
    return {{"NLSPATH", directory.path() + "/%L/%N"},
            {"LC_ALL", "C.UTF-8"},
            {"COBRTOPT", "ERRCOUNT=0"}};
}

inline std::string text;

inline void hear(int32_t, const char *, const char *message, int32_t, void *) {
    constexpr int kText = 9;
    const std::string inserts(message + kText, strcspn(message + kText, "\n"));
    text += std::to_string(atoi(message + 3)) + (inserts == "_" ? "" : " " + inserts) + ";";
}

inline std::string take() {
    return std::exchange(text, {});
}

#define LISTENING_TEST(suite, name)                                                                \
    static void suite##name##Listening();                                                          \
    PROGRAM_TEST(suite, name, .environment = heard::environment()) {                               \
        _zorProccom->runcom->msg = heard::hear;                                                    \
        suite##name##Listening();                                                                  \
    }                                                                                              \
    static void suite##name##Listening()

} // namespace heard

#endif
