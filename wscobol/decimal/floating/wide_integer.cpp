// Arithmetic in base 2^32 as on paper, word 0 the units: 10^20 is the words 63100000, 6BC75E2D and
// 5, in hexadecimal.
#include "decimal/floating/wide_integer.h"

#include <bit>
#include <cstring>

#include "decimal/word_division.h"

namespace zor::decimal {

Wide128 multiplyAdd(uint64_t left, uint64_t right, uint64_t addend) {
    const uint64_t leftLow = static_cast<uint32_t>(left);
    const uint64_t leftHigh = left >> 32;
    const uint64_t rightLow = static_cast<uint32_t>(right);
    const uint64_t rightHigh = right >> 32;
    const uint64_t lowest = leftLow * rightLow;
    const uint64_t middle = leftHigh * rightLow + (lowest >> 32);
    const uint64_t other = leftLow * rightHigh + static_cast<uint32_t>(middle);
    Wide128 product{leftHigh * rightHigh + (middle >> 32) + (other >> 32),
                    other << 32 | static_cast<uint32_t>(lowest)};
    product.low += addend;
    product.high += product.low < addend ? 1 : 0;
    return product;
}

WideInteger::WideInteger(Wide128 value)
    : count_(4), word_{static_cast<uint32_t>(value.low), static_cast<uint32_t>(value.low >> 32),
                       static_cast<uint32_t>(value.high), static_cast<uint32_t>(value.high >> 32)} {
    trim();
}

WideInteger::WideInteger(const WideInteger &other) : count_(other.count_) {
    memcpy(word_, other.word_, static_cast<std::size_t>(count_) * sizeof word_[0]);
}

void WideInteger::trim() {
    while (count_ > 0 && word_[count_ - 1] == 0) {
        --count_;
    }
}

int32_t WideInteger::bits() const {
    return count_ == 0 ? 0 : count_ * 32 - std::countl_zero(word_[count_ - 1]);
}

Wide128 WideInteger::low() const {
    uint32_t word[4] = {};
    memcpy(word, word_, static_cast<std::size_t>(count_ < 4 ? count_ : 4) * sizeof word[0]);
    return {static_cast<uint64_t>(word[3]) << 32 | word[2],
            static_cast<uint64_t>(word[1]) << 32 | word[0]};
}

void WideInteger::multiplyAdd(uint32_t factor, uint32_t addend) {
    uint32_t carry = addend;
    for (int32_t i = 0; i < count_; ++i) {
        const uint64_t product = static_cast<uint64_t>(word_[i]) * factor + carry;
        word_[i] = static_cast<uint32_t>(product);
        carry = static_cast<uint32_t>(product >> 32);
    }
    if (carry != 0) {
        push(carry);
    }
}

void WideInteger::multiplyByPowerOfTen(int32_t power) {
    multiplyByPowerOfFive(power);
    shiftLeft(power);
}

void WideInteger::multiplyByPowerOfFive(int32_t power) {
    constexpr int32_t kStep = 13;
    constexpr uint32_t kFiveToStep = 1'220'703'125;
    for (; power >= kStep; power -= kStep) {
        multiplyAdd(kFiveToStep);
    }
    uint32_t factor = 1;
    for (; power > 0; --power) {
        factor *= 5;
    }
    multiplyAdd(factor);
}

uint32_t WideInteger::divide(uint32_t divisor) {
    uint32_t remainder = 0;
    for (int32_t i = count_ - 1; i >= 0; --i) {
        const WordDivision step = divideWords(remainder, word_[i], divisor);
        word_[i] = step.quotient;
        remainder = step.remainder;
    }
    trim();
    return remainder;
}

void WideInteger::shiftLeft(int32_t bits) {
    if (count_ == 0 || bits == 0) {
        return;
    }
    const int32_t words = bits / 32;
    if (bits % 32 != 0) {
        multiplyAdd(1U << (bits % 32));
    }
    if (words != 0) {
        memmove(word_ + words, word_, static_cast<std::size_t>(count_) * sizeof word_[0]);
        memset(word_, 0, static_cast<std::size_t>(words) * sizeof word_[0]);
        count_ += words;
    }
}

void WideInteger::add(const WideInteger &other) {
    while (count_ < other.count_) {
        push(0);
    }
    uint32_t carry = 0;
    for (int32_t i = 0; i < count_ && (i < other.count_ || carry != 0); ++i) {
        const uint64_t sum =
            static_cast<uint64_t>(word_[i]) + (i < other.count_ ? other.word_[i] : 0) + carry;
        word_[i] = static_cast<uint32_t>(sum);
        carry = static_cast<uint32_t>(sum >> 32);
    }
    if (carry != 0) {
        push(carry);
    }
}

void WideInteger::subtract(const WideInteger &other) {
    uint32_t borrow = 0;
    for (int32_t i = 0; i < count_ && (i < other.count_ || borrow != 0); ++i) {
        const uint64_t difference =
            static_cast<uint64_t>(word_[i]) - (i < other.count_ ? other.word_[i] : 0) - borrow;
        word_[i] = static_cast<uint32_t>(difference);
        borrow = static_cast<uint32_t>(difference >> 63);
    }
    trim();
}

int32_t WideInteger::compare(const WideInteger &left, const WideInteger &right) {
    if (left.count_ != right.count_) {
        return left.count_ < right.count_ ? -1 : 1;
    }
    for (int32_t i = left.count_ - 1; i >= 0; --i) {
        if (left.word_[i] != right.word_[i]) {
            return left.word_[i] < right.word_[i] ? -1 : 1;
        }
    }
    return 0;
}

} // namespace zor::decimal
