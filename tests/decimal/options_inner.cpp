// The word of switches of the decimal family.
#include "decimal/options.h"

#include "decimal/arithmetic_model.h"
#include "decimal/moves_model.h"

using namespace zor::decimal;

namespace {

TEST(Switches, AreReadByWhicheverCallIsFirst) {
    uint8_t target[8] = {};
    for (const model::Function &f : model::kMoves) {
        const std::string item = model::encode(f.from, "123", false);
        bcdOptions = BCD_OPTIONS_UNSET;
        call(f, model::address(item), 3, isRelation(f) ? model::address(item) : target, 3);
        EXPECT_NE(bcdOptions, BCD_OPTIONS_UNSET) << f.name;
    }
    for (const model::Operation &f : model::kOperations) {
        const std::string item = model::encode(f.form, "123", false);
        bcdOptions = BCD_OPTIONS_UNSET;
        f.call(model::address(item), model::address(item), target, 3, 3, 3);
        EXPECT_NE(bcdOptions, BCD_OPTIONS_UNSET) << f.name;
    }
}

} // namespace
