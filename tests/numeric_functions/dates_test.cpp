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
    EXPECT_EQ(_Tvq_integer_of_date(20000101), 145732);
    EXPECT_EQ(_Tvq_integer_of_day(2000001), 145732);
    EXPECT_EQ(_Tvq_date_of_integer(145732), 20000101);
    EXPECT_EQ(_Tvq_day_of_integer(366), 1602001);
}

TEST(Dates, WhatIsNoneIsToldAndCountedOn) {
    struct Kind {
        int32_t (*function)(int32_t);
        std::string message;
        std::vector<std::pair<int32_t, int32_t>> cases; // argument and result
    };
    for (const auto &[function, message, cases] : std::vector<Kind>{
             {_zorIntegerOfDate,
              "ZOR160W  The argument of function INTEGER-OF-DATE is not a valid date, or its "
              "century window does not end in the years 1699 to 10000.",
              {{17000229, 36219},
               {16010100, 0},
               {16011301, 366},
               {16019901, 366},
               {16010001, 1},
               {16010132, 32},
               {16001231, 1},
               {100000101, 3067672}}},
             {_zorIntegerOfDay,
              "ZOR161W  The argument of function INTEGER-OF-DAY is not a valid year and day of "
              "the year.",
              {{1601000, 0}, {1601366, 366}, {1600366, 1}, {10000001, 3067672}}},
             {_zorDateOfInteger,
              "ZOR159W  The integer date of function DATE-OF-INTEGER is outside 1 to 3067671.",
              {{0, 16001230}, {-1, 16010099}, {3067672, 100000101}}},
             {_zorDayOfInteger,
              "ZOR159W  The integer date of function DAY-OF-INTEGER is outside 1 to 3067671.",
              {{0, 1600365}, {3067672, 10000001}}}}) {
        for (const auto &[argument, result] : cases) {
            EXPECT_SAID(message, EXPECT_EQ(function(argument), result) << argument);
        }
        for (const int32_t far : {INT32_MIN, -3067671, -366, -365, -60, INT32_MAX}) {
            EXPECT_SAID(message, function(far));
        }
    }
}

TEST(Dates, CurrentDateIsThatOfTheZoneInForce) {
    for (const auto &[zone, offset] : {std::pair{"AAA-5:30", "+0530"},
                                       {"BBB4", "-0400"},
                                       {"CCC1DDD,J1/0,J365/25", "+0000"},
                                       {"UTC0", "+0000"}}) {
        setenv("TZ", zone, 1);
        char text[22] = "", again[22] = "";
        _zorCurrentDate(text);
        _Tvq_current_date(again);
        tm broken{};
        broken.tm_isdst = -1;
        strptime(std::string(text, 14).c_str(), "%Y%m%d%H%M%S", &broken);
        EXPECT_LE(std::fabs(difftime(mktime(&broken), time(nullptr))), 1) << text;
        EXPECT_STREQ(text + 16, offset);
        EXPECT_STREQ(again + 16, offset);
    }
}

TEST(Dates, YearsGetTheCenturyOfTheWindow) {
    char now[21];
    _zorCurrentDate(now);
    const int32_t year = std::stoi(std::string(now, 4));
    const auto widened = [&](auto function, int32_t number, int32_t end) {
        char text[10] = "........."; // what is behind stays
        function(number, end - year, text);
        return std::string(text);
    };
    for (const int32_t end : {1698, 1699, 1700, 1998, 2026, 2099, 9999, 10000, 10001}) {
        for (int32_t yy = 0; yy < 100; ++yy) {
            const int32_t wanted = end - (end - yy) % 100;
            const std::string digits = std::to_string(wanted % 10000 + 10000).substr(1);
            std::string texts[3];
            const auto all = said([&] {
                texts[0] = widened(_zorYearToYYYY, yy, end);
                texts[1] = widened(_zorDayToYYYYDDD, yy * 1000 + 1, end);
                texts[2] = widened(_zorDateToYYYYMMDD, yy * 10000 + 203, end);
            });
            EXPECT_EQ(texts[0] + texts[1] + texts[2],
                      digits + "....." + digits + "001.." + digits + "0203.");
            for (const char *name : {"YEAR-TO-YYYY", "DAY-TO-YYYYDDD", "DATE-TO-YYYYMMDD"}) {
                EXPECT_EQ(all.find(name) != all.npos, end < 1699 || end > 10000) << name;
            }
        }
    }
    for (const int32_t far : {-50, 0, INT32_MAX - 1}) {
        EXPECT_NE(said([&] { widened(_zorDayToYYYYDDD, -1, far); }), "");
        EXPECT_NE(said([&] { widened(_zorYearToYYYY, INT32_MIN, far); }), "");
    }
}

} // namespace
