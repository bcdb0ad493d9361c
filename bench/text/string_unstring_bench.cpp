// STRING and UNSTRING beside the string functions of C.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "string_unstring.h"
#include "support/bench.h"

namespace {

constexpr unsigned kFields = 20;
constexpr unsigned kReceiverLength = 16;

// 200 bytes: twenty fields of one to seventeen bytes with commas between them.
std::string commaRecord() {
    std::string record;
    for (unsigned field = 0; field < kFields; ++field) {
        record += std::string(1 + field * 7 % 17, static_cast<char>('a' + field)) + ",";
    }
    record.resize(200, 'z');
    return record;
}

struct Split {
    std::string record = commaRecord();
    std::vector<std::string> receivers =
        std::vector<std::string>(kFields, std::string(kReceiverLength, ' '));
    UnstringReceiver table[kFields] = {};
    struct {
        UnstringBlock head;
        UnstringDelimiter delimiters[2];
    } block{};

    explicit Split(uint32_t delimiters) {
        for (unsigned i = 0; i < kFields; ++i) {
            table[i].receiverAddress = receivers[i].data();
            table[i].receiverLength = kReceiverLength;
        }
        block.head.senderAddress = record.data();
        block.head.senderLength = static_cast<uint32_t>(record.size());
        block.head.receiverCount = kFields;
        block.head.delimiterCount = delimiters;
        block.delimiters[0] = {",", 1, 0};
        block.delimiters[1] = {";", 1, 0};
    }

    double ours() {
        return bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                uint32_t overflow = 1;
                _zorcUnString(&block.head, table, nullptr, &overflow);
                bench::keep(receivers);
            }
        });
    }

    double peers(const char *delimiters) {
        const std::string terminated = record;
        return bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                const char *at = terminated.c_str();
                for (std::string &receiver : receivers) {
                    const std::size_t length = strcspn(at, delimiters);
                    const std::size_t copied = std::min<std::size_t>(length, kReceiverLength);
                    memcpy(receiver.data(), at, copied);
                    memset(receiver.data() + copied, ' ', kReceiverLength - copied);
                    at += length;
                    if (*at == '\0') {
                        break;
                    }
                    ++at;
                }
                bench::keep(receivers);
            }
        });
    }
};

ZOR_BENCH(unstring) {
    Split byOne(1);
    bench::row("UNSTRING of 20 fields", byOne.ours(), "strcspn, memcpy, memset", byOne.peers(","));
    Split byTwo(2);
    bench::row("UNSTRING of 20 fields, OR", byTwo.ours(), "strcspn, memcpy, memset",
               byTwo.peers(",;"));
}

ZOR_BENCH(string) {
    constexpr unsigned kSenders = 10;
    const std::string fields[kSenders] = {
        "2026        ",
        "11  ",
        "25  ",
        "ACCOUNT               ",
        "AMSTERDAM                     ",
        "1234567890          ",
        "EUR ",
        "A LONGER TEXT WITHIN A FIELD OF SIXTY BYTES                 ",
        "X                   ",
        "THE LAST            "};
    std::string target(300, ' ');
    struct {
        StringBlock head;
        StringGroup group;
        StringSender senders[kSenders];
    } block{};
    block.head.targetAddress = target.data();
    block.head.targetLength = static_cast<uint32_t>(target.size());
    block.head.groupCount = 1;
    block.group.senderCount = kSenders;
    for (unsigned i = 0; i < kSenders; ++i) {
        block.senders[i] = {fields[i].data(), static_cast<uint32_t>(fields[i].size())};
    }
    const auto ours = [&](const char *delimiter) {
        block.group.delimiterAddress = delimiter;
        block.group.delimiterLength = static_cast<uint32_t>(strlen(delimiter));
        return bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                uint32_t overflow = 1;
                _zorcString(&block.head, nullptr, &overflow);
                bench::keep(target);
            }
        });
    };
    const auto peers = [&](auto find) {
        return bench::nanoseconds([&](unsigned times) {
            for (unsigned i = 0; i < times; ++i) {
                char *to = target.data();
                std::size_t room = target.size();
                for (const std::string &field : fields) {
                    const auto *end = static_cast<const char *>(find(field));
                    const std::size_t length = end == nullptr
                                                   ? field.size()
                                                   : static_cast<std::size_t>(end - field.data());
                    const std::size_t copied = std::min(length, room);
                    memcpy(to, field.data(), copied);
                    to += copied;
                    room -= copied;
                }
                bench::keep(target);
            }
        });
    };
    bench::row(
        "STRING of 10 fields by space", ours(" "), "memchr, memcpy",
        peers([](const std::string &field) { return memchr(field.data(), ' ', field.size()); }));
    bench::row("STRING of 10 fields by 2 spaces", ours("  "), "memmem, memcpy",
               peers([](const std::string &field) {
                   return memmem(field.data(), field.size(), "  ", 2);
               }));
}

} // namespace
