// KEY=value files: entries, labels, fields, and the reader's two oddities.
#include "support/info_table.h"

#include <sstream>
#include <string>
#include <vector>

#include "fakes/fixture.h"

namespace {

using Tokens = std::vector<std::string>;

class InfoTable : public fake::DaemonTest {
  protected:
    cInfoTable Table(const std::string& text) { return cInfoTable(WriteTemp("table", text), '='); }
    // The tokens of the only entry that the line makes; empty when it makes none.
    Tokens EntryOf(const std::string& line) {
        const cInfoTable table = Table(line + "\n");
        return table.empty() ? Tokens() : Tokens(table[0]);
    }
    // By value; the form for C strings is tested on its own.
    static std::string FieldOf(const cInfoTable& table, const std::string& label, size_t index) {
        return table.GetInfoField(label, index);
    }
};

TEST_F(InfoTable, ReadsEntriesAndSkipsCommentsAndBlankLines) {
    const cInfoTable table = Table("# a comment\n\nAPN=internet\n USER = bob \n");
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table.GetValue("APN"), "internet");
    EXPECT_EQ(table.GetValue("USER"), "bob");
}

TEST_F(InfoTable, TurnsALineIntoTokens) {
    struct Row {
        const char* line;
        Tokens expected;
    };
    const Row rows[] = {
        {"KEY=value", {"KEY", "value"}},
        {"  KEY \t=  value \r", {"KEY", "value"}},
        {"KEY=", {"KEY", ""}},
        {"KEY=a=b", {"KEY", "a", "b"}},
        {"A==B", {"A", "B", "B"}},
        {"=value", {"value", "value"}},
        {"=#value", {"#value", "#value"}},
        {"WORD", {"WORD"}},
        {"KEY=my value", {"KEY", "my value"}},
        {"KEY=#5", {"KEY", "#5"}},
        {"KE#Y=5", {"KE#Y", "5"}},
        {"\"KEY\"=\"a\"", {"\"KEY\"", "\"a\""}},
        {"[section]", {"[section]"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        EXPECT_EQ(EntryOf(row.line), row.expected);
    }
}

TEST_F(InfoTable, SomeLinesMakeNoEntry) {
    for (const char* line :
         {"", " ", "\r", " \t\v\f\r", "#KEY=value", "  \t# KEY=value", " =value", "\t= x"}) {
        SCOPED_TRACE(line);
        EXPECT_EQ(EntryOf(line), Tokens());
    }
}

// Deliberate: a last line without a line end reads so, and always has.
// Guards oddity last-character-doubled.
TEST_F(InfoTable, TheLastCharacterOfTheFileIsDoubled) {
    EXPECT_EQ(Table("A=12").GetValue("A"), "122");
    EXPECT_EQ(Table("SYNC_TIME=yes").GetValue("SYNC_TIME"), "yess");
    EXPECT_EQ(Table("A=12\n").GetValue("A"), "12");
    EXPECT_EQ(Table("A=12\n").size(), 1u);
    EXPECT_EQ(EntryOf("A=1\nB="), (Tokens{"A", "1"}));
    EXPECT_EQ(Table("B=").GetEntry("B").GetTokenCount(), 3u);
}

TEST_F(InfoTable, TheFirstOfTwoEqualLabelsWins) {
    const cInfoTable table = Table("A=1\nA=2\n");
    ASSERT_EQ(table.size(), 2u);
    EXPECT_EQ(table.GetEntry("A")[1], "1");
    EXPECT_EQ(table.GetValue("A"), "1");
    EXPECT_EQ(FieldOf(table, "A", 1), "1");
}

TEST_F(InfoTable, LabelsAreCaseSensitiveAndWhole) {
    const cInfoTable table = Table("Apn=x\n");
    EXPECT_TRUE(table.HasLabel("Apn"));
    EXPECT_FALSE(table.HasLabel("APN"));
    EXPECT_FALSE(table.HasLabel("Ap"));
    EXPECT_FALSE(table.HasLabel(""));
}

TEST_F(InfoTable, OnlyHasLabelTellsAnEmptyValueFromAMissingOne) {
    const cInfoTable table = Table("EMPTY=\n");
    EXPECT_EQ(FieldOf(table, "EMPTY", 1), "");
    EXPECT_EQ(FieldOf(table, "MISSING", 1), "");
    EXPECT_TRUE(table.HasLabel("EMPTY"));
    EXPECT_FALSE(table.HasLabel("MISSING"));
}

TEST_F(InfoTable, AMissingLabelGivesTheEmptyEntry) {
    EXPECT_EQ(Table("A=1\n").GetEntry("B").GetTokenCount(), 0u);
}

TEST_F(InfoTable, ALabelWithoutSeparatorReadsAsAnEmptyValue) {
    const cInfoTable table = Table("TO\n");
    EXPECT_TRUE(table.HasLabel("TO"));
    EXPECT_EQ(table.GetEntry("TO").GetTokenCount(), 1u);
    EXPECT_EQ(table.GetValue("TO"), "");
}

TEST_F(InfoTable, AFieldLookupPassesOverEntriesThatAreTooShort) {
    const cInfoTable table = Table("A=1\nA=2=3\n");
    EXPECT_EQ(FieldOf(table, "A", 1), "1");
    EXPECT_EQ(FieldOf(table, "A", 2), "3");
    EXPECT_EQ(FieldOf(table, "A", 3), "");
    EXPECT_EQ(FieldOf(table, "A", 0), "A");
}

TEST_F(InfoTable, TheCStringLookupPointsIntoTheTableOrIsNull) {
    const cInfoTable table = Table("A=1\nA=2=3\nE=\n");
    EXPECT_STREQ(table.GetInfoField("A", 2), "3");
    EXPECT_EQ(table.GetInfoField("A", 1), table[0][1].c_str());
    EXPECT_STREQ(table.GetInfoField("E", 1), "");
    EXPECT_EQ(table.GetInfoField("A", 9), nullptr);
    EXPECT_EQ(table.GetInfoField("B", 1), nullptr);
}

TEST_F(InfoTable, AMissingFileGivesAnEmptyTable) {
    cInfoTable table(Folder() + "/none", '=');
    EXPECT_TRUE(table.empty());
    EXPECT_FALSE(table.Load());
    EXPECT_FALSE(table.HasLabel("A"));
    EXPECT_EQ(table.GetValue("A"), "");
}

TEST_F(InfoTable, LoadReadsTheFileAnew) {
    cInfoTable table = Table("A=1\n");
    WriteTemp("table", "B=2\n");
    EXPECT_TRUE(table.Load());
    EXPECT_FALSE(table.HasLabel("A"));
    EXPECT_EQ(table.GetValue("B"), "2");
}

TEST_F(InfoTable, LoadOfAFileThatIsGoneEmptiesTheTable) {
    cInfoTable table = Table("A=1\n");
    std::remove((Folder() + "/table").c_str());
    EXPECT_FALSE(table.Load());
    EXPECT_TRUE(table.empty());
}

TEST_F(InfoTable, AnEmptyFileLoadsAndHoldsNothing) {
    cInfoTable table = Table("");
    EXPECT_TRUE(table.Load());
    EXPECT_TRUE(table.empty());
}

TEST_F(InfoTable, EveryFormOfTheConstructorLoads) {
    const std::string path = WriteTemp("blank", "A 1\n");
    EXPECT_EQ(cInfoTable(path).GetValue("A"), "1");
    EXPECT_EQ(cInfoTable(path, ' ').GetValue("A"), "1");
    EXPECT_EQ(cInfoTable(path, " ").GetValue("A"), "1");
    EXPECT_EQ(cInfoTable(path, std::string(" ")).GetValue("A"), "1");
    EXPECT_TRUE(cInfoTable().empty());
}

TEST_F(InfoTable, ACopyHoldsTheSameEntries) {
    const cInfoTable table = Table("A==1\n");
    const cInfoTable copy(table);
    EXPECT_EQ(Tokens(copy[0]), (Tokens{"A", "1", "1"}));
    EXPECT_EQ(copy.GetValue("A"), "1");
}

TEST_F(InfoTable, ANewSeparatorParsesTheHeldTextAgain) {
    const std::string path = WriteTemp("t", "A=1:2\n");
    cInfoTable table(path, '=');
    std::remove(path.c_str());
    table.SetSeparator(':');
    EXPECT_EQ(table.GetValue("A=1"), "2");
    table.SetSeparator(std::string("="));
    EXPECT_EQ(table.GetValue("A"), "1:2");
}

TEST_F(InfoTable, ANewSeparatorLoadsTheFileWhenNothingIsHeld) {
    const std::string path = Folder() + "/later";
    cInfoTable table(path, '=');
    WriteTemp("later", "A:1\n");
    table.SetSeparator(':');
    EXPECT_EQ(table.GetValue("A"), "1");
}

TEST_F(InfoTable, DumpsLabelsAndFieldsWithCrLfAndANul) {
    std::ostringstream text;
    const std::string path = WriteTemp("table", "A=1=2\nB\n");
    cInfoTable(path, '=').DumpTo(text);
    const std::string expected = "Table '" + path +
                                 "' Contents:\r\n"
                                 "\t-- Entry #1 -- \r\n"
                                 "\t\tLabel: 'A'\r\n"
                                 "\t\t\tInfo Field #1: '1'\r\n"
                                 "\t\t\tInfo Field #2: '2'\r\n"
                                 "\t-- Entry #2 -- \r\n"
                                 "\t\tLabel: 'B'\r\n";
    EXPECT_EQ(text.str(), expected + '\0');
}

TEST_F(InfoTable, DumpsOnlyTheNulWhenEmpty) {
    std::ostringstream text;
    cInfoTable().DumpTo(text);
    EXPECT_EQ(text.str(), std::string(1, '\0'));
}

TEST_F(InfoTable, BinaryRubbishIsReadWithoutHarm) {
    std::string rubbish;
    for (int i = 0; i < 5000; ++i) rubbish += static_cast<char>(i * 7919 >> 3);
    const cInfoTable table = Table(rubbish + "\nA=1\n");
    EXPECT_EQ(table.GetValue("A"), "1");
    for (const cStringTokenizer& entry : table) EXPECT_GE(entry.GetTokenCount(), 1u);
}

}  // namespace
