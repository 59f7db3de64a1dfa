// The table of cards against what routers in the field count on.
#include "state/cards.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using cards::Mark;
using cards::Model;
using cards::ModelOfOption;

CardType TypeOfOption(const char* option) {
    const Model* model = ModelOfOption(option);
    return model == nullptr ? kCardGeneric : model->type;
}

TEST(Cards, AreLoggedAndMarkedAsTheyAlwaysWere) {
    const struct {
        int type;
        const char* name;
        const char* logged_as;
        Mark mark;
    } rows[] = {
        {0, "generic", "", Mark::kNone},
        {2, "881", "Sierra 881", Mark::kNone},
        {7, "E362", "Novatel E362/USB551L", Mark::kIsE362},
        {8, "E371", "Novatel E371/MC679", Mark::kIsNotE362},
        {4, "USB305", "Sierra USB 305 Lightning", Mark::kNone},
        {6, "mc75i", "Centerion MC75i", Mark::kIsMc75i},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const Model* model = cards::ModelOfType(row.type);
        ASSERT_NE(model, nullptr);
        EXPECT_STREQ(model->name, row.name);
        EXPECT_STREQ(model->logged_as, row.logged_as);
        EXPECT_EQ(model->mark, row.mark);
    }
    EXPECT_EQ(cards::ModelOfType(kCardType3), nullptr);
    EXPECT_EQ(cards::ModelOfType(-1), nullptr);
}

TEST(Cards, CanDoWhatTheyAlwaysCould) {
    const struct {
        CardType type;
        bool registers;
        bool has_lte_call;
        bool takes_messages;
    } rows[] = {
        {kCardGeneric, false, false, false},   {kCardSierra881, true, false, true},
        {kCardType3, false, false, false},     {kCardSierraUsb305, true, false, false},
        {kCardMc75i, false, false, false},     {kCardNovatelE362, true, true, false},
        {kCardNovatelE371, true, true, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.type);
        EXPECT_EQ(cards::Has(cards::kRegistering, row.type), row.registers);
        EXPECT_EQ(cards::Has(cards::kLte, row.type), row.has_lte_call);
        EXPECT_EQ(cards::Has(cards::kMessaging, row.type), row.takes_messages);
    }
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
