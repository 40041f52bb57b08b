#include "vancorexml/main/parser/DeclarationBlank.h"

#include <string>

#include "tests/common/TestSupport.h"

namespace {

using namespace std::string_literals;

// Returns the start of the document with the blank that is missing.
std::string Complete(std::string start)
{
    const DeclarationBlank missing(start);
    if (missing.IsMissing())
        start.replace(missing.Offset(), missing.ReplacedLength(), missing.Blank());
    return start;
}

// Returns the ASCII text with `before` zeros in front of each character and `behind` zeros behind it.
std::string Widen(const std::string& text, std::size_t before, std::size_t behind)
{
    std::string wide;
    for (const char character : text)
        wide += std::string(before, '\0') + character + std::string(behind, '\0');
    return wide;
}

struct Form {
    const char* name;
    std::string mark;
    std::size_t before;
    std::size_t behind;
};

const Form forms[] = {
    {"ASCII", "", 0, 0},
    {"UTF-8 with a mark", "\xEF\xBB\xBF", 0, 0},
    {"UTF-16LE", "", 0, 1},
    {"UTF-16BE", "", 1, 0},
    {"UTF-16LE with a mark", "\xFF\xFE", 0, 1},
    {"UTF-16BE with a mark", "\xFE\xFF", 1, 0},
    {"UTF-32LE with a mark", "\xFF\xFE\0\0"s, 0, 3},
    {"UTF-32BE with a mark", "\0\0\xFE\xFF"s, 3, 0},
};

}  // namespace

TEST(DeclarationBlankTest, BlankGoesInFrontOfALineEndAndReplacesATab)
{
    for (const Form& form : forms) {
        const auto encode = [&](const char* text) { return form.mark + Widen(text, form.before, form.behind); };
        EXPECT_EQ(Complete(encode("<?xml\nv")), encode("<?xml \nv")) << form.name;
        EXPECT_EQ(Complete(encode("<?xml\rv")), encode("<?xml \rv")) << form.name;
        EXPECT_EQ(Complete(encode("<?xml\tv")), encode("<?xml v")) << form.name;
        EXPECT_EQ(Complete(encode("<?xml\n")), encode("<?xml \n")) << form.name;
    }
}

TEST(DeclarationBlankTest, OtherStartsStay)
{
    for (const Form& form : forms) {
        for (const char* text :
            {"", "<", "<?xm", "<?xml", "<?xml v", "<?xml?>", "<?xml-stylesheet\n", "<?XML\n", " <?xml\n", "<a\n"}) {
            const std::string start = form.mark + Widen(text, form.before, form.behind);
            EXPECT_EQ(Complete(start), start) << form.name << ": " << text;
            EXPECT_FALSE(DeclarationBlank(start).IsMissing()) << form.name << ": " << text;
        }
    }
    // Half of a character.
    EXPECT_FALSE(DeclarationBlank(Widen("<?xml", 0, 1) + "\n").IsMissing());
    // A character that only ends like a line end.
    EXPECT_FALSE(DeclarationBlank(Widen("<?xml", 1, 0) + "\x01\n").IsMissing());
}

TEST(DeclarationBlankTest, LongestStartFits)
{
    for (const Form& form : forms) {
        const std::string start = form.mark + Widen("<?xml\n", form.before, form.behind);
        EXPECT_LE(start.size(), DeclarationBlank::StartLength) << form.name;
        EXPECT_LE(DeclarationBlank(start).Blank().size(), DeclarationBlank::LongestBlank) << form.name;
    }
}
