// The machines that scan the texts of NUMVAL and NUMVAL-C: what may follow what.
#ifndef ZOR_NUMERIC_NUMVAL_MACHINES_H
#define ZOR_NUMERIC_NUMVAL_MACHINES_H

#include <array>
#include <cstdint>

namespace zor::numval {

// The character of the decimal point is a point before a machine's classes are asked.
enum class Class : uint8_t { blank, sign, digit, point, c, d, r, b, comma, other };
inline constexpr int32_t kClasses = 10;

// What is done with a character; refuse: it may not stand here.
enum class Action : uint8_t { refuse, pass, store, digit, point, minus, currency };

struct Cell {
    Action action = Action::refuse;
    uint8_t next = 0;
};

struct Machine {
    const char *function; // its name in COBOL
    std::array<Class, 256> classes;
    const Cell (*states)[kClasses];
};

constexpr std::array<Class, 256> classesWithout(Class comma) {
    std::array<Class, 256> classes{};
    classes.fill(Class::other);
    for (int32_t c = '0'; c <= '9'; ++c) {
        classes[c] = Class::digit;
    }
    classes[' '] = Class::blank;
    classes['+'] = classes['-'] = Class::sign;
    classes['C'] = Class::c;
    classes['D'] = Class::d;
    classes['R'] = Class::r;
    classes['B'] = Class::b;
    classes[','] = classes['.'] = comma;
    return classes;
}

constexpr Cell to(uint8_t next) {
    return {Action::pass, next};
}
constexpr Cell store(uint8_t next) {
    return {Action::store, next};
}
constexpr Cell digit(uint8_t next) {
    return {Action::digit, next};
}
constexpr Cell point(uint8_t next) {
    return {Action::point, next};
}
constexpr Cell minus(uint8_t next) {
    return {Action::minus, next};
}
inline constexpr Cell kNo{};
// The next state is the one named when the currency is found.
constexpr Cell money(uint8_t next) {
    return {Action::currency, next};
}
// Behind a currency that is not the right one: from where no digit can come any more.
constexpr uint8_t afterBadCurrency(uint8_t found) {
    return static_cast<uint8_t>(found - 2);
}

// clang-format off
inline constexpr Cell kNumvalStates[][kClasses] = {
    //                         blank   sign       digit     point      C       D       R          B          comma  other
    /*  0 start             */ {to(0),  store(1),  digit(2), point(5),  kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
    /*  1 leading sign      */ {to(1),  kNo,       digit(3), point(6),  kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
    /*  2 integer digits    */ {to(4),  store(11), digit(2), point(5),  to(12), to(13), kNo,       kNo,       kNo,   kNo},
    /*  3   with a sign     */ {to(14), kNo,       digit(3), point(6),  kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
    /*  4 blanks behind     */ {to(4),  store(11), kNo,      kNo,       to(12), to(13), kNo,       kNo,       kNo,   kNo},
    /*  5 point             */ {to(7),  store(11), digit(8), kNo,       to(12), to(13), kNo,       kNo,       kNo,   kNo},
    /*  6   with a sign     */ {to(14), kNo,       digit(9), kNo,       kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
    /*  7 blanks behind     */ {to(7),  store(11), kNo,      kNo,       to(12), to(13), kNo,       kNo,       kNo,   kNo},
    /*  8 fraction digits   */ {to(10), store(11), digit(8), kNo,       to(12), to(13), kNo,       kNo,       kNo,   kNo},
    /*  9   with a sign     */ {to(14), kNo,       digit(9), kNo,       kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
    /* 10 blanks behind     */ {to(10), store(11), kNo,      kNo,       to(12), to(13), kNo,       kNo,       kNo,   kNo},
    /* 11 trailing sign     */ {to(14), kNo,       kNo,      kNo,       kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
    /* 12 "C"               */ {kNo,    kNo,       kNo,      kNo,       kNo,    kNo,    minus(14), kNo,       kNo,   kNo},
    /* 13 "D"               */ {kNo,    kNo,       kNo,      kNo,       kNo,    kNo,    kNo,       minus(14), kNo,   kNo},
    /* 14 end               */ {to(14), kNo,       kNo,      kNo,       kNo,    kNo,    kNo,       kNo,       kNo,   kNo},
};

inline constexpr Cell kNumvalCStates[][kClasses] = {
    //                         blank   sign       digit      point      C         D         R          B          comma  other
    /*  0 start             */ {to(0),  store(1),  digit(6),  point(11), money(4), money(4), money(4),  money(4),  kNo,   money(4)},
    /*  1 leading sign      */ {to(1),  kNo,       digit(7),  point(12), money(5), money(5), money(5),  money(5),  kNo,   money(5)},
    /*  2 bad currency      */ {to(2),  kNo,       kNo,       kNo,       to(2),    to(2),    to(2),     to(2),     kNo,   to(2)},
    /*  3   with a sign     */ {to(3),  kNo,       kNo,       kNo,       to(3),    to(3),    to(3),     to(3),     kNo,   to(3)},
    /*  4 currency          */ {to(4),  store(17), digit(6),  point(11), to(18),   to(19),   kNo,       kNo,       kNo,   kNo},
    /*  5   with a sign     */ {to(5),  kNo,       digit(7),  point(12), kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
    /*  6 integer digits    */ {to(10), store(17), digit(6),  point(11), to(18),   to(19),   kNo,       kNo,       to(8), kNo},
    /*  7   with a sign     */ {to(20), kNo,       digit(7),  point(12), kNo,      kNo,      kNo,       kNo,       to(9), kNo},
    /*  8 comma             */ {kNo,    kNo,       digit(6),  kNo,       kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
    /*  9   with a sign     */ {kNo,    kNo,       digit(7),  kNo,       kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
    /* 10 blanks behind     */ {to(10), store(17), kNo,       kNo,       to(18),   to(19),   kNo,       kNo,       kNo,   kNo},
    /* 11 point             */ {to(13), store(17), digit(14), kNo,       to(18),   to(19),   kNo,       kNo,       kNo,   kNo},
    /* 12   with a sign     */ {to(20), kNo,       digit(15), kNo,       kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
    /* 13 blanks behind     */ {to(13), store(17), kNo,       kNo,       to(18),   to(19),   kNo,       kNo,       kNo,   kNo},
    /* 14 fraction digits   */ {to(16), store(17), digit(14), kNo,       to(18),   to(19),   kNo,       kNo,       kNo,   kNo},
    /* 15   with a sign     */ {to(20), kNo,       digit(15), kNo,       kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
    /* 16 blanks behind     */ {to(16), store(17), kNo,       kNo,       to(18),   to(19),   kNo,       kNo,       kNo,   kNo},
    /* 17 trailing sign     */ {to(20), kNo,       kNo,       kNo,       kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
    /* 18 "C"               */ {kNo,    kNo,       kNo,       kNo,       kNo,      kNo,      minus(20), kNo,       kNo,   kNo},
    /* 19 "D"               */ {kNo,    kNo,       kNo,       kNo,       kNo,      kNo,      kNo,       minus(20), kNo,   kNo},
    /* 20 end               */ {to(20), kNo,       kNo,       kNo,       kNo,      kNo,      kNo,       kNo,       kNo,   kNo},
};
// clang-format on

inline constexpr Machine kNumval{"NUMVAL", classesWithout(Class::other), kNumvalStates};
inline constexpr Machine kNumvalC{"NUMVAL-C", classesWithout(Class::comma), kNumvalCStates};

} // namespace zor::numval

#endif
