#include "tools/pages/Template.h"

#include <gmock/gmock.h>

namespace velmo::Pages {
namespace {

TEST(Template, ReplacesEachMarkAndRefusesAWrongOne) {
    const Marks marks{{"A", "@B@"}, {"B_C", ""}};
    const std::pair<std::string_view, std::optional<std::string>> cases[] = {
        {"@A@@B_C@", "@B@"},
        {"x@A@y@B_C@z", "x@B@yz"},
        {"\"$@\" @ @@ @a@ @A b@ @B_C@@A@@", "\"$@\" @ @@ @a@ @A b@ @B@@"},
        {"@A@ @B_C@ @D@", {}},
        {"@A@", {}},
        {"@B_C", {}},
        {"", {}},
    };
    for (const auto& [text, result] : cases)
        EXPECT_EQ(filled(text, marks), result) << text;
}

} // namespace
} // namespace velmo::Pages
