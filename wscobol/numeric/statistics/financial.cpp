// PRESENT-VALUE and ANNUITY. A discount may shrink to zero, and so may what an annuity is divided
// by: the result is then what a division by zero gives.
#include "base/divide_masks.h"
#include "base/message_list.h"
#include "base/wide_arguments.h"
#include "numeric/binary_math.h"
#include "numeric/integer_part.h"
#include "numeric/quad_math.h"
#include "numeric/statistics/list.h"
#include "statistics.h"

namespace zor::numeric {
namespace {

// 0, or -1 behind a message.
template <class T> int32_t checkRate(T rate) {
    if (rate > T(-1)) {
        return 0;
    }
    message::presentValueRate("PRESENT-VALUE", 0);
    return -1;
}

template <class T> T presentValueOf(uint32_t count, const T *array) {
    if (count == 0) {
        return 0;
    }
    const List list(array, count);
    const T rate = list.begin()->value;
    checkRate(rate);
    const DivideTrapHeld held;
    const T growth = rate + 1;
    T discount = 1;
    T sum = 0;
    for (const Element<T> *amount = list.begin() + 1; amount != list.end(); ++amount) {
        discount *= growth;
        sum += amount->value / discount;
    }
    return sum;
}

template <class T> int64_t wholePeriods(T periods) {
    constexpr T kLimit = 9'223'372'036'854'775'808.0;
    return periods > -kLimit ? static_cast<int64_t>(periods) : INT64_MIN;
}

template <auto &power, class T> T annuityOf(T rate, T periods) {
    if (rate < 0) {
        message::argumentIsNegative("ANNUITY");
    }
    if (periods <= 0) {
        message::argumentIsZero("ANNUITY", wholePeriods(periods));
    }
    const DivideTrapHeld held;
    return rate == 0 ? 1 / periods : rate / (1 - power(1 + rate, -periods));
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

ZorBinary64 *_zorcPresentValue(uint32_t count, ZorBinary64 *result, const ZorBinary64 *array) {
    return store(result, presentValueOf(count, array));
}
ZorBinary128 *_zorcPresentValue16(uint32_t count, ZorBinary128 *result, const ZorBinary128 *array) {
    return store(result, presentValueOf(count, array));
}

int32_t _Tvq_present_value(ZorBinary64 rate) {
    return checkRate(rate);
}
ZOR_WIDE(int32_t, _Tvq_present_value_float16, Wide<ZorBinary128> rate) {
    return checkRate(rate.value);
}
ZOR_WIDE(int32_t, _Tvq_present_value_decfloat16, Wide<ZorDecimal128> rate) {
    return checkRate(rate.value);
}

ZorBinary64 _zorcAnnuityFloat8(ZorBinary64 rate, ZorBinary64 periods) {
    return annuityOf<binary64::pow>(rate, periods);
}
ZOR_WIDE(Wide<ZorBinary128>, _zorcAnnuityFloat16, Gap<3>, Wide<ZorBinary128> rate,
         Wide<ZorBinary128> periods) {
    return {annuityOf<binary128::pow>(rate.value, periods.value)};
}
ZorBinary64 _Tvq_annuity(ZorBinary64, ZorBinary64) __attribute__((alias("_zorcAnnuityFloat8")));
