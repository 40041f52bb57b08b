#include "RandomDocument.h"

#include <iterator>
#include <random>
#include <set>
#include <string_view>
#include <utility>

namespace {

constexpr int MostLevels = 3;

class Generator {
public:
    Generator(RandomDocumentKind kind, std::uint32_t seed)
        : m_isFull(kind != RandomDocumentKind::Plain),
          m_is11(kind == RandomDocumentKind::Version11),
          m_random(seed)
    {
        static constexpr std::string_view LineEnds[] = {"\n", "\n", "\r\n", "\r"};
        m_lineEnd = Pick(LineEnds);
        m_hasMixedLineEnds = OneIn(4);
    }

    RandomDocument Run()
    {
        if (OneIn(8))
            Add("\n ");
        if (m_is11)
            Add("<?xml version='1.1'?>");
        else if (OneIn(2))
            AddDeclaration();
        AddMisc();
        if (m_isFull && OneIn(3)) {
            AddDocumentType();
            AddMisc();
        }
        AddElement(0);
        AddMisc();
        return std::move(m_document);
    }

private:
    bool OneIn(unsigned count) { return m_random() % count == 0; }

    template <typename T, std::size_t Count>
    const T& Pick(const T (&choices)[Count])
    {
        return choices[m_random() % Count];
    }

    void Add(std::string_view text) { m_document.text += text; }

    // Adds a part that a formatter must keep, unless it is within such a part.
    void AddKept(const std::string& text)
    {
        if (m_keptLevels == 0)
            m_document.kept.push_back(text);
        Add(text);
    }

    std::string LineEnd()
    {
        static constexpr std::string_view All[] = {"\n", "\r\n", "\r"};
        static constexpr std::string_view All11[] = {"\n", "\r\n", "\r", "\u0085", "\u2028", "\r\u0085"};
        if (m_is11 && OneIn(4))
            return std::string(Pick(All11));
        return std::string(m_hasMixedLineEnds ? Pick(All) : m_lineEnd);
    }

    std::string Blank()
    {
        std::string blank;
        for (auto count = 1 + m_random() % 3; count > 0; --count)
            blank += OneIn(3) ? LineEnd() : OneIn(4) ? "\t" : "  ";
        return blank;
    }

    std::string MaybeBlank() { return OneIn(2) ? Blank() : std::string(); }

    std::string Name()
    {
        static constexpr const char* Names[] = {"a", "b", "item", "x.y-z", "_1", "p:q", "\u00E9t\u00E9", "\u6F22"};
        return Pick(Names);
    }

    void AddDeclaration()
    {
        static constexpr const char* Declarations[] = {
            "<?xml version='1.0'?>", "<?xml version=\"1.0\" encoding='utf-8' ?>"};
        if (m_isFull && OneIn(3))
            Add("<?xml version='1.0' encoding='utf-8' standalone=\"yes\"?>");
        else
            Add(Pick(Declarations));
    }

    // Comments, processing instructions and white space outside of the document element.
    void AddMisc()
    {
        while (OneIn(2)) {
            Add(MaybeBlank());
            if (m_isFull && OneIn(2))
                AddMarkup();
        }
    }

    void AddMarkup()
    {
        static constexpr const char* Data[] = {
            "", "x", " y ", "<b c='", "]]>", "&e;", " :x = 'y' > ", "'", "\"", "- - "};
        const std::string data = Pick(Data) + (OneIn(3) ? LineEnd() + "    z" : "") + Pick(Data);
        if (OneIn(2))
            AddKept("<!--" + data + "-->");
        else
            AddKept("<?" + std::string(OneIn(3) ? "xml-p" : "p") + " " + data + "?>");
    }

    void AddDocumentType()
    {
        m_entities = {"e", "f", "elements", "blank"};
        std::string subset = "<!ENTITY e 'x]>'><!ENTITY f \"&e;'y\"><!ENTITY elements '<b> <c/> </b><!--]>-->'>" +
            LineEnd() + "<!ENTITY blank ' '><!ENTITY lt '&#38;#60;'>";
        static constexpr const char* Declarations[] = {"<!-- ]> ' -->",
            "<?p ]> \" ?>",
            "<!ELEMENT a ANY>",
            "<!ATTLIST a b CDATA 'default' d NMTOKENS #IMPLIED>",
            "<!ENTITY % p '<!--x-->'> %p;",
            "<!NOTATION n SYSTEM 'n>'>",
            "<!ATTLIST item xml:space (default|preserve) 'preserve'>",
            "<!ENTITY g \"]'[\">"};
        for (const char* declaration : Declarations) {
            if (!OneIn(2))
                continue;
            m_preservesItems |= std::string_view(declaration).starts_with("<!ATTLIST item");
            subset += MaybeBlank() + declaration;
        }
        const std::string external = OneIn(4) ? " SYSTEM \"it's>\"" : "";
        AddKept("<!DOCTYPE" + Blank() + "a" + external + " [" + subset + "]" + MaybeBlank() + ">");
    }

    std::string Reference()
    {
        if (m_is11 && OneIn(6))
            return OneIn(2) ? "&#1;" : "&#x85;";
        static constexpr const char* References[] = {"&lt;",
            "&gt;",
            "&amp;",
            "&apos;",
            "&quot;",
            "&#9;",
            "&#10;",
            "&#32;",
            "&#x41;",
            "&#xE9;",
            "&#x1F600;",
            "&amp;lt;"};
        return Pick(References);
    }

    std::string Character()
    {
        static constexpr const char* Characters[] = {"x",
            "y z",
            " ",
            "\t",
            ">",
            "/>",
            "]]x",
            "=",
            "\u00E9",
            "\u0085",
            "\u2028",
            "\U0001F600",
            "a long text of some words "};
        if (m_isFull && OneIn(16))
            return " :x = ";
        return OneIn(8) ? LineEnd() : Pick(Characters);
    }

    std::string Value(char quote)
    {
        std::string value;
        while (!OneIn(4)) {
            if (m_isFull && OneIn(6))
                value += "&#13;";
            else if (!m_entities.empty() && OneIn(4))
                value += OneIn(2) ? "&e;" : "&f;";
            else
                value += OneIn(3) ? Reference() : OneIn(4) ? std::string(1, quote == '"' ? '\'' : '"') : Character();
        }
        return value;
    }

    // Not blank. Without carriage returns if the document is plain: the writer of a tree loses them in sections.
    std::string Text()
    {
        std::string text = OneIn(3) ? "\"" : "t";
        if (OneIn(4))
            text = Character() + text;
        while (!OneIn(5))
            text += m_isFull && OneIn(12) ? "&#13;" : OneIn(3) ? Reference() : OneIn(8) ? "'\"" : Character();
        return text + (OneIn(3) ? "\"" : "");
    }

    std::string Section()
    {
        static constexpr const char* Sections[] = {"", " ", "x", "<b>&e;", "]]", "'\""};
        return "<![CDATA[" + std::string(Pick(Sections)) + (OneIn(4) ? LineEnd() : "") + "]]>";
    }

    // Returns the start tag without its end, and sets `preserves`.
    std::string StartTag(const std::string& name, bool& preserves)
    {
        preserves = m_preservesItems && name == "item";
        std::string tag = "<" + name;
        if (m_isFull && OneIn(12)) {
            preserves = OneIn(2);
            tag += preserves ? " xml:space='preserve'" : " xml:space=\"default\"";
        }
        std::set<std::string> used;
        while (OneIn(2)) {
            const std::string attribute = Name();
            if (!used.insert(attribute).second)
                continue;
            const char quote = OneIn(2) ? '"' : '\'';
            tag += Blank() + attribute + (OneIn(4) ? Blank() : "") + "=" + (OneIn(4) ? Blank() : "");
            tag += quote + Value(quote) + quote;
        }
        return tag + (OneIn(4) ? Blank() : "");
    }

    void AddElement(int level)
    {
        const std::string name = Name();
        bool preserves = false;
        const std::string tag = StartTag(name, preserves);
        if (OneIn(6)) {
            Add(tag + "/>");
            return;
        }
        Add(tag + ">");
        const std::size_t start = m_document.text.size();
        const bool isKept = AddContent(level, preserves);
        if (isKept && m_keptLevels == 0 && m_document.text.size() > start)
            m_document.kept.push_back(m_document.text.substr(start));
        Add("</" + name + (OneIn(8) ? Blank() : "") + ">");
    }

    // Adds the content of an element. Returns true if a formatter must not change it.
    bool AddContent(int level, bool preserves)
    {
        const bool isDeep = level >= MostLevels;
        const auto choice = m_random() % (m_isFull ? 8 : 4);
        m_keptLevels += preserves ? 1 : 0;
        bool isKept = preserves;
        if (choice == 0 || (choice < 3 && isDeep)) {
            Add(OneIn(4) ? "" : Text());
        } else if (choice < 4) {
            if (isDeep)
                return FinishContent(preserves, isKept);
            AddChildren(level);
        } else {
            isKept = true;
            m_keptLevels += preserves ? 0 : 1;
            AddKeptContent(level, isDeep);
            m_keptLevels -= preserves ? 0 : 1;
        }
        return FinishContent(preserves, isKept);
    }

    bool FinishContent(bool preserves, bool isKept)
    {
        m_keptLevels -= preserves ? 1 : 0;
        return isKept;
    }

    void AddChildren(int level)
    {
        // At least one element, so that the white space is ignorable.
        AddElement(level + 1);
        while (!OneIn(3)) {
            Add(MaybeBlank());
            if (m_isFull && OneIn(4))
                AddMarkup();
            else
                AddElement(level + 1);
        }
        Add(MaybeBlank());
    }

    // Content that is blank or mixed, or that has sections or references to entities.
    void AddKeptContent(int level, bool isDeep)
    {
        switch (m_random() % 4) {
        case 0: Add(OneIn(2) ? Blank() : "&#32;"); break;
        case 1: Add(MaybeBlank() + Section() + (OneIn(2) ? Text() : "")); break;
        case 2:
            if (!m_entities.empty()) {
                Add(MaybeBlank() + "&" + m_entities[m_random() % m_entities.size()] + ";" + MaybeBlank());
                break;
            }
            [[fallthrough]];
        default:
            Add(Text());
            while (!OneIn(4)) {
                if (OneIn(3))
                    AddMarkup();
                else if (!isDeep)
                    AddElement(level + 1);
                Add(OneIn(2) ? MaybeBlank() : Text());
            }
            AddMarkup();
        }
    }

    const bool m_isFull;
    const bool m_is11;
    std::mt19937 m_random;
    std::string_view m_lineEnd;
    bool m_hasMixedLineEnds = false;
    std::vector<std::string> m_entities;  // that the document type declares
    bool m_preservesItems = false;        // true if the document type says so
    int m_keptLevels = 0;                 // the open elements whose content a formatter must not change
    RandomDocument m_document;
};

}  // namespace

RandomDocument MakeRandomDocument(RandomDocumentKind kind, std::uint32_t seed)
{
    return Generator(kind, seed).Run();
}
