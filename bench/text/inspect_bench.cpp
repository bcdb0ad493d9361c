// INSPECT beside the loop that a C programmer would write for the statement.
#include <array>
#include <cstring>
#include <string>

#include "inspect.h"
#include "support/bench.h"

namespace {

struct Statement {
    InspectBlock head;
    InspectClause clauses[4];
};

Statement statement(uint32_t flags, std::string &item, const char *compared, const char *target,
                    uint32_t *counter) {
    Statement made{};
    made.head = {1, 0, static_cast<uint32_t>(item.size()), item.data()};
    InspectClause &clause = made.clauses[0];
    clause.clauseFlags = flags;
    clause.compareAddress = compared;
    clause.compareLength = static_cast<uint32_t>(strlen(compared));
    if (counter != nullptr) {
        clause.counter = counter;
    } else {
        clause.targetAddress = target;
        clause.targetLength = static_cast<uint32_t>(strlen(target));
    }
    return made;
}

double inspecting(const Statement &made) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            _zorcInspect(&made.head);
            bench::keep(made);
        }
    });
}

template <class Body> double plainly(Body body) {
    return bench::nanoseconds([&](unsigned times) {
        for (unsigned i = 0; i < times; ++i) {
            body();
        }
    });
}

// Text in which a byte stands once in so many bytes.
std::string sparse(std::size_t length, std::size_t every, const std::string &mark) {
    std::string text(length, 'x');
    for (std::size_t at = 0; at + mark.size() <= length; at += every) {
        text.replace(at, mark.size(), mark);
    }
    return text;
}

void tally(const char *name, std::size_t length, std::size_t every) {
    std::string item = sparse(length, every, ",");
    uint32_t counter = 0;
    const double ours =
        inspecting(statement(static_cast<uint32_t>(INSPECT_TALLYING), item, ",", "", &counter));
    const double peers = plainly([&] {
        const char *at = item.data();
        const char *const end = at + item.size();
        while (at != end && (at = static_cast<const char *>(
                                 memchr(at, ',', static_cast<std::size_t>(end - at)))) != nullptr) {
            ++counter;
            ++at;
        }
        bench::keep(counter);
    });
    bench::row(name, ours, "memchr loop", peers);
}

ZOR_BENCH(inspectTallying) {
    tally("TALLYING ALL a byte, 80", 80, 10);
    tally("TALLYING ALL a byte, 80, absent", 80, 1000);
    tally("TALLYING ALL a byte, 32000", 32000, 10);
    tally("TALLYING ALL a byte, 32000, rare", 32000, 1000);
    std::string item = sparse(80, 10, ",;");
    uint32_t counters[2] = {};
    Statement two = statement(static_cast<uint32_t>(INSPECT_TALLYING), item, ",", "", &counters[0]);
    two.head.clauseCount = 2;
    two.clauses[1] = two.clauses[0];
    two.clauses[1].compareAddress = ";";
    two.clauses[1].counter = &counters[1];
    bench::row("TALLYING ALL two bytes, 80", inspecting(two), "switch loop", plainly([&] {
                   for (const char c : item) {
                       switch (c) {
                       case ',':
                           ++counters[0];
                           break;
                       case ';':
                           ++counters[1];
                           break;
                       }
                   }
                   bench::keep(counters);
               }));
}

void replacing(const char *name, std::size_t length, std::size_t every) {
    std::string item = sparse(length, every, "ABC");
    Statement there = statement(INSPECT_REPLACING, item, "ABC", "DEF", nullptr);
    Statement back = statement(INSPECT_REPLACING, item, "DEF", "ABC", nullptr);
    const double ours = plainly([&] {
        _zorcInspect(&there.head);
        _zorcInspect(&back.head);
    });
    const auto replace = [&](const char *from, const char *to) {
        char *at = item.data();
        char *const end = at + item.size();
        while ((at = static_cast<char *>(
                    memmem(at, static_cast<std::size_t>(end - at), from, 3))) != nullptr) {
            memcpy(at, to, 3);
            at += 3;
        }
        bench::keep(item);
    };
    const double peers = plainly([&] {
        replace("ABC", "DEF");
        replace("DEF", "ABC");
    });
    bench::row(name, ours / 2, "memmem loop", peers / 2);
}

ZOR_BENCH(inspectReplacing) {
    replacing("REPLACING ALL 3 bytes, 80", 80, 20);
    replacing("REPLACING ALL 3 bytes, 80, absent", 80, 1000);
    replacing("REPLACING ALL 3 bytes, 32000", 32000, 40);
    std::string item = sparse(80, 10, ",");
    Statement there = statement(INSPECT_REPLACING, item, ",", ";", nullptr);
    bench::row("REPLACING ALL a byte, 80", inspecting(there), "byte loop", plainly([&] {
                   for (char &c : item) {
                       c = c == ',' ? ';' : c;
                   }
                   bench::keep(item);
               }));
}

constexpr const char *kLower = "abcdefghijklmnopqrstuvwxyz";
constexpr const char *kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr const char *kShuffled = "QWERTYUIOPASDFGHJKLZXCVBNM";

void converting(const char *name, std::size_t length, const char *to) {
    std::string item = sparse(length, 3, "A");
    const double ours = inspecting(statement(INSPECT_CONVERTING, item, kLower, to, nullptr));
    const double peers = plainly([&] {
        std::array<unsigned char, 256> table;
        for (unsigned i = 0; i < 256; ++i) {
            table[i] = static_cast<unsigned char>(i);
        }
        for (unsigned i = 0; i < 26; ++i) {
            table[static_cast<unsigned char>(kLower[i])] = static_cast<unsigned char>(to[i]);
        }
        for (char &c : item) {
            c = static_cast<char>(table[static_cast<unsigned char>(c)]);
        }
        bench::keep(item);
    });
    bench::row(name, ours, "256-byte table loop", peers);
}

ZOR_BENCH(inspectConverting) {
    converting("CONVERTING 26 successive, 80", 80, kUpper);
    converting("CONVERTING 26 successive, 32000", 32000, kUpper);
    converting("CONVERTING 26 letters, 80", 80, kShuffled);
    converting("CONVERTING 26 letters, 32000", 32000, kShuffled);
}

} // namespace
