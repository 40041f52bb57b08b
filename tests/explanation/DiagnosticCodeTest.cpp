#include "vancorexml/main/parser/DiagnosticCode.h"

#include <gtest/gtest.h>

#include <cctype>
#include <set>
#include <string>

namespace {

TEST(DiagnosticCodeTest, EachCodeHasANameOfItsOwn)
{
    std::set<std::string> names;
    for (const DiagnosticCode code : GetDiagnosticCodes()) {
        const std::string name = GetDiagnosticName(code);
        EXPECT_TRUE(names.insert(name).second) << name;
        for (const char character : name)
            EXPECT_TRUE(character == '-' || std::islower(static_cast<unsigned char>(character)) != 0) << name;
    }
    EXPECT_GE(names.size(), 40u);
}

// Programs compare these names.
TEST(DiagnosticCodeTest, NamesDoNotChange)
{
    EXPECT_STREQ(GetDiagnosticName(DiagnosticCode::Other), "other");
    EXPECT_STREQ(GetDiagnosticName(DiagnosticCode::UnclosedElement), "unclosed-element");
    EXPECT_STREQ(GetDiagnosticName(DiagnosticCode::UndeclaredAttribute), "undeclared-attribute");
    EXPECT_STREQ(GetDiagnosticName(DiagnosticCode::MissingSchema), "missing-schema");
}

}  // namespace
