// MEDIAN, by selection within the caller's array: the time grows with the count, whatever the order
// of the values and however often they repeat.
#include <algorithm>

#include "base/wide_arguments.h"
#include "numeric/statistics/list.h"
#include "statistics.h"

namespace zor::numeric {
namespace {

// A NaN is neither below nor above anything, which no selection can bear: they go behind the rest.
template <class T> T medianOf(uint32_t count, T *array) {
    if (count == 0) {
        return 0;
    }
    using Item = Element<T>;
    auto *const first = reinterpret_cast<Item *>(array);
    Item *const end =
        std::partition(first, first + count, [](Item item) { return item.value == item.value; });
    Item *const middle = first + (count - 1) / 2;
    if (middle < end) {
        std::nth_element(first, middle, end,
                         [](Item left, Item right) { return left.value < right.value; });
    }
    if (count % 2 != 0) {
        return middle->value;
    }
    T above = middle[1].value;
    for (const Item *item = middle + 2; item < end; ++item) {
        above = item->value < above ? item->value : above;
    }
    return (above + middle->value) * static_cast<T>(0.5);
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

ZorBinary64 _zorcMedianFloat8(uint32_t count, ZorBinary64 *array) {
    return medianOf(count, array);
}
ZorBinary64 *_zorcMedian(uint32_t count, ZorBinary64 *result, ZorBinary64 *array) {
    return store(result, medianOf(count, array));
}
ZOR_WIDE(Wide<ZorBinary128>, _zorcMedianFloat16, uint32_t count, ZorBinary128 *array) {
    return {medianOf(count, array)};
}
ZorBinary128 *_zorcMedian16(uint32_t count, ZorBinary128 *result, ZorBinary128 *array) {
    return store(result, medianOf(count, array));
}
