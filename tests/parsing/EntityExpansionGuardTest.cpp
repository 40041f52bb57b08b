// The guard only computes the sizes of expansions. These tests compare it with a reference that expands.

#include "vancorexml/main/parser/EntityExpansionGuard.h"

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <xercesc/framework/MemBufInputSource.hpp>

#include "tests/parsing/ParsingTestSupport.h"
#include "vancorexml/main/parser/XercesPlatform.h"

namespace {

enum class Subject { Document, Schema };

// Returns the message of the guard, or an empty text if the guard accepts `text`.
std::string Check(Subject subject, const std::string& text, const ExpansionLimits& limits)
{
    const XercesInitializer xerces;
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "id");
    const EntityExpansionGuard guard(limits);
    const auto excess = subject == Subject::Document ? guard.CheckDocument(source) : guard.CheckSchema(source);
    return excess ? excess->message.toStdString() : "";
}

std::string MessageOf(std::uint64_t limit, const std::string& things)
{
    return "parser has encountered more than '" + std::to_string(limit) + "' " + things +
        " in the document; this is the limit imposed by the application";
}

// A piece of the value of an entity.
struct Piece {
    std::string written;
    std::size_t read = 0;  // its length in the replacement text, in UTF-16 code units
    std::size_t text = 0;  // its length when expanded, without referenced entities
    int entity = -1;       // the index of the referenced entity; -1 for none
};

struct Entity {
    std::vector<Piece> pieces;
    bool hasMarkup = false;
};

// The reference: expands one entity after the other, as a parser does.
class Expander {
public:
    explicit Expander(const ExpansionLimits& limits) : m_limits(limits) {}

    std::vector<Entity> entities;
    std::set<int> declared;
    std::string message;    // of the first limit that is exceeded; empty for none
    bool isFaulty = false;  // true if an entity contains itself
    std::uint64_t text = 0;

    void ExpandReference(int entity, std::uint64_t& count, bool hasCountLimit)
    {
        if (!message.empty() || isFaulty)
            return;
        Expand(entity, count);
        CheckLimits(count, hasCountLimit);
    }
    void ExpandParameterEntity(const Entity& entity, const std::vector<Entity>& parameterEntities, std::uint64_t& count)
    {
        ++count;
        for (const Piece& piece : entity.pieces) {
            text += piece.text;
            m_read += piece.read;
        }
        CheckLimits(count, true);
        for (const Piece& piece : entity.pieces) {
            if (piece.entity >= 0 && message.empty()) {
                const Entity& inner = parameterEntities[static_cast<std::size_t>(piece.entity)];
                ExpandParameterEntity(inner, parameterEntities, count);
            }
        }
    }

private:
    void CheckLimits(std::uint64_t count, bool hasCountLimit)
    {
        if (!message.empty())
            return;
        if (hasCountLimit && count > m_limits.expansions)
            message = MessageOf(m_limits.expansions, "entity expansions");
        else if (text > m_limits.text)
            message = MessageOf(m_limits.text, "characters of entities");
        else if (m_read > m_limits.read)
            message = MessageOf(m_limits.read, "characters of entities and references within them");
    }
    void Expand(int entity, std::uint64_t& count)
    {
        if (isFaulty || !declared.contains(entity))
            return;
        if (!m_open.insert(entity).second) {
            isFaulty = true;
            return;
        }
        ++count;
        for (const Piece& piece : entities[static_cast<std::size_t>(entity)].pieces) {
            text += piece.text;
            m_read += piece.read;
        }
        for (const Piece& piece : entities[static_cast<std::size_t>(entity)].pieces) {
            if (piece.entity >= 0)
                Expand(piece.entity, count);
        }
        m_open.erase(entity);
    }

    ExpansionLimits m_limits;
    std::uint64_t m_read = 0;
    std::set<int> m_open;
};

// A random document. Computes the size of its expansion while it writes the document.
class RandomDocument {
public:
    RandomDocument(unsigned seed, const ExpansionLimits& limits, bool hasCountLimit)
        : expander(limits),
          m_random(seed),
          m_hasCountLimit(hasCountLimit)
    {
        MakeEntities();
        text = "<!DOCTYPE r [";
        for (std::size_t step = 0; step < 14; ++step)
            WriteDeclaration();
        while (m_written < expander.entities.size())
            DeclareNext();
        prologText = expander.text;
        text += "]><r>";
        while (Below(12) != 0)
            WriteContent();
        text += "</r>";
    }

    std::string text;
    Expander expander;
    std::size_t length = 0;  // of texts and attribute values, without entities
    std::uint64_t contentCount = 0;
    std::uint64_t prologText = 0;  // the expander's `text` before the content

    bool HasMarkupInEntities() const
    {
        const auto hasMarkup = [](const Entity& entity) { return entity.hasMarkup; };
        return std::any_of(expander.entities.begin(), expander.entities.end(), hasMarkup);
    }

private:
    std::size_t Below(std::size_t limit) { return m_random() % limit; }

    static Piece Reference(int entity)
    {
        const std::string written = "&e" + std::to_string(entity) + ";";
        return {written, written.size(), 0, entity};
    }

    Piece RandomText()
    {
        const Piece texts[] = {
            {"abc", 3, 3},
            {"\xC3\xA9", 1, 1},
            {"\xF0\x9F\x98\x80", 2, 2},
            {"&lt;", 4, 1},
            {"&#65;", 1, 1},
            {"&#38;#65;", 5, 1},
            {"&#38;#x1F600;", 9, 2},
            {"&#38;amp;", 5, 1},
        };
        return texts[Below(std::size(texts))];
    }

    void MakeEntities()
    {
        const std::size_t count = 1 + Below(6);
        // In one document of six, entities may contain themselves.
        const bool mayContainThemselves = Below(6) == 0;
        for (std::size_t i = 0; i < count; ++i)
            expander.entities.push_back({{}, Below(3) == 0});
        for (std::size_t i = 0; i < count; ++i) {
            for (std::size_t k = Below(4); k > 0; --k)
                AddPiece(expander.entities[i], mayContainThemselves ? Below(count) : Below(i + 1), i);
        }
    }

    // Adds a reference to the entity `inner`. Adds other text instead if `inner` is `self`, or if it has
    // markup that `entity` must not have.
    void AddPiece(Entity& entity, std::size_t inner, std::size_t self)
    {
        const bool isPlain = !expander.entities[inner].hasMarkup;
        const Piece reference = Reference(static_cast<int>(inner));
        if (inner == self || (!isPlain && !entity.hasMarkup) || Below(3) == 0) {
            entity.pieces.push_back(entity.hasMarkup && Below(2) == 0 ? RandomMarkup() : RandomText());
        } else if (entity.hasMarkup && isPlain && Below(2) == 0) {
            entity.pieces.push_back({"<i a='", 6, 6});
            entity.pieces.push_back(reference);
            entity.pieces.push_back({"'/>", 3, 3});
        } else {
            entity.pieces.push_back(reference);
        }
    }

    Piece RandomMarkup()
    {
        const Piece markup[] = {
            {"<!--&e0;-->", 11, 11},
            {"<b>x</b>", 8, 8},
            {"<?p &e0;?>", 10, 10},
            {"<![CDATA[&e0;]]>", 16, 16},
        };
        return markup[Below(std::size(markup))];
    }

    void DeclareNext()
    {
        const Entity& entity = expander.entities[m_written];
        text += "<!ENTITY e" + std::to_string(m_written) + " \"";
        for (const Piece& piece : entity.pieces)
            text += piece.written;
        text += "\">";
        // Declare the same name again. The parser ignores the second declaration.
        if (Below(4) == 0)
            text += "<!ENTITY e" + std::to_string(m_written) + " 'an ignored value'>";
        expander.declared.insert(static_cast<int>(m_written++));
    }

    void WriteDeclaration()
    {
        switch (Below(4)) {
        case 0:
            if (m_written < expander.entities.size())
                DeclareNext();
            break;
        case 1: DeclareParameterEntity(); break;
        case 2:
            if (!m_parameterEntities.empty()) {
                const std::size_t entity = Below(m_parameterEntities.size());
                text += "%p" + std::to_string(entity) + ";";
                if (expander.message.empty() && !expander.isFaulty)
                    expander.ExpandParameterEntity(m_parameterEntities[entity], m_parameterEntities, m_prologCount);
            }
            break;
        default:
            text += "<!ATTLIST never d" + std::to_string(m_defaults++) + " CDATA '";
            WriteValue(m_prologCount, true, m_ignoredLength);
            text += "'>";
        }
    }

    void DeclareParameterEntity()
    {
        Entity entity;
        for (std::size_t k = Below(4); k > 0; --k) {
            if (!m_parameterEntities.empty() && Below(2) == 0) {
                const int inner = static_cast<int>(Below(m_parameterEntities.size()));
                const std::string name = "p" + std::to_string(inner) + ";";
                entity.pieces.push_back({"&#37;" + name, name.size() + 1, 0, inner});
            } else {
                const Piece markup[] = {
                    {"<!--c-->", 8, 8},
                    {"<!--&#37;p0;-->", 11, 11},
                    {" ", 1, 1},
                    {"<!ENTITY late 'x'>", 18, 18},
                };
                entity.pieces.push_back(markup[Below(std::size(markup))]);
            }
        }
        text += "<!ENTITY % p" + std::to_string(m_parameterEntities.size()) + " \"";
        for (const Piece& piece : entity.pieces)
            text += piece.written;
        text += "\">";
        m_parameterEntities.push_back(entity);
    }

    // Writes an attribute value without its quotes.
    void WriteValue(std::uint64_t& count, bool hasCountLimit, std::size_t& written)
    {
        for (std::size_t k = Below(4); k > 0; --k) {
            const int entity = static_cast<int>(Below(expander.entities.size()));
            const bool hasMarkup = expander.entities[static_cast<std::size_t>(entity)].hasMarkup;
            if (expander.declared.contains(entity) && !hasMarkup && Below(2) == 0) {
                text += Reference(entity).written;
                expander.ExpandReference(entity, count, hasCountLimit);
            } else {
                text += "&amp;y";
                written += 2;
            }
        }
    }

    void WriteContent()
    {
        switch (Below(4)) {
        case 0: {
            text += "<a b='";
            WriteValue(contentCount, m_hasCountLimit, length);
            text += "'/>";
            break;
        }
        case 1:
            text += "<![CDATA[&e0;]]>";
            length += 4;
            break;
        case 2:
            text += "<!--&e0;--><?p &e0;?>z";
            length += 1;
            break;
        default: {
            const int entity = static_cast<int>(Below(expander.entities.size()));
            text += Reference(entity).written;
            expander.ExpandReference(entity, contentCount, m_hasCountLimit);
        }
        }
    }

    std::mt19937 m_random;
    bool m_hasCountLimit;
    std::vector<Entity> m_parameterEntities;
    std::size_t m_written = 0;
    std::size_t m_defaults = 0;
    std::size_t m_ignoredLength = 0;
    std::uint64_t m_prologCount = 0;
};

ExpansionLimits RandomLimits(unsigned seed)
{
    std::mt19937 random(seed);
    ExpansionLimits limits;
    limits.expansions = 1 + random() % 60;
    limits.text = 1 + random() % 200;
    limits.read = 1 + random() % 400;
    return limits;
}

constexpr unsigned RandomDocuments = 3000;

// Compares the reference itself with the parser, because the following tests rely on the reference.
TEST(EntityExpansionGuardTest, ReferenceAgreesWithTheParser)
{
    int compared = 0;
    for (unsigned seed = 0; seed < RandomDocuments; ++seed) {
        const RandomDocument document(seed, ExpansionLimits{}, true);
        if (document.HasMarkupInEntities())
            continue;
        Utf8InputSource source(document.text, "id", false);
        const auto handler = std::make_shared<testsupport::MeasuringHandler>();
        const auto parser = XercesXMLParser::Create(source, handler);
        parser->Parse();
        if (parser->HasErrors())
            continue;
        ++compared;
        const std::uint64_t expanded = document.expander.text - document.prologText;
        ASSERT_EQ(handler->length, document.length + expanded) << document.text;
    }
    EXPECT_GT(compared, static_cast<int>(RandomDocuments) / 20);
}

TEST(EntityExpansionGuardTest, AgreesWithTheReferenceOnRandomSchemas)
{
    for (unsigned seed = 0; seed < RandomDocuments; ++seed) {
        const ExpansionLimits limits = RandomLimits(seed);
        const RandomDocument document(seed, limits, true);
        ASSERT_EQ(Check(Subject::Schema, document.text, limits), document.expander.message) << document.text;
    }
}

TEST(EntityExpansionGuardTest, AgreesWithTheReferenceOnRandomDocuments)
{
    int compared = 0;
    for (unsigned seed = 0; seed < RandomDocuments; ++seed) {
        const ExpansionLimits limits = RandomLimits(seed);
        const RandomDocument document(seed, limits, false);
        // The parser enforces this limit, not the guard.
        if (document.contentCount > limits.expansions)
            continue;
        ++compared;
        ASSERT_EQ(Check(Subject::Document, document.text, limits), document.expander.message) << document.text;
    }
    EXPECT_GT(compared, static_cast<int>(RandomDocuments) / 2);
}

// Declares the entities e0 to e(count - 1). Each one after the first contains the one before. `sign` begins a
// reference.
std::string Chain(const std::string& sign, int count)
{
    const std::string kind = sign == "&" ? "" : "% ";
    std::string text = "<!ENTITY " + kind + "e0 ''>";
    for (int i = 1; i < count; ++i)
        text += "<!ENTITY " + kind + "e" + std::to_string(i) + " '" + sign + "e" + std::to_string(i - 1) + ";'>";
    return text;
}

struct SizeRow {
    const char* name;
    std::string text;
    std::uint64_t size;
};

// Entities of 10, 20, 0 and 1000 units.
const std::string Unused = "<!ENTITY unused '" + std::string(1000, 'x') + "'>";
const std::string Entities = "<!ENTITY ten '0123456789'><!ENTITY twice '&ten;&ten;'><!ENTITY none ''>" + Unused;

const SizeRow TextRows[] = {
    {"nothing used", "<!DOCTYPE r [" + Entities + "]><r/>", 0},
    {"a text", "<!DOCTYPE r [" + Entities + "]><r>&ten;a&ten;</r>", 20},
    {"an attribute", "<!DOCTYPE r [" + Entities + "]><r a='&ten;b' c='&none;&ten;'/>", 20},
    {"a default value", "<!DOCTYPE r [" + Entities + "<!ATTLIST r a CDATA 'x&ten;' b CDATA #FIXED '&ten;'>]><r/>", 20},
    {"a second default value that is ignored",
        "<!DOCTYPE r [" + Entities + "<!ATTLIST r a CDATA ''><!ATTLIST r a CDATA '&ten;'>]><r/>",
        10},
    {"nested entities", "<!DOCTYPE r [" + Entities + "]><r a='&twice;'>&twice;</r>", 40},
    {"an entity declared twice", "<!DOCTYPE r [" + Entities + "<!ENTITY ten '&unused;'>]><r>&ten;</r>", 10},
    {"blanks that an attribute drops",
        "<!DOCTYPE r [<!ENTITY e '          '><!ATTLIST r a NMTOKENS #IMPLIED>]><r a='&e;b'/>",
        10},
    {"an attribute within an entity", "<!DOCTYPE r [" + Entities + "<!ENTITY e \"<a b='&ten;'/>\">]><r>&e;</r>", 19},
    {"a comment within an entity", "<!DOCTYPE r [<!ENTITY e '<!--&e;-->'>]><r>&e;</r>", 10},
    {"a parameter entity", "<!DOCTYPE r [<!ENTITY % p '<!--xyz-->'>%p;%p;]><r/>", 20},
    {"nested parameter entities", "<!DOCTYPE r [<!ENTITY % p '<!--xyz-->'><!ENTITY % q '&#37;p;&#37;p;'>%q;]><r/>", 20},
    {"an entity that a parameter entity declares",
        "<!DOCTYPE r [<!ENTITY % p \"<!ENTITY e '123456789012'>\">%p;]><r a='&e;'>&e;</r>",
        50},
    {"all kinds of expansions",
        "<!DOCTYPE r [" + Entities +
            "<!ENTITY % p '<!--xyz-->'>%p;<!ATTLIST r d CDATA '&ten;'>]>"
            "<r a='&ten;'>&ten;</r>",
        40},
    {"an unparsed entity before a used one",
        "<!DOCTYPE r [<!NOTATION n SYSTEM 'n'><!ENTITY u SYSTEM 'u' NDATA n>" + Entities + "]><r a='&ten;'/>",
        10},
    {"a document with an external subset", "<!DOCTYPE r SYSTEM 'r.dtd' [" + Entities + "]><r a='&ten;&unknown;'/>", 10},
    {"no entities", "<!DOCTYPE r [<!ATTLIST r a CDATA '0123456789'>]><r>&amp;&#65;</r>", 0},
};

// Checks that the text of the row reaches the limit, in a document and in a schema, and exceeds the next smaller limit.
void ExpectExactLimit(const SizeRow& row, std::uint64_t ExpansionLimits::*limit, const char* counted)
{
    for (const Subject subject : {Subject::Document, Subject::Schema}) {
        SCOPED_TRACE(row.name);
        ExpansionLimits limits;
        limits.*limit = row.size;
        EXPECT_EQ(Check(subject, row.text, limits), "");
        if (row.size == 0)
            continue;
        --(limits.*limit);
        EXPECT_EQ(Check(subject, row.text, limits), MessageOf(limits.*limit, counted));
    }
}

TEST(EntityExpansionGuardTest, AllowsExactlyTheLimitOfText)
{
    for (const SizeRow& row : TextRows)
        ExpectExactLimit(row, &ExpansionLimits::text, "characters of entities");
}

const SizeRow CountRows[] = {
    {"parameter entities", "<!DOCTYPE r [<!ENTITY % p ''><!ENTITY % q '&#37;p;&#37;p;'>%p;%q;]><r/>", 4},
    {"default values", "<!DOCTYPE r [" + Entities + "<!ATTLIST r a CDATA '&ten;&twice;&none;'>]><r/>", 5},
    {"parameter entities and default values",
        "<!DOCTYPE r [<!ENTITY % p ''>%p;" + Entities + "<!ATTLIST r a CDATA '&ten;'>]><r/>",
        2},
};

TEST(EntityExpansionGuardTest, AllowsExactlyTheLimitOfExpansionsInDeclarations)
{
    for (const SizeRow& row : CountRows)
        ExpectExactLimit(row, &ExpansionLimits::expansions, "entity expansions");
}

const SizeRow MarkupRows[] = {
    {"elements", "<!DOCTYPE r [" + Entities + "<!ENTITY e '<a/>&ten;'>]><r>&e;&ten;&e;</r>", 8},
    {"elements within a text", "<!DOCTYPE r [<!ENTITY e '<a/>'><!ENTITY f 'text&e;&e;'>]><r>&f;</r>", 8},
    {"declarations", "<!DOCTYPE r [<!ENTITY % p '<!ELEMENT r ANY>'><!ENTITY % q '&#37;p;'>%p;%q;]><r/>", 32},
};

TEST(EntityExpansionGuardTest, AllowsExactlyTheLimitOfMarkup)
{
    for (const SizeRow& row : MarkupRows)
        ExpectExactLimit(row, &ExpansionLimits::markup, "characters of entities with markup");
}

TEST(EntityExpansionGuardTest, LimitsContentExpansionsOnlyInSchemas)
{
    const std::string text = "<!DOCTYPE r [" + Entities + "]><r a='&ten;'>&twice;</r>";
    ExpansionLimits limits;
    limits.expansions = 4;
    EXPECT_EQ(Check(Subject::Schema, text, limits), "");
    limits.expansions = 3;
    EXPECT_EQ(Check(Subject::Schema, text, limits), MessageOf(3, "entity expansions"));
    EXPECT_EQ(Check(Subject::Document, text, limits), "");
}

TEST(EntityExpansionGuardTest, LongReferencesWithinEntitiesAreLimited)
{
    const std::string name(100, 'n');
    const std::string text = "<!DOCTYPE r [<!ENTITY " + name + " 'x'><!ENTITY e '&" + name + ";'>]><r a='&e;&e;&e;'/>";
    ExpansionLimits limits;
    limits.read = 3 * 103;
    EXPECT_EQ(Check(Subject::Document, text, limits), "");
    --limits.read;
    const std::string expected = MessageOf(limits.read, "characters of entities and references within them");
    EXPECT_EQ(Check(Subject::Document, text, limits), expected);
}

TEST(EntityExpansionGuardTest, NestedEntitiesWithLongNamesAreLimited)
{
    const std::string name(100, 'n');
    const std::string general = "<!ENTITY " + name + " 'x'><!ENTITY e '&" + name + ";'><!ENTITY f '&e;'>";
    const std::string inner = "<!ENTITY % " + name + " ''><!ENTITY % e '&#37;" + name + ";'>";
    const std::string parameter = inner + "<!ENTITY % f '&#37;e;'>%f; %f;";
    const std::string documents[] = {
        "<!DOCTYPE r [" + general + "]><r a='&f;'>&f;</r>",
        "<!DOCTYPE r [" + parameter + "]><r/>",
    };
    for (const std::string& text : documents) {
        ExpansionLimits limits;
        limits.compared = 2 * (1 + 2 * 100);
        EXPECT_EQ(Check(Subject::Document, text, limits), "");
        --limits.compared;
        const std::string expected = MessageOf(limits.compared, "characters of the names of nested entities");
        EXPECT_EQ(Check(Subject::Document, text, limits), expected);
    }
}

// Each of these documents has four levels of entities.
const SizeRow LevelRows[] = {
    {"a text", "<!DOCTYPE r [" + Chain("&", 4) + "]><r>&e3;</r>", 4},
    {"an attribute", "<!DOCTYPE r [" + Chain("&", 4) + "]><r a='&e3;'/>", 4},
    {"a default value", "<!DOCTYPE r [" + Chain("&", 4) + "<!ATTLIST r a CDATA '&e3;'>]><r/>", 4},
    {"several references", "<!DOCTYPE r [" + Chain("&", 4) + "<!ENTITY w '&e0;&e2;&e1;'>]><r>&e1;&w;&e1;</r>", 4},
    {"a circle", "<!DOCTYPE r [<!ENTITY a '&b;'><!ENTITY b '&c;'><!ENTITY c '&d;'><!ENTITY d '&a;'>]><r>&a;</r>", 4},
    {"a circle after a deeper entity",
        "<!DOCTYPE r [" + Chain("&", 3) + "<!ENTITY a '&e2;&b;'><!ENTITY b '&a;'>]><r>&a;</r>",
        4},
    {"parameter entities", "<!DOCTYPE r [" + Chain("&#37;", 4) + "%e3;]><r/>", 4},
    {"parameter entities that declare others",
        "<!DOCTYPE r [" + Chain("&#37;", 2) + "<!ENTITY % p \"<!ENTITY &#37; q '&#38;#37;e1;'> &#37;q;\">%p;]><r/>",
        4},
};

TEST(EntityExpansionGuardTest, AllowsExactlyTheLimitOfLevels)
{
    for (const SizeRow& row : LevelRows) {
        for (const Subject subject : {Subject::Document, Subject::Schema}) {
            SCOPED_TRACE(row.name);
            ExpansionLimits limits;
            limits.levels = row.size;
            EXPECT_EQ(Check(subject, row.text, limits), "");
            --limits.levels;
            EXPECT_EQ(Check(subject, row.text, limits), MessageOf(limits.levels, "levels of nested entities"));
        }
    }
}

TEST(EntityExpansionGuardTest, ReportsThePositionOfTheExcess)
{
    const std::string text = "<!DOCTYPE r [" + Entities + "]>\n<r>\n <a b='&ten;'/></r>";
    const XercesInitializer xerces;
    const xercesc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "id");
    ExpansionLimits limits;
    limits.text = 9;
    const auto excess = EntityExpansionGuard(limits).CheckDocument(source);
    ASSERT_TRUE(excess.has_value());
    EXPECT_EQ(excess->line, 3u);
    EXPECT_EQ(excess->column, 16u);
}

TEST(EntityExpansionGuardTest, LeavesFaultyDocumentsToTheParser)
{
    ExpansionLimits limits;
    limits.text = 20;
    const char* const texts[] = {
        "",
        "no XML",
        "<r",
        "<?xml version='1.0' encoding='klingon'?><r/>",
        "<!DOCTYPE r [<!ENTITY e 'x'>",
        "<!DOCTYPE r [<!ENTITY e '&e;'>]><r>&e;&e;</r>",
        "<!DOCTYPE r [<!ENTITY e SYSTEM 'e'>]><r>&e;</r>",
        "<!DOCTYPE r [<!ENTITY % p SYSTEM 'e'>%p;]><r/>",
    };
    for (const char* text : texts) {
        EXPECT_EQ(Check(Subject::Document, text, limits), "") << text;
        EXPECT_EQ(Check(Subject::Schema, text, limits), "") << text;
    }
}

TEST(EntityExpansionGuardTest, CountsExpansionsBeforeACircularReference)
{
    ExpansionLimits limits;
    limits.text = 20;
    const std::string circle = "<!ENTITY a '&twice;&ten;&b;'><!ENTITY b '&a;'>";
    const std::string text = "<!DOCTYPE r [" + Entities + circle + "]><r c='&b;'/>";
    EXPECT_EQ(Check(Subject::Document, text, limits), MessageOf(20, "characters of entities"));
    limits.text = 30;
    EXPECT_EQ(Check(Subject::Document, text, limits), "");
}

TEST(EntityExpansionGuardTest, CountsTheDefaultAttributesOfSchemas)
{
    const std::string text = "<!DOCTYPE r [<!ENTITY e '<a/><a/>'><!ATTLIST a b CDATA 'xy' c CDATA ''>]>"
                             "<r><a/><a b='z'/>&e;</r>";
    ExpansionLimits limits;
    limits.defaults = 7;
    EXPECT_EQ(Check(Subject::Schema, text, limits), "");
    limits.defaults = 6;
    EXPECT_EQ(Check(Subject::Schema, text, limits), MessageOf(6, "default attributes"));
    EXPECT_EQ(Check(Subject::Document, text, limits), "");
}

TEST(DefaultAttributeCounterTest, AllowsExactlyItsLimits)
{
    ExpansionLimits limits;
    limits.defaults = 3;
    limits.defaultText = 10;
    DefaultAttributeCounter counter(limits);
    EXPECT_EQ(counter.Add(10, 0), std::nullopt);
    EXPECT_EQ(counter.Add(0, 10), std::nullopt);
    EXPECT_EQ(counter.Add(0, 0), std::nullopt);
    EXPECT_EQ(counter.Add(0, 0), VString::fromStdString(MessageOf(3, "default attributes")));
    const VString excess = VString::fromStdString(MessageOf(10, "characters of default attributes"));
    EXPECT_EQ(DefaultAttributeCounter(limits).Add(11, 0), excess);
    EXPECT_EQ(DefaultAttributeCounter(limits).Add(0, 11), excess);
}

}  // namespace
