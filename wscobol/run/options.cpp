// Run-time options. COBRTOPT holds tokens like CHECK(OFF), UPSI=10000001 or NODEBUG; most of them
// are looked up whole in one table, two take a value of the user's.

#include "run/options.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string_view>

#include "base/environment.h"
#include "base/message_list.h"
#include "base/storage.h"

namespace zor {
namespace {

constexpr uint32_t kDefaultOptions1 = OPTION_CHECK | OPTION_DEBUG;
constexpr char kDefaultUpsi[] = "00000000";
constexpr int32_t kDefaultErrcount = 0;
constexpr uint32_t kTrapVariants = OPTION_TRAP_NEW | OPTION_TRAP_DUMP;

enum class Action : uint8_t {
    clear,      // bits of the field
    set,        // bits of the field
    trapOff,    // clears bits, and TRAP is chosen
    trap,       // sets bits alone among those of TRAP, and TRAP is chosen
    fileSystem, // stores the code
    ignore,     // accepted for the sake of other systems
};

struct Option {
    std::string_view name; // the whole token, value included
    Action action;
    uint32_t Proccom::*field = nullptr;
    uint32_t bits = 0;
    const char *code = nullptr;
};

constexpr auto kField1 = &Proccom::options1;
constexpr auto kField2 = &Proccom::options2;
constexpr uint32_t kTrapOn = static_cast<uint32_t>(OPTION_TRAP);
constexpr uint32_t kTrapNew = kTrapOn | OPTION_TRAP_NEW;

constexpr Option fileSystem(std::string_view name, const char *code) {
    return {name, Action::fileSystem, nullptr, 0, code};
}

constexpr Option kOptions[] = {
    {"ACCEPT", Action::set, kField2, OPTION_ACCEPT_NEW},
    {"ACCEPT=NEW", Action::set, kField2, OPTION_ACCEPT_NEW},
    {"ACCEPT=OLD", Action::clear, kField2, OPTION_ACCEPT_NEW},
    {"CHECK", Action::set, kField1, OPTION_CHECK},
    {"CHECK=OFF", Action::clear, kField1, OPTION_CHECK},
    {"CHECK=ON", Action::set, kField1, OPTION_CHECK},
    {"DEBUG", Action::set, kField1, OPTION_DEBUG},
    {"DEBUG=OFF", Action::clear, kField1, OPTION_DEBUG},
    {"DEBUG=ON", Action::set, kField1, OPTION_DEBUG},
    {"FILEMODE", Action::ignore},
    {"FILEMODE=L", Action::ignore},
    {"FILEMODE=LARGE", Action::ignore},
    {"FILEMODE=S", Action::ignore},
    {"FILEMODE=SMALL", Action::ignore},
    {"FILESYS", Action::ignore},
    fileSystem("FILESYS=BNI", "bni"),
    fileSystem("FILESYS=GYP", "gyp"),
    fileSystem("FILESYS=JDU", "jdu"),
    fileSystem("FILESYS=JDUT", "jdu"),
    fileSystem("FILESYS=KPN", "kpn"),
    fileSystem("FILESYS=LSQ", "lsq"),
    fileSystem("FILESYS=NAT", "lsq"),
    fileSystem("FILESYS=PSX", "psx"),
    fileSystem("FILESYS=RAW", "jdu"),
    fileSystem("FILESYS=RSD", "rsd"),
    fileSystem("FILESYS=UQE", "uqe"),
    fileSystem("FILESYS=WKA", "wka"),
    fileSystem("FILESYS=WKAT", "wka"),
    {"FM", Action::ignore},
    {"FM=L", Action::ignore},
    {"FM=LARGE", Action::ignore},
    {"FM=S", Action::ignore},
    {"FM=SMALL", Action::ignore},
    {"FS", Action::ignore},
    fileSystem("FS=BNI", "bni"),
    fileSystem("FS=GYP", "gyp"),
    fileSystem("FS=JDU", "jdu"),
    fileSystem("FS=JDUT", "jdu"),
    fileSystem("FS=KPN", "kpn"),
    fileSystem("FS=LSQ", "lsq"),
    fileSystem("FS=NAT", "lsq"),
    fileSystem("FS=PSX", "psx"),
    fileSystem("FS=RAW", "jdu"),
    fileSystem("FS=RSD", "rsd"),
    fileSystem("FS=UQE", "uqe"),
    fileSystem("FS=WKA", "wka"),
    fileSystem("FS=WKAT", "wka"),
    {"NOCHECK", Action::clear, kField1, OPTION_CHECK},
    {"NODEBUG", Action::clear, kField1, OPTION_DEBUG},
    {"TRAP", Action::trap, kField2, kTrapNew},
    {"TRAP=DUMP", Action::trap, kField2, kTrapNew | OPTION_TRAP_DUMP},
    {"TRAP=NEW", Action::trap, kField2, kTrapNew},
    {"TRAP=OFF", Action::trapOff, kField2, kTrapOn},
    {"TRAP=OLD", Action::trap, kField2, kTrapOn},
    {"TRAP=ON", Action::trap, kField2, kTrapNew},
};
constexpr std::string_view kDefaultOption = "TRAP";

// The search is binary, by the value of the characters.
static_assert(std::is_sorted(std::begin(kOptions), std::end(kOptions),
                             [](const Option &a, const Option &b) { return a.name < b.name; }));

const Option *findOption(std::string_view name) {
    const Option *option = std::lower_bound(
        std::begin(kOptions), std::end(kOptions), name,
        [](const Option &row, std::string_view wanted) { return row.name < wanted; });
    return option != std::end(kOptions) && option->name == name ? option : nullptr;
}

// Applies a row; true when it chose TRAP.
bool applyOption(Proccom &process, const Option &option) {
    switch (option.action) {
    case Action::clear:
        process.*option.field &= ~option.bits;
        return false;
    case Action::set:
        process.*option.field |= option.bits;
        return false;
    case Action::trapOff:
        process.*option.field &= ~option.bits;
        return true;
    case Action::trap:
        process.*option.field &= ~kTrapVariants;
        process.*option.field |= option.bits;
        return true;
    case Action::fileSystem:
        memcpy(process.filesys, option.code, sizeof process.filesys);
        return false;
    case Action::ignore:
        return false;
    }
    return false;
}

// ---- options with a value; a null value and a bad one stand for the default

void applyErrcount(Proccom &process, const char *name, const char *value) {
    process.errcount = kDefaultErrcount;
    if (value == nullptr) {
        return;
    }
    char *end = nullptr;
    errno = 0;
    const long number = strtol(value, &end, 10);
    if (*end != '\0' || number < 0) {
        message::optionNotANumber(value, name);
    } else if (errno != 0) {
        message::optionNumberRange(value, name, 0, INT32_MAX);
    } else {
        process.errcount = number;
    }
}

void applyUpsi(Proccom &process, const char *name, const char *value) {
    constexpr std::size_t kSwitches = sizeof process.upsi;
    static_assert(sizeof kDefaultUpsi == kSwitches + 1);
    const char *switches = value != nullptr ? value : kDefaultUpsi;
    if (strlen(switches) != kSwitches) {
        message::optionTextLength(value, name, kSwitches);
        switches = kDefaultUpsi;
    } else if (strspn(switches, "01") != kSwitches) {
        message::optionTextCharacters(value, name);
        switches = kDefaultUpsi;
    }
    memcpy(process.upsi, switches, kSwitches);
}

struct ValuedOption {
    std::string_view name;
    void (*apply)(Proccom &process, const char *name, const char *value);
};
constexpr ValuedOption kValuedOptions[] = {{"ERRCOUNT", applyErrcount}, {"UPSI", applyUpsi}};

// ---- the variable

// Rewrites the text in place as upper-case tokens, each ended by a zero byte, and an empty one
// behind the last. The text keeps its length or shrinks; one byte of room behind its zero byte is
// needed.
void cutIntoTokens(char *text) {
    const char *from = text;
    char *to = text;
    bool open = false;
    for (char c = *from; c != '\0'; c = *++from) {
        if (c == ' ' || c == '\t' || c == '\n') {
            continue;
        }
        if (c == ')' || c == ',' || c == ':') {
            if (open) {
                *to++ = '\0';
            }
            open = false;
            continue;
        }
        *to++ = c == '(' ? '=' : static_cast<char>(toupper(static_cast<unsigned char>(c)));
        open = true;
    }
    if (open) {
        *to++ = '\0';
    }
    *to = '\0';
}

// Applies an option that the table does not hold with its value.
void applyValuedOption(Proccom &process, char *token) {
    char *equals = strchr(token, '=');
    const std::string_view key(token, equals != nullptr ? static_cast<std::size_t>(equals - token)
                                                        : strlen(token));
    for (const ValuedOption &option : kValuedOptions) {
        if (option.name == key) {
            option.apply(process, option.name.data(), equals != nullptr ? equals + 1 : nullptr);
            return;
        }
    }
    if (equals != nullptr && findOption(key) != nullptr) {
        *equals = '\0';
        message::badOptionValue(equals + 1, token);
    } else {
        message::unknownOption(token);
    }
}

// Applies the variable's value; true when it chose TRAP.
bool applyTokens(Proccom &process, const char *value) {
    const std::size_t length = strlen(value);
    auto *const text = static_cast<char *>(allocateOrReport(length + 2));
    if (text == nullptr) {
        return false;
    }
    memcpy(text, value, length + 1);
    cutIntoTokens(text);
    bool trapChosen = false;
    for (char *token = text; *token != '\0';) {
        char *const next = token + strlen(token) + 1;
        if (const Option *option = findOption(token)) {
            trapChosen |= applyOption(process, *option);
        } else {
            applyValuedOption(process, token);
        }
        token = next;
    }
    release(text);
    return trapChosen;
}

} // namespace

void readRunTimeOptions(Proccom &process) {
    process.options1 = kDefaultOptions1;
    process.errcount = kDefaultErrcount;
    memcpy(process.upsi, kDefaultUpsi, sizeof process.upsi);
    const char *value = settingOf("COBRTOPT");
    const bool trapChosen = value != nullptr && applyTokens(process, value);
    if (!trapChosen) {
        applyOption(process, *findOption(kDefaultOption));
    }
}

} // namespace zor
