// Statistics beside a plain loop and std::nth_element.
#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "statistics.h"
#include "support/bench.h"

namespace {

constexpr unsigned kCount = 1000;

template <class Body> double timed(Body body) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            const auto result = body();
            bench::keep(result);
        }
    });
}

// Both sides work on a copy of the list.
void median(const std::string &name, const std::vector<double> &list) {
    std::vector<double> work(list);
    const double ours = timed([&] {
        work = list;
        return _zorcMedianFloat8(kCount, work.data());
    });
    const double peer = timed([&] {
        work = list;
        const auto middle = work.begin() + (kCount - 1) / 2;
        std::nth_element(work.begin(), middle, work.end());
        return (*middle + *std::min_element(middle + 1, work.end())) / 2;
    });
    bench::row("MEDIAN of 1000, " + name, ours, "std::nth_element", peer);
}

ZOR_BENCH(statistics) {
    std::mt19937 random(1);
    std::vector<double> list(kCount), few(kCount);
    for (unsigned i = 0; i < kCount; ++i) {
        list[i] = random() / 1000.0;
        few[i] = random() % 3;
    }
    median("random", list);
    median("three values", few);
    median("all alike", std::vector<double>(kCount, 1.0));

    double result = 0;
    const double mean = 2147483.6;
    const double ours = timed([&] { return _zorcVariance(kCount, &result, mean, list.data()); });
    const double peer = timed([&] {
        double sum = 0;
        for (const double value : list) {
            sum += (value - mean) * (value - mean);
        }
        return sum / kCount;
    });
    bench::row("VARIANCE of 1000", ours, "plain loop", peer);
    std::vector<double> amounts(kCount, 100.0);
    amounts[0] = 0.001;
    bench::row("PRESENT-VALUE of 1000",
               timed([&] { return _zorcPresentValue(kCount, &result, amounts.data()); }),
               "plain loop", timed([&] {
                   double sum = 0;
                   double discount = 1;
                   for (unsigned i = 1; i < kCount; ++i) {
                       discount *= 1 + amounts[0];
                       sum += amounts[i] / discount;
                   }
                   return sum;
               }));
}

} // namespace
