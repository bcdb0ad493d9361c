// Statistics and finance, in both binary forms.
#include <algorithm>

#include "numeric_functions/forms_kit.h"
#include "statistics.h"

using namespace forms;

namespace {

// A list without the alignment of its form.
template <class T> struct Room {
    explicit Room(const std::vector<T> &list) : bytes(list.size() * sizeof(T) + 4) {
        memcpy(array(), list.data(), list.size() * sizeof(T));
    }
    T *array() { return reinterpret_cast<T *>(bytes.data() + 4); }
    std::vector<char> bytes;
};

template <class T>
std::vector<T> randomList(std::mt19937 &random, unsigned count, unsigned values) {
    std::vector<T> list(count);
    for (T &value : list) {
        value = static_cast<int32_t>(random() % values) - 20;
    }
    return list;
}

template <class T>
void expectMedians(T (*median)(uint32_t, T *), T *(*medianTo)(uint32_t, T *, T *)) {
    std::mt19937 random(1);
    for (unsigned i = 0; i < 2000; ++i) {
        const unsigned count = i % 40;
        std::vector<T> list = randomList<T>(random, count, 1 + random() % 50), kept(count);
        Room<T> room(list), other(list);
        std::sort(list.begin(), list.end());
        const T wanted =
            count == 0 ? 0 : (list[(count - 1) / 2] + list[count / 2]) * static_cast<T>(0.5);
        T result;
        EXPECT_TRUE(median(count, room.array()) == wanted);
        EXPECT_TRUE(*medianTo(count, &result, other.array()) == wanted && result == wanted);
        memcpy(kept.data(), other.array(), count * sizeof(T));
        std::sort(kept.begin(), kept.end());
        EXPECT_TRUE(kept == list);
    }
    const T nan = static_cast<T>(NAN);
    const auto of = [&](const std::vector<T> &list) {
        return median(static_cast<uint32_t>(list.size()), Room<T>(list).array());
    };
    EXPECT_TRUE(of({nan, 1, 3, nan, 2}) == 3 && isNaN(of({nan, 1, nan})) && isNaN(of({nan, 1})));
    EXPECT_TRUE(of(std::vector<T>(200000, 5)) == 5); // the square of that would never end
}

TEST(Statistics, MedianIsThatOfTheSortedList) {
    expectMedians(_zorcMedianFloat8, _zorcMedian);
    expectMedians(_zorcMedianFloat16, _zorcMedian16);
}

template <class T> using MeanTo = T *(*)(uint32_t, T *, T, const T *);

template <class T> void expectVariances(MeanTo<T> variance, MeanTo<T> deviation) {
    std::mt19937 random(1);
    T result, root;
    for (unsigned count = 0; count < 200; ++count) { // integers have no rounding before the end
        const std::vector<T> list = randomList<T>(random, count, 1000);
        const T mean = 21;
        T sum = 0;
        for (const T value : list) {
            sum += (value - mean) * (value - mean);
        }
        Room<T> room(list);
        EXPECT_TRUE(*variance(count, &result, mean, room.array()) ==
                    (count == 0 ? 0 : sum / count));
        EXPECT_EQ(deviation(count, &root, mean, room.array()), &root);
        EXPECT_TRUE(root == result || isNear(root * root, result));
    }
}

TEST(Statistics, VarianceIsThatOfThePopulation) {
    expectVariances(_zorcVariance, _zorcStandardDeviation);
    expectVariances(_zorcVariance16, _zorcStandardDeviation16);
    alignas(16) ZorBinary128 result, mean = 5, list[] = {2, 4, 4, 4, 5, 5, 7, 9};
    uint32_t words[9] = {8, reinterpret_cast<uintptr_t>(&result)};
    memcpy(words + 4, &mean, sizeof mean);
    words[8] = reinterpret_cast<uintptr_t>(list);
    callAt(4, _zorcStandardDeviation16, words, 9);
    EXPECT_TRUE(result == 2);
}

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
    const std::string rate =
        "ZOR100W  The discount rate of function PRESENT-VALUE must be above -1.";
    EXPECT_SAID(rate, EXPECT_TRUE(presentOf({-1, 5}) == kInfinity));
    EXPECT_SAID(rate, EXPECT_TRUE(presentOf({-3, 8, 8}) == -4 + 2));
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
        const auto message = said([&] { EXPECT_EQ(_Tvq_present_value(rate), wanted); });
        EXPECT_EQ(message.empty(), wanted == 0);
        EXPECT_SAID(message, EXPECT_EQ(_Tvq_present_value_float16(rate), wanted));
        EXPECT_SAID(message, EXPECT_EQ(_Tvq_present_value_decfloat16(ZorDecimal128(rate)), wanted));
    }
}

} // namespace
