// Products by limbs of eight digits, as the decimal family's. 1.2345678901234567890 squared has the
// 39 digits 1.52415787532...; the eight last fraction digits go.
#include "numeric/power/fixed_number.h"

#include <algorithm>

#include "decimal/arithmetic/limb_product.h"

namespace zor {
namespace {

using decimal::kLimbDigits;

constexpr uint32_t kPowers[kLimbDigits + 1] = {1,      10,      100,      1000,     10000,
                                               100000, 1000000, 10000000, 100000000};

int32_t digitsOf(const uint32_t *limbs, int32_t count) {
    int32_t digits = (count - 1) * kLimbDigits + 1;
    for (int32_t i = 1; i < kLimbDigits && limbs[count - 1] >= kPowers[i]; ++i) {
        ++digits;
    }
    return digits;
}

} // namespace

bool FixedNumber::keepLeading(const uint32_t *limbs, int32_t count) {
    while (count > 1 && limbs[count - 1] == 0) {
        --count;
    }
    const int32_t excess = std::max(digitsOf(limbs, count) - kMostDigits, 0);
    if (excess > scale_) {
        return false;
    }
    scale_ -= excess;
    limbs += excess / kLimbDigits;
    count -= excess / kLimbDigits;
    const uint32_t cut = kPowers[excess % kLimbDigits];
    const uint32_t up = kPowers[kLimbDigits - excess % kLimbDigits];
    for (int32_t i = 0; i < count && i < kLimbs; ++i) {
        const uint32_t entering = i + 1 < count ? limbs[i + 1] % cut * up : 0;
        limb_[i] = limbs[i] / cut + entering;
    }
    count_ = std::min(count, kLimbs);
    count_ -= limb_[count_ - 1] == 0 && count_ > 1 ? 1 : 0;
    return true;
}

bool FixedNumber::read(const char *text, int32_t digits, int32_t scale) {
    constexpr int32_t kRoom = 2 * kLimbs;
    const int32_t kept = std::min(digits, kRoom * kLimbDigits);
    scale_ = int64_t{scale} - (digits - kept);
    uint32_t limbs[kRoom] = {};
    for (int32_t i = 0; i < kept; ++i) {
        const int32_t place = kept - 1 - i;
        limbs[place / kLimbDigits] += fixedDigit(text[i]) * kPowers[place % kLimbDigits];
    }
    return keepLeading(limbs, kRoom);
}

bool FixedNumber::multiply(const FixedNumber &factor) {
    uint32_t product[2 * kLimbs];
    decimal::multiplyLimbs(limb_, count_, factor.limb_, factor.count_, product);
    const int32_t count = count_ + factor.count_;
    scale_ += factor.scale_;
    return keepLeading(product, count);
}

int32_t FixedNumber::digits(uint8_t (&digits)[kMostDigits]) const {
    const int32_t count = digitsOf(limb_, count_);
    for (int32_t i = 0; i < count; ++i) {
        const int32_t place = count - 1 - i;
        digits[i] =
            static_cast<uint8_t>(limb_[place / kLimbDigits] / kPowers[place % kLimbDigits] % 10);
    }
    return count;
}

} // namespace zor
