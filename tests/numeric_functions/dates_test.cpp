// Every day of the calendar, what is no day, and windows of years.
#include <ctime>

#include "date_functions.h"
#include "numeric_functions/forms_kit.h"

using namespace forms;

namespace {

void countEveryDay() {
    constexpr int kLengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    int32_t integer = 0;
    for (int32_t year = 1601; year <= 9999; ++year) {
        const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
        int32_t ordinal = year * 1000;
        for (int32_t month = 1; month <= 12; ++month) {
            const int32_t length = kLengths[month - 1] + (leap && month == 2 ? 1 : 0);
            for (int32_t date = year * 10000 + month * 100 + 1; date % 100 <= length; ++date) {
                ++ordinal, ++integer;
                ASSERT_EQ(_zorIntegerOfDate(date), integer);
                ASSERT_EQ(_zorDateOfInteger(integer), date);
                ASSERT_EQ(_zorIntegerOfDay(ordinal), integer);
                ASSERT_EQ(_zorDayOfInteger(integer), ordinal);
            }
        }
    }
    EXPECT_EQ(integer, 3067671);
}

TEST(Dates, EveryDayGoesBothWays) {
    EXPECT_SAID("", countEveryDay());
    EXPECT_EQ(_Tvq_integer_of_date(20000101), _Tvq_integer_of_day(2000001));
    EXPECT_EQ(_Tvq_date_of_integer(365), 16011231);
    EXPECT_EQ(_Tvq_day_of_integer(366), 1602001);
}

void expectWrong(int32_t (*function)(int32_t), const std::string &message,
                 const std::vector<std::pair<int32_t, int32_t>> &cases) {
    for (const auto &[argument, result] : cases) {
        EXPECT_SAID(message, EXPECT_EQ(function(argument), result) << argument);
    }
    for (const int32_t far : {INT32_MIN, -3067671, -366, -365, -60, INT32_MAX}) {
        EXPECT_SAID(message, function(far));
    }
}

TEST(Dates, WhatIsNoneIsToldAndCountedOn) {
    expectWrong(_zorIntegerOfDate,
                "ZOR160W  The argument of function INTEGER-OF-DATE is not a valid date, or its "
                "century window does not end in the years 1699 to 10000.",
                {{17000229, 36219}, {16010100, 0}, {16011301, 366}, {16019901, 366}});
    expectWrong(_zorIntegerOfDate, said([] { _zorIntegerOfDate(0); }),
                {{16010001, 1}, {16010132, 32}, {16001231, 1}, {100000101, 3067672}});
    expectWrong(_zorIntegerOfDay,
                "ZOR161W  The argument of function INTEGER-OF-DAY is not a valid year and day of "
                "the year.",
                {{1601000, 0}, {1601366, 366}, {1600366, 1}, {10000001, 3067672}});
    expectWrong(_zorDateOfInteger,
                "ZOR159W  The integer date of function DATE-OF-INTEGER is outside 1 to 3067671.",
                {{0, 16001230}, {-1, 16010099}, {3067672, 100000101}});
    expectWrong(_zorDayOfInteger,
                "ZOR159W  The integer date of function DAY-OF-INTEGER is outside 1 to 3067671.",
                {{0, 1600365}, {3067672, 10000001}});
}

TEST(Dates, CurrentDateIsThatOfTheZoneInForce) {
    for (const std::string offset : {"+0530AAA-5:30", "-0400BBB4", "+0000CCC1DDD,J1/0,J365/25"}) {
        setenv("TZ", offset.c_str() + 5, 1);
        char text[2][22] = {"", ""};
        _zorCurrentDate(text[0]), _Tvq_current_date(text[1]);
        tm broken{};
        broken.tm_isdst = -1;
        strptime(std::string(text[0], 14).c_str(), "%Y%m%d%H%M%S", &broken);
        EXPECT_LE(std::fabs(difftime(mktime(&broken), time(nullptr))), 1) << text[0];
        EXPECT_EQ(std::string(text[0] + 16) + (text[1] + 16),
                  offset.substr(0, 5) + offset.substr(0, 5));
    }
}

TEST(Dates, YearsGetTheCenturyOfTheWindow) {
    char now[21];
    _zorCurrentDate(now);
    const int32_t year = std::stoi(std::string(now, 4));
    const auto widened = [&](int32_t yy, int32_t end) {
        char text[3][10] = {"........", "........", "........"}; // what is behind stays
        _zorYearToYYYY(yy, end - year, text[0]);
        _zorDayToYYYYDDD(yy * 1000 + 1, end - year, text[1]);
        _zorDateToYYYYMMDD(yy * 10000 + 203, end - year, text[2]);
        return std::string(text[0]) + text[1] + text[2];
    };
    for (const int32_t end : {1698, 1699, 1700, 1998, 2026, 2099, 9999, 10000, 10001}) {
        for (int32_t yy = 0; yy < 100; ++yy) {
            const int32_t wanted = end - (end - yy) % 100;
            const std::string digits = std::to_string(wanted % 10000 + 10000).substr(1);
            const std::string all = said([&] {
                EXPECT_EQ(widened(yy, end), digits + "...." + digits + "001." + digits + "0203");
            });
            for (const char *name : {"YEAR-TO-YYYY", "DAY-TO-YYYYDDD", "DATE-TO-YYYYMMDD"}) {
                EXPECT_EQ(all.find(name) != all.npos, end < 1699 || end > 10000) << name;
            }
        }
    }
    EXPECT_NE(said([&] { EXPECT_EQ(widened(-7, INT32_MAX - 1).size(), 24U); }), "");
}

} // namespace
