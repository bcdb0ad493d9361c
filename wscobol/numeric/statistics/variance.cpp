// VARIANCE and STANDARD-DEVIATION, of a whole population.
#include "base/wide_arguments.h"
#include "numeric/binary_math.h"
#include "numeric/quad_math.h"
#include "numeric/statistics/list.h"
#include "statistics.h"

namespace zor::numeric {
namespace {

template <class T> T varianceOf(uint32_t count, T mean, const T *array) {
    if (count == 0) {
        return 0;
    }
    T sum = 0;
    for (const Element<T> item : List(array, count)) {
        const T distance = item.value - mean;
        sum += distance * distance;
    }
    return sum / static_cast<T>(count);
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

ZorBinary64 *_zorcVariance(uint32_t count, ZorBinary64 *result, ZorBinary64 mean,
                           const ZorBinary64 *array) {
    return store(result, varianceOf(count, mean, array));
}
ZOR_WIDE(ZorBinary128 *, _zorcVariance16, uint32_t count, ZorBinary128 *result, Gap<2>,
         Wide<ZorBinary128> mean, const ZorBinary128 *array) {
    return store(result, varianceOf(count, mean.value, array));
}
ZorBinary64 *_zorcStandardDeviation(uint32_t count, ZorBinary64 *result, ZorBinary64 mean,
                                    const ZorBinary64 *array) {
    return store(result, binary64::squareRoot(varianceOf(count, mean, array)));
}
ZOR_WIDE(ZorBinary128 *, _zorcStandardDeviation16, uint32_t count, ZorBinary128 *result, Gap<2>,
         Wide<ZorBinary128> mean, const ZorBinary128 *array) {
    return store(result, binary128::sqrt(varianceOf(count, mean.value, array)));
}
