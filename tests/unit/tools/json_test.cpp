#include "modemctl/json.h"

#include <gtest/gtest.h>

namespace modemctl {
namespace {

TEST(Json, BeginsWithItsSchemaAndEndsWhatIsOpen) {
    JsonWriter json("modemctl.sample/1");
    json.Number("number", -7);
    json.Decimal("decimal", -8.5);
    json.Bool("yes", true);
    json.Null("nothing");
    json.Number("maybe", std::optional<long long>());
    json.Texts("words", {"a", "b"});
    json.BeginArray("rows");
    json.BeginElement();
    json.Text("name", "x\ny");
    json.End();
    json.BeginElement();
    EXPECT_EQ(json.Finish(),
              R"({"schema":"modemctl.sample/1","number":-7,"decimal":-8.5,"yes":true,)"
              R"("nothing":null,"maybe":null,"words":["a","b"],"rows":[{"name":"x\u000ay"},{}]})");
}

}  // namespace
}  // namespace modemctl
