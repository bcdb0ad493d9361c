// Moves of characters: alphanumeric and national editing, the fill with a literal, and the move of
// items that may overlap.
#include <algorithm>
#include <cstring>

#include "base/ebcdic.h"
#include "edit.h"
#include "national/item_bytes.h"

namespace zor {
namespace {

constexpr char kIdeographicBlank[2] = {'\x81', '\x40'};
constexpr char16_t kNationalBlank = u' ';

char *fillNational(char *out, char16_t c, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i, out += sizeof c) {
        memcpy(out, &c, sizeof c);
    }
    return out;
}

bool isNationalInsertion(uint16_t c) {
    return c == u'0' || c == u'/' || c == u' ';
}

} // namespace
} // namespace zor

using namespace zor;

void _zorcMoveAlphaNumEdit(const AlphanumericEditDescriptor *descriptor, const void *sender,
                           int32_t senderLength, void *receiver) {
    const auto *const first = static_cast<const char *>(sender);
    const char *const end = first + std::max(senderLength, 0);
    const bool repeat = descriptor->repeatSource != 0 && end != first;
    const char *next = first;
    auto *out = static_cast<char *>(receiver);
    const char *picture = descriptor->pictureText;
    for (int left = descriptor->positionCount; left > 0; --left) {
        const char symbol = *picture++;
        if (symbol == ' ' || symbol == '/' || symbol == '0') {
            *out++ = symbol;
        } else if (symbol == kIdeographicBlank[0] && *picture == kIdeographicBlank[1]) {
            ++picture;
            *out++ = kIdeographicBlank[0];
            *out++ = kIdeographicBlank[1];
        } else {
            if (next == end && repeat) {
                next = first;
            }
            *out++ = next == end ? ' ' : *next++;
        }
    }
}

void _zorcMoveUnicodeEdit(const NationalEditDescriptor *descriptor, const void *sender,
                          int32_t senderBytes, void *receiver) {
    constexpr std::size_t kCharacter = sizeof(char16_t);
    const auto *const first = static_cast<const char *>(sender);
    const char *const end =
        first + static_cast<std::size_t>(std::max(senderBytes, 0)) / kCharacter * kCharacter;
    const bool repeat = descriptor->repeatSource != 0 && end != first;
    const char *next = first;
    auto *out = static_cast<char *>(receiver);
    const int runs = descriptor->runBytes / static_cast<int>(sizeof(NationalEditRun));
    for (int run = 0; run < runs; ++run) {
        const NationalEditRun &entry = descriptor->runs[run];
        auto left = static_cast<std::size_t>(std::max<int>(entry.runLength, 0));
        if (isNationalInsertion(entry.editChar)) {
            out = fillNational(out, entry.editChar, left);
            continue;
        }
        while (left > 0) {
            if (next == end && repeat) {
                next = first;
            }
            const std::size_t taken =
                std::min(left * kCharacter, static_cast<std::size_t>(end - next));
            if (taken == 0) {
                out = fillNational(out, kNationalBlank, left);
                break;
            }
            memcpy(out, next, taken);
            out += taken;
            next += taken;
            left -= taken / kCharacter;
        }
    }
}

void _zorcMoveFigConst(void *receiver, int32_t signedReceiverLength, const void *literal,
                       int32_t literalLength) {
    if (literalLength < 1) {
        return;
    }
    std::size_t bytes = magnitude(signedReceiverLength);
    const auto length = static_cast<std::size_t>(literalLength);
    const auto *const pattern = static_cast<const char *>(literal);
    auto *out = static_cast<char *>(receiver);
    if (signedReceiverLength < 0) {
        const std::size_t rest = bytes % length;
        memcpy(out, pattern + length - rest, rest);
        out += rest;
        bytes -= rest;
    }
    fillWithPattern(out, bytes, pattern, length);
}

void _zorcMoveVarLenOverlap(void *receiver, int32_t signedReceiverLength, const void *sender,
                            int32_t signedSenderLength) {
    const std::size_t target = magnitude(signedReceiverLength);
    const std::size_t source = magnitude(signedSenderLength);
    const std::size_t copied = std::min(target, source);
    const std::size_t padded = target - copied;
    const bool justifiedRight = signedReceiverLength < 0;
    const char blank = signedSenderLength < 0 ? char{kEbcdicBlank} : ' ';
    const auto *const from = static_cast<const char *>(sender);
    auto *const to = static_cast<char *>(receiver);
    memmove(justifiedRight ? to + padded : to, justifiedRight ? from + (source - copied) : from,
            copied);
    memset(justifiedRight ? to : to + copied, blank, padded);
}
