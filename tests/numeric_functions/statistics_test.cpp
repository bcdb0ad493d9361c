// Statistics and finance, in both binary forms.
#include <algorithm>

#include "numeric_functions/forms_kit.h"
#include "statistics.h"

using namespace forms;

namespace {

// A list without the alignment of its form.
template <class T> struct Room {
    explicit Room(const std::vector<T> &list) : bytes(4) {
        const auto *from = reinterpret_cast<const char *>(list.data());
        bytes.insert(bytes.end(), from, from + list.size() * sizeof(T));
    }
    T *array() { return reinterpret_cast<T *>(bytes.data() + 4); }
    std::vector<char> bytes;
};

template <class T>
void expectMedians(T (*median)(uint32_t, T *), T *(*medianTo)(uint32_t, T *, T *)) {
    std::mt19937 random(1);
    T result;
    for (unsigned i = 0; i < 2000; ++i) {
        std::vector<T> list(1 + i % 40);
        for (T &value : list) {
            value = static_cast<int32_t>(random() % (1 + i / 40)) - 20;
        }
        Room<T> room(list);
        const auto count = static_cast<uint32_t>(list.size());
        EXPECT_EQ(medianTo(count, &result, room.array()), &result);
        std::sort(list.begin(), list.end());
        EXPECT_TRUE(result == (list[(count - 1) / 2] + list[count / 2]) / 2) << i;
        EXPECT_TRUE(median(count, room.array()) == result) << i; // nothing was lost
    }
    T mixed[] = {static_cast<T>(NAN), 1, 3, static_cast<T>(NAN), 2};
    EXPECT_TRUE(median(5, mixed) == 3 && isNaN(median(2, mixed + 3)) && median(0, mixed) == 0);
    EXPECT_TRUE(median(200000, std::vector<T>(200000, 5).data()) == 5); // its square: for ever
}

TEST(Statistics, MedianIsThatOfTheSortedList) {
    expectMedians(_zorcMedianFloat8, _zorcMedian);
    expectMedians(_zorcMedianFloat16, _zorcMedian16);
}

template <class T> using MeanTo = T *(*)(uint32_t, T *, T, const T *);

template <class T> void expectVariances(MeanTo<T> variance, MeanTo<T> deviation) {
    std::vector<T> list;
    T sum = 0, result, root;
    for (uint32_t count = 1; count < 200; ++count) { // integers have no rounding before the end
        list.push_back(count * count % 1000);
        sum += (list.back() - 21) * (list.back() - 21);
        Room<T> room(list);
        EXPECT_EQ(variance(count, &result, 21, room.array()), &result);
        EXPECT_TRUE(result == sum / count);
        EXPECT_EQ(deviation(count, &root, 21, room.array()), &root);
        EXPECT_TRUE(isNear(root * root, result));
    }
    EXPECT_TRUE(*variance(0, &result, 5, nullptr) == 0 && *deviation(0, &root, 5, nullptr) == 0);
}

TEST(Statistics, VarianceIsThatOfThePopulation) {
    expectVariances(_zorcVariance, _zorcStandardDeviation);
    expectVariances(_zorcVariance16, _zorcStandardDeviation16);
}

const std::string kRate = "ZOR100W  The discount rate of function PRESENT-VALUE must be above -1.";

template <class T> void expectFinance(T *(*present)(uint32_t, T *, const T *), T (*annuity)(T, T)) {
    T result;
    const auto presentOf = [&](const std::vector<T> &list) {
        return *present(static_cast<uint32_t>(list.size()), &result, Room<T>(list).array());
    };
    std::vector<T> shrinking(20000, 1); // the discount becomes zero
    shrinking[0] = -0.5;
    EXPECT_SAID("", EXPECT_TRUE(presentOf(shrinking) == kInfinity));
    EXPECT_TRUE(presentOf({}) == 0 && presentOf({3}) == 0);
    EXPECT_TRUE(presentOf({0.25, 125, 125, 125}) == 100 + 80 + 64);
    EXPECT_TRUE(isNear(presentOf({parse<T>("0.1"), 110, 121}), T(200)));
    EXPECT_SAID(kRate, EXPECT_TRUE(presentOf({-1, 5}) == kInfinity));
    EXPECT_SAID(kRate, EXPECT_TRUE(presentOf({-3, 8, 8}) == -4 + 2));
    EXPECT_SAID("", EXPECT_TRUE(annuity(0, 4) == 0.25 && isNear(annuity(0.125, 1), T(1.125))));
    EXPECT_TRUE(isNear(annuity(2, 0.5), parse<T>("4.732050807568877293527446341505872366943")));
    EXPECT_SAID(argument("163", "ANNUITY is negative"), EXPECT_TRUE(annuity(-0.5, 1) == 0.5));
    EXPECT_SAID(argument("177", "ANNUITY is -2, which is not allowed"),
                EXPECT_TRUE(annuity(0, -2.5) == -1 / static_cast<T>(2.5)));
    EXPECT_SAID(argument("177", "ANNUITY is 0, which is not allowed"),
                EXPECT_TRUE(annuity(1, 0) == kInfinity));
}

TEST(Finance, FollowsTheFormulas) {
    expectFinance(_zorcPresentValue, _zorcAnnuityFloat8);
    expectFinance(_zorcPresentValue, _Tvq_annuity);
    expectFinance(_zorcPresentValue16, _zorcAnnuityFloat16);
    for (const int32_t rate : {-2, -1, 0}) {
        const int32_t wanted = rate > -1 ? 0 : -1;
        const std::string all = said([&] {
            EXPECT_EQ(_Tvq_present_value(rate), wanted);
            EXPECT_EQ(_Tvq_present_value_float16(rate), wanted);
            EXPECT_EQ(_Tvq_present_value_decfloat16(ZorDecimal128(rate)), wanted);
        });
        EXPECT_EQ(all, wanted == 0 ? "" : kRate + kRate + kRate);
    }
}

} // namespace
