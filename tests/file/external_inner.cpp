// What counts as a difference between two descriptions of an EXTERNAL file.
#include <cstring>

#include "file/external_comparison.h"
#include "support/kit.h"

namespace {

// A description with all the records that it may have behind it.
struct Described {
    FileDescription fixed{};
    FileKey keys[3]{};
    char relativeKey[FILE_NAME_RECORD_BYTES]{};
    char linage[4][FILE_NAME_RECORD_BYTES]{};
};
using Change = void (*)(Described &);

} // namespace

TEST(ExternalFiles, DifferInWhatProgramsShare) {
    const std::pair<const char *, Change> cases[] = {
        {"-", [](Described &d) { d.keys[2].position = d.fixed.status2len = 4; }},
        {"-", [](Described &d) { d.fixed.statusflags = FILE_STATUS_EBCDIC; }},
        {"-", [](Described &d) { d.fixed.lockmode = d.fixed.lockinfo = 0; }},
        {"", [](Described &d) { d.fixed.filename[30] = 1; }},
        {"FILE SYSTEM, ORGANIZATION, ACCESS MODE, RECORD FORMAT, MAXIMUM RECORD LENGTH, MINIMUM "
         "RECORD LENGTH, OPTIONAL, FILE ASSIGNMENT NAME, NUMBER OF KEYS",
         [](Described &d) { memset(&d.fixed.fsid, 0xFF, 24); }},
        {"FILE ASSIGNMENT NAME", [](Described &d) { d.fixed.assign = FILE_LITERAL; }},
        {"SHARE MODE, LOCK COUNT", [](Described &d) { d.fixed.statusflags = 0x0B; }},
        {"LOCK MODE", [](Described &d) { d.fixed.lockmode = 0xF8 | FILE_LOCK_MANUAL; }},
        {"LINAGE FOOTING, LINAGE TOP, LINAGE BOTTOM, LINAGE NAME/VALUE",
         [](Described &d) { d.fixed.linageflags = 0; }},
        {"LINAGE TOP", [](Described &d) { d.fixed.linageflags ^= FILE_TOP; }},
        {"LINAGE NAME/VALUE, LINAGE FOOTING NAME/VALUE, LINAGE TOP NAME/VALUE, LINAGE BOTTOM "
         "NAME/VALUE",
         [](Described &d) { memset(d.linage, 1, sizeof d.linage); }},
        {"LINAGE BOTTOM NAME/VALUE, RELATIVE KEY",
         [](Described &d) { d.linage[3][35] = d.relativeKey[35] = 1; }},
        {"NUMBER OF KEYS", [](Described &d) { d.fixed.nkeys = 1; }},
        {"INDEXED KEY", [](Described &d) { d.keys[1].position = 4; }},
        {"INDEXED KEY", [](Described &d) { d.keys[0].attribute = 1; }},
        {"RELATIVE KEY", [](Described &d) { d.fixed.reloffset = 0; }}};
    Described first;
    first.fixed.lockinfo = 1;
    first.fixed.organization = FILE_INDEXED;
    first.fixed.linageflags = FILE_LINAGE | FILE_FOOTING | FILE_TOP | FILE_BOTTOM;
    first.fixed.nkeys = 2;
    first.fixed.keyoffset = offsetof(Described, keys);
    first.fixed.reloffset = offsetof(Described, relativeKey);
    first.fixed.linageoffset = offsetof(Described, linage);
    EXPECT_EQ(zor::bytesOf(first.fixed), sizeof first);
    for (const auto &[list, change] : cases) {
        Described second = first;
        change(second);
        const zor::Differences differences(first.fixed, second.fixed);
        EXPECT_STREQ(differences.any() ? differences.list() : "-", list);
    }
}
