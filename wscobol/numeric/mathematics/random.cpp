// RANDOM: a multiplicative congruential generator. Its state belongs to the run unit, so that each
// run unit has its own sequence.
#include <cstdint>

#include "base/anchors.h"
#include "base/message_list.h"
#include "base/wide_arguments.h"
#include "mathematics.h"
#include "numeric/integer_part.h"
#include "runcom.h"

namespace zor::numeric {
namespace {

constexpr uint32_t kModulus = 0x7FFFFFFF;
constexpr uint32_t kMultiplier = 950706376;
constexpr int64_t kSeedLimit = 1'000'000'000'000'000'000;
constexpr int32_t kFloatingPeriod = 2147483645; // of seeds
constexpr uint32_t kIntegerPeriod = 2147483646;

// value * kMultiplier modulo kModulus. 2^31 is 1 modulo kModulus: what is above counts as it
// stands.
uint32_t following(uint32_t value) {
    constexpr int32_t kBits = 31;
    uint64_t product = static_cast<uint64_t>(value) * kMultiplier;
    product = (product & kModulus) + (product >> kBits);
    product = (product & kModulus) + (product >> kBits);
    return static_cast<uint32_t>(product >= kModulus ? product - kModulus : product);
}

// Makes the state that follows the value the state of the run unit. Without a run-time there is
// nobody to remember it.
uint32_t advance(Runcom *unit, uint32_t value) {
    const uint32_t state = following(value);
    if (unit != nullptr) {
        unit->randomState = static_cast<int32_t>(state);
    }
    return state;
}

template <class T> T numberOf(uint32_t state) {
    return static_cast<T>(static_cast<int32_t>(state)) / static_cast<T>(kModulus);
}

// The low 32 bits of a value cut to an integer; 0 when that has more than 64.
template <class T> uint32_t lowWord(T value) {
    if constexpr (std::is_same_v<T, ZorDecimal128>) {
        return static_cast<uint32_t>(_zorcBCD_CONV_DFlt_To_Int8(value));
    } else {
        constexpr T kLimit = 9'223'372'036'854'775'808.0;
        return value > -kLimit && value < kLimit
                   ? static_cast<uint32_t>(static_cast<int64_t>(value))
                   : 0;
    }
}

template <class T> T seeded(T seed) {
    const auto period = static_cast<T>(kFloatingPeriod);
    if (seed < T(0)) {
        message::argumentIsNegative("RANDOM");
    }
    if (seed >= static_cast<T>(kSeedLimit)) {
        message::argumentAboveMaximum("RANDOM", kSeedLimit);
    }
    if (fractionPart(seed) != T(0)) {
        message::argumentNotInteger("RANDOM");
    }
    if (seed > period) {
        seed = fractionPart(seed / period) * period;
    }
    return numberOf<T>(advance(currentOrIdleRunUnit(), lowWord<T>(seed + T(1))));
}

} // namespace
} // namespace zor::numeric

using namespace zor;
using namespace zor::numeric;

ZorBinary64 _zorRandom(void) {
    Runcom *const unit = currentOrIdleRunUnit();
    const uint32_t state = unit == nullptr ? 0 : static_cast<uint32_t>(unit->randomState);
    return numberOf<ZorBinary64>(advance(unit, state == 0 ? 1 : state));
}
ZorBinary64 _zorRandomInt8(int64_t seed) {
    auto value = static_cast<uint64_t>(seed);
    if (value >= static_cast<uint64_t>(kSeedLimit)) {
        message::argumentAboveMaximum("RANDOM", kSeedLimit);
    }
    if (value >= kIntegerPeriod) {
        value %= kIntegerPeriod;
    }
    return numberOf<ZorBinary64>(advance(currentOrIdleRunUnit(), static_cast<uint32_t>(value) + 1));
}
ZorBinary64 _zorRandomFloat8(ZorBinary64 seed) {
    return seeded(seed);
}
ZOR_WIDE(Wide<ZorBinary128>, _zorRandomFloat16, Gap<3>, Wide<ZorBinary128> seed) {
    return {seeded(seed.value)};
}
ZOR_WIDE(Wide<ZorDecimal128>, _Tvq_random_decfloat16, Gap<3>, Wide<ZorDecimal128> seed) {
    return {seeded(seed.value)};
}
ZorBinary64 _Tvq_random(void) __attribute__((alias("_zorRandom")));
ZorBinary64 _Tvq_random_float8(ZorBinary64) __attribute__((alias("_zorRandomFloat8")));
ZOR_WIDE_ALIAS("_zorRandomFloat16", Wide<ZorBinary128>, _Tvq_random_float16, Gap<3>,
               Wide<ZorBinary128> seed);
