// The table of cards against what routers in the field count on.
#include "state/cards.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using cards::Model;
using cards::ModelOfOption;

CardType TypeOfOption(const char* option) {
    const Model* model = ModelOfOption(option);
    return model == nullptr ? kCardGeneric : model->type;
}

TEST(Cards, OfTypeThreeAreInNoRow) {
    EXPECT_EQ(cards::ModelOfType(kCardType3), nullptr);
    EXPECT_EQ(cards::ModelOfType(-1), nullptr);
    EXPECT_EQ(cards::ModelOfType(kCardGeneric)->type, kCardGeneric);
}

TEST(Cards, AreFoundInAnOptionInTheOrderOfTheTable) {
    EXPECT_EQ(TypeOfOption("-E371E362"), kCardNovatelE362);
    EXPECT_EQ(TypeOfOption("-E362-881"), kCardSierra881);
    EXPECT_EQ(TypeOfOption("mc75iUSB305E371"), kCardNovatelE371);
    EXPECT_EQ(TypeOfOption("mc75iUSB305"), kCardSierraUsb305);
    EXPECT_EQ(ModelOfOption("-generic"), nullptr);
    EXPECT_EQ(ModelOfOption("-X1"), nullptr);
    EXPECT_EQ(ModelOfOption(""), nullptr);
}

TEST(Sets, HoldNoTypeOutsideTheirBits) {
    EXPECT_TRUE(cards::Has(cards::kAll, 0));
    EXPECT_TRUE(cards::Has(cards::kAll, 31));
    EXPECT_FALSE(cards::Has(cards::kAll, 32));
    EXPECT_FALSE(cards::Has(cards::kAll, -1));
    EXPECT_FALSE(cards::Has(cards::Only(kCardMc75i), kCardNovatelE362));
}

TEST(NewRow, NeedsANameThatAnOptionCanSelect) {
    for (const Model& model : cards::kModels) {
        EXPECT_EQ(cards::IsFoundByItsName(model), cards::HasOption(model)) << model.name;
    }
    const auto found = [](const char* name) {
        return cards::IsFoundByItsName({kCardMc75i, name, "", "", cards::kNone});
    };
    EXPECT_FALSE(found("d300"));      // an option that begins with d raises the debug level
    EXPECT_FALSE(found("Xcind1"));    // how the signal is polled is looked for first
    EXPECT_FALSE(found("MC8810"));    // an 881 to the daemon
    EXPECT_FALSE(found("unlisted"));  // in no row
}

}  // namespace
